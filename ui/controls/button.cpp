#include "ui/controls/button.h"

#include "ui/ui_root.h"

namespace halvern {

ZButton::ZButton(std::string text, std::function<void()> onClick) : text_(std::move(text)), onClick_(std::move(onClick))
{
}

void ZButton::SetText(std::string text)
{
    text_ = std::move(text);
    Invalidate();
}

void ZButton::SetChecked(bool checked)
{
    if (checked_ == checked)
        return;
    checked_ = checked;
    Invalidate();
}

void ZButton::SetEnabled(bool enabled)
{
    if (enabled_ == enabled)
        return;
    enabled_ = enabled;
    Invalidate();
}

ZPoint ZButton::PreferredSize() const
{
    ZUIRoot* r = root();
    if (!r)
        return {};
    const ZTheme& t = r->theme();
    return {r->canvas().TextWidth(text_, t.Text()) + 2 * t.textInset, t.rowHeight};
}

void ZButton::setPressed(bool pressed)
{
    if (pressed_ == pressed)
        return;
    pressed_ = pressed;
    Invalidate();
}

bool ZButton::OnMouseDown(const ZMouseEvent& event)
{
    if (event.button != ZMouseButton::Left || !enabled_)
        return false;
    setPressed(true);
    return true;
}

void ZButton::OnMouseDrag(const ZMouseEvent& event)
{
    setPressed(bounds().contains(event.position));
}

void ZButton::OnMouseUp(const ZMouseEvent& event)
{
    setPressed(false);
    if (!bounds().contains(event.position))
        return;
    if (toggles_)
        SetChecked(!checked_);
    if (onClick_)
        onClick_();
}

void ZButton::OnCaptureLost()
{
    setPressed(false);
}

void ZButton::PaintSelf(ZCanvas& canvas)
{
    const ZUIRoot* r = root();
    const ZTheme& t = r->theme();
    const bool hover = enabled_ && r->hovered() == this;
    ZColor face = checked_ ? t.accent : hover ? t.controlHover : t.control;
    if (pressed_)
        face = t.highlight;
    canvas.FillRoundedRect(bounds(), t.radius, face);
    ZTextStyle style = t.Text();
    if (checked_ && !pressed_)
        style.color = t.accentText;
    if (!enabled_)
        style.color = t.textDim;
    canvas.DrawTextInRect(text_, bounds().inset(t.textInset, 0.0), style, ZTextAlign::Center);
}

} // namespace halvern
