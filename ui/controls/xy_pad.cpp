#include "ui/controls/xy_pad.h"

#include "ui/ui_root.h"

#include <cmath>

namespace halvern {

ZXYPad::ZXYPad(std::shared_ptr<ZParameterBinding> x, std::shared_ptr<ZParameterBinding> y)
    : x_(std::move(x)), y_(std::move(y)), xGesture_(*x_), yGesture_(*y_), shown_{x_->Value(), y_->Value()}
{
}

std::string ZXYPad::Text() const
{
    return x_->DisplayText(x_->Value()) + ", " + y_->DisplayText(y_->Value());
}

std::string ZXYPad::HelpText() const
{
    const std::string own = ZView::HelpText();
    return own.empty() ? x_->HelpText() : own;
}

ZRect ZXYPad::travel() const
{
    const double radius = root()->theme().handleRadius;
    return bounds().inset(radius, radius);
}

ZPoint ZXYPad::HandlePosition() const
{
    const ZRect area = travel();
    return {area.x + area.width * x_->Value(), area.bottom() - area.height * y_->Value()};
}

void ZXYPad::Refresh()
{
    const ZPoint current{x_->Value(), y_->Value()};
    if (current.x == shown_.x && current.y == shown_.y)
        return;
    shown_ = current;
    Invalidate();
}

bool ZXYPad::OnMouseDown(const ZMouseEvent& event)
{
    if (event.button != ZMouseButton::Left)
        return false;
    if (event.clickCount >= 2) {
        ZGesture::SetOnce(*x_, x_->DefaultValue());
        ZGesture::SetOnce(*y_, y_->DefaultValue());
        return false;
    }
    const ZPoint handle = HandlePosition();
    const bool onHandle = std::hypot(event.position.x - handle.x, event.position.y - handle.y) <=
                          root()->theme().handleRadius;
    grabOffset_ = onHandle ? ZPoint{handle.x - event.position.x, handle.y - event.position.y} : ZPoint{};
    xGesture_.Begin();
    yGesture_.Begin();
    moveTo(event.position);
    return true;
}

void ZXYPad::OnMouseDrag(const ZMouseEvent& event)
{
    if (xGesture_.open())
        moveTo(event.position);
}

void ZXYPad::moveTo(ZPoint point)
{
    const ZRect area = travel();
    if (area.empty())
        return;
    xGesture_.Set((point.x + grabOffset_.x - area.x) / area.width);
    yGesture_.Set((area.bottom() - point.y - grabOffset_.y) / area.height);
    Invalidate();
}

void ZXYPad::OnMouseUp(const ZMouseEvent&)
{
    endDrag();
}

void ZXYPad::OnCaptureLost()
{
    endDrag();
}

void ZXYPad::endDrag()
{
    xGesture_.End();
    yGesture_.End();
}

void ZXYPad::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& t = root()->theme();
    canvas.FillRoundedRect(bounds(), t.radius, t.control);
    canvas.StrokeRoundedRect(bounds(), t.radius, t.panelBorder, t.lineWidth);
    const ZPoint handle = HandlePosition();
    canvas.Line({bounds().x, handle.y}, {bounds().right(), handle.y}, t.track, t.lineWidth);
    canvas.Line({handle.x, bounds().y}, {handle.x, bounds().bottom()}, t.track, t.lineWidth);
    canvas.FillCircle(handle, t.handleRadius, t.accent);
}

} // namespace halvern
