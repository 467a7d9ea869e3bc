#pragma once

// ZKnob: a rotary dial with the parameter's name above it and the display text below.
// The arc runs from -135° to +135° around the top, the part up to the value in the
// accent colour. A vertical drag moves the value by the distance over
// theme.dragPixelsFullRange of the range (up increases).

#include "ui/controls/parameter_control.h"

namespace halvern {

class ZKnob : public ZParameterControl {
public:
    explicit ZKnob(std::shared_ptr<ZParameterBinding> binding);

    // Wide enough for the dial with spacing either side; a line of text above and below.
    ZPoint PreferredSize() const override;
    ZCursor Cursor() const override { return ZCursor::VerticalResize; }

    // The parts, in root coordinates.
    ZRect NameRect() const;
    ZRect DialRect() const;
    ZRect ValueRect() const;

protected:
    void PaintSelf(ZCanvas& canvas) override;
    double DragChange(ZPoint from, ZPoint to) const override;
    ZRect TextEntryBounds() const override;
};

} // namespace halvern
