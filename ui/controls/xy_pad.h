#pragma once

// ZXYPad: two values on one square, x to the right and y upward, shown as a handle on a
// crosshair. A press on the handle drags it without a jump; a press elsewhere moves it
// there. From press to release both values are in one gesture each; a double click
// sets both to their defaults.

#include "ui/controls/gesture.h"
#include "ui/parameter_binding.h"
#include "ui/view.h"

#include <memory>

namespace halvern {

class ZXYPad : public ZView {
public:
    ZXYPad(std::shared_ptr<ZParameterBinding> x, std::shared_ptr<ZParameterBinding> y);

    ZParameterBinding& xBinding() const { return *x_; }
    ZParameterBinding& yBinding() const { return *y_; }
    // The handle's centre for the current values, in root coordinates.
    ZPoint HandlePosition() const;
    // Both display texts, "x, y".
    std::string Text() const override;
    // The view's own help when set, else the x binding's.
    std::string HelpText() const override;

    bool AcceptsMouse() const override { return true; }
    bool OnMouseDown(const ZMouseEvent& event) override;
    void OnMouseDrag(const ZMouseEvent& event) override;
    void OnMouseUp(const ZMouseEvent& event) override;
    void OnCaptureLost() override;
    void Refresh() override;
    ZCursor Cursor() const override { return ZCursor::Move; }

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    // The area the handle's centre moves in.
    ZRect travel() const;
    void moveTo(ZPoint point);
    void endDrag();

    std::shared_ptr<ZParameterBinding> x_;
    std::shared_ptr<ZParameterBinding> y_;
    ZGesture xGesture_;
    ZGesture yGesture_;
    ZPoint grabOffset_; // from the pointer to the handle's centre
    ZPoint shown_;
};

} // namespace halvern
