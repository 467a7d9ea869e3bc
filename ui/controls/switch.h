#pragma once

// ZSwitch: an on/off toggle for a one-step binding, a pill with a thumb (on: accent,
// thumb right) and the parameter's name to its right. A click toggles as one gesture;
// every click of a double click toggles again.

#include "ui/controls/parameter_control.h"

namespace halvern {

class ZSwitch : public ZParameterControl {
public:
    explicit ZSwitch(std::shared_ptr<ZParameterBinding> binding);

    bool on() const { return value() >= 0.5; }
    ZPoint PreferredSize() const override;
    ZCursor Cursor() const override { return ZCursor::Hand; }

protected:
    void PaintSelf(ZCanvas& canvas) override;
    bool OnLeftPress(const ZMouseEvent& event) override;

private:
    ZRect pillRect() const;
};

} // namespace halvern
