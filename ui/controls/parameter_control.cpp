#include "ui/controls/parameter_control.h"

#include "ui/controls/text_field.h"
#include "ui/ui_root.h"

#include <algorithm>

namespace halvern {

namespace {

// A text field over the control, prefilled with the display text: Enter sets a text
// that parses as one gesture, Escape or a click elsewhere leaves the value. It holds the
// binding, not the control, so it stays safe whatever happens to the control meanwhile.
void openValueEntry(ZUIRoot& root, const std::shared_ptr<ZParameterBinding>& binding, const ZRect& bounds)
{
    auto* field = static_cast<ZTextField*>(
        root.PushOverlay(std::make_unique<ZTextField>(binding->DisplayText(binding->Value()))));
    field->SetBounds(bounds);
    field->SelectAll();
    ZUIRoot* owner = &root;
    field->SetOnCommit([owner, field, binding](const std::string& text) {
        const auto parsed = binding->Parse(text);
        if (!parsed)
            return false;
        ZGesture::SetOnce(*binding, *parsed);
        owner->RemoveOverlay(field);
        return true;
    });
    field->SetOnCancel([owner, field] { owner->RemoveOverlay(field); });
    root.SetFocus(field);
}

} // namespace

ZParameterControl::ZParameterControl(std::shared_ptr<ZParameterBinding> binding)
    : binding_(std::move(binding)), gesture_(*binding_), shownValue_(binding_->Value())
{
}

std::string ZParameterControl::Text() const
{
    return binding_->DisplayText(binding_->Value());
}

std::string ZParameterControl::HelpText() const
{
    const std::string own = ZView::HelpText();
    return own.empty() ? binding_->HelpText() : own;
}

const ZTheme& ZParameterControl::theme() const
{
    return root()->theme();
}

bool ZParameterControl::hovered() const
{
    const ZUIRoot* r = root();
    return r && (r->hovered() == this || r->captured() == this);
}

void ZParameterControl::Refresh()
{
    const double current = binding_->Value();
    if (current == shownValue_)
        return;
    shownValue_ = current;
    Invalidate();
}

bool ZParameterControl::OnMouseDown(const ZMouseEvent& event)
{
    if (event.button == ZMouseButton::Right) {
        openContextMenu(event.position);
        return false;
    }
    return event.button == ZMouseButton::Left && OnLeftPress(event);
}

bool ZParameterControl::OnLeftPress(const ZMouseEvent& event)
{
    if (event.clickCount >= 2) {
        ZGesture::SetOnce(*binding_, binding_->DefaultValue());
        return false;
    }
    gesture_.Begin();
    dragValue_ = binding_->Value();
    lastDragPoint_ = event.position;
    return true;
}

void ZParameterControl::OnMouseDrag(const ZMouseEvent& event)
{
    if (!gesture_.open())
        return;
    const double factor = (event.modifiers & kModifierShift) ? theme().fineFactor : 1.0;
    const double change = DragChange(lastDragPoint_, event.position) * factor;
    lastDragPoint_ = event.position;
    if (change == 0.0)
        return;
    dragValue_ = std::clamp(dragValue_ + change, 0.0, 1.0);
    gesture_.Set(dragValue_);
}

void ZParameterControl::OnMouseUp(const ZMouseEvent&)
{
    endDrag();
}

void ZParameterControl::OnCaptureLost()
{
    endDrag();
}

void ZParameterControl::endDrag()
{
    gesture_.End();
    Invalidate();
}

bool ZParameterControl::OnWheel(const ZWheelEvent& event)
{
    if (event.steps == 0.0)
        return false;
    const int steps = binding_->StepCount();
    const double fine = (event.modifiers & kModifierShift) ? theme().fineFactor : 1.0;
    const double change = steps > 0 ? event.steps / steps : event.steps * theme().wheelStep * fine;
    ZGesture::SetOnce(*binding_, binding_->Value() + change);
    return true;
}

ZRect ZParameterControl::TextEntryBounds() const
{
    const double height = theme().rowHeight;
    return {bounds().x, bounds().center().y - height / 2, bounds().width, height};
}

void ZParameterControl::openContextMenu(ZPoint at)
{
    ZUIRoot* r = root();
    if (!r)
        return;
    const std::shared_ptr<ZParameterBinding> b = binding_;
    const ZRect entryBounds = TextEntryBounds();
    std::vector<ZMenuItem> items;
    items.push_back({.text = "Type a value\u2026", .action = [r, b, entryBounds] { openValueEntry(*r, b, entryBounds); }});
    items.push_back({.text = "Default", .action = [b] { ZGesture::SetOnce(*b, b->DefaultValue()); }});
    items.push_back(ZMenuItem::Separator());
    items.push_back({.text = "Copy value", .action = [r, b] { r->clipboard().SetText(b->DisplayText(b->Value())); }});
    items.push_back({.text = "Paste value", .action = [r, b] {
                         if (const auto parsed = b->Parse(r->clipboard().Text()))
                             ZGesture::SetOnce(*b, *parsed);
                     }});
    if (menuExtension_)
        menuExtension_(items);
    ZPopupMenu::Show(*r, std::move(items), {at.x, at.y, 0.0, 0.0});
}

} // namespace halvern
