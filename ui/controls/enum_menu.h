#pragma once

// ZEnumMenu: the current item of an enumeration in a box with a down arrow. A click
// opens a popup of the items with the current one checked; choosing one sets it as one
// gesture. The wheel steps through the items. Given a cell taller than a row (beside
// knobs), it shows its name above the box, as a knob does, with the box at the dial's height.

#include "ui/controls/parameter_control.h"

namespace halvern {

class ZEnumMenu : public ZParameterControl {
public:
    explicit ZEnumMenu(std::shared_ptr<ZParameterBinding> binding);

    // The index of the current item.
    int currentIndex() const;
    // Opens the popup of the items below the box.
    void OpenItems();

    ZPoint PreferredSize() const override;
    // The box with the current item (the whole bounds when they are one row high).
    ZRect BoxRect() const;
    ZCursor Cursor() const override { return ZCursor::Hand; }

protected:
    void PaintSelf(ZCanvas& canvas) override;
    bool OnLeftPress(const ZMouseEvent& event) override;

private:
    // The steps between the first and the last item.
    int stepCount() const;
    bool showsName() const;
};

} // namespace halvern
