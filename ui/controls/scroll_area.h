#pragma once

// ZScrollArea: a viewport onto one content view that may be taller than it. The wheel
// scrolls; children are clipped to the viewport. Bounds are absolute, so scrolling lays
// the content out again at the new offset. While the content is taller than the
// viewport it is narrowed by the scroll bar's width, so the bar never covers it.

#include "ui/view.h"

#include <memory>

namespace halvern {

class ZScrollArea : public ZView {
public:
    ZScrollArea();

    // Replaces the content. Its height is the one set with SetContentHeight, else its
    // preferred height, else the viewport's.
    template <class View>
    View* SetContent(std::unique_ptr<View> content)
    {
        ClearChildren();
        View* raw = AddChild(std::move(content));
        offset_ = 0.0;
        Layout();
        return raw;
    }
    ZView* content() const { return children().empty() ? nullptr : children().front().get(); }
    void SetContentHeight(double height);
    double contentHeight() const;

    void ScrollTo(double offset);
    double scrollOffset() const { return offset_; }

    void Layout() override;
    bool AcceptsMouse() const override { return true; }
    bool OnWheel(const ZWheelEvent& event) override;

protected:
    void PaintOver(ZCanvas& canvas) override;

private:
    double maxOffset() const;

    double contentHeight_ = 0.0;
    double offset_ = 0.0;
};

} // namespace halvern
