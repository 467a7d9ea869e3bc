#pragma once

// ZSlider: a horizontal slider with the parameter's name on the left and the display
// text on the right above the track. It is dragged horizontally, relative to the press
// (no jump), and the thumb follows the pointer: a movement over the track's length
// covers the range (Shift: times theme.fineFactor).

#include "ui/controls/parameter_control.h"

namespace halvern {

class ZSlider : public ZParameterControl {
public:
    explicit ZSlider(std::shared_ptr<ZParameterBinding> binding);

    // Any width; a line of text over the thumb's height.
    ZPoint PreferredSize() const override;
    ZCursor Cursor() const override { return ZCursor::Hand; }

    ZRect TextRect() const;
    // The line the thumb's centre runs along.
    ZRect TrackRect() const;

protected:
    void PaintSelf(ZCanvas& canvas) override;
    double DragChange(ZPoint from, ZPoint to) const override;
    ZRect TextEntryBounds() const override;
};

} // namespace halvern
