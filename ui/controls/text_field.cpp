#include "ui/controls/text_field.h"

#include "ui/ui_root.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace halvern {

namespace {

bool isContinuationByte(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

size_t nextBoundary(const std::string& text, size_t offset)
{
    if (offset >= text.size())
        return text.size();
    ++offset;
    while (offset < text.size() && isContinuationByte(text[offset]))
        ++offset;
    return offset;
}

size_t previousBoundary(const std::string& text, size_t offset)
{
    if (offset == 0)
        return 0;
    --offset;
    while (offset > 0 && isContinuationByte(text[offset]))
        --offset;
    return offset;
}

// Typed text without control characters (a field holds one line).
std::string printable(const std::string& typed)
{
    std::string out;
    std::copy_if(typed.begin(), typed.end(), std::back_inserter(out),
                 [](char c) { return static_cast<unsigned char>(c) >= 0x20 && c != 0x7F; });
    return out;
}

} // namespace

ZTextField::ZTextField(std::string text)
{
    SetText(std::move(text));
}

void ZTextField::SetText(std::string utf8)
{
    text_ = std::move(utf8);
    caret_ = anchor_ = text_.size();
    error_ = false;
    Invalidate();
}

void ZTextField::SelectAll()
{
    anchor_ = 0;
    caret_ = text_.size();
    Invalidate();
}

std::string ZTextField::SelectedText() const
{
    const auto [from, to] = std::minmax(anchor_, caret_);
    return text_.substr(from, to - from);
}

bool ZTextField::focused() const
{
    const ZUIRoot* r = root();
    return r && r->focused() == this;
}

ZRect ZTextField::textRect() const
{
    const double inset = root()->theme().textInset;
    return {bounds().x + inset, bounds().y, std::max(0.0, bounds().width - 2 * inset), bounds().height};
}

size_t ZTextField::offsetAt(ZPoint point) const
{
    ZUIRoot* r = root();
    const ZTextStyle style = r->theme().Text();
    const double x = point.x - textRect().x + scroll_;
    size_t best = 0;
    double bestDistance = std::abs(x);
    for (size_t offset = 0; offset < text_.size();) {
        offset = nextBoundary(text_, offset);
        const double distance = std::abs(x - r->canvas().TextWidth(text_.substr(0, offset), style));
        if (distance < bestDistance) {
            best = offset;
            bestDistance = distance;
        }
    }
    return best;
}

bool ZTextField::OnMouseDown(const ZMouseEvent& event)
{
    if (event.button != ZMouseButton::Left)
        return false;
    root()->SetFocus(this);
    moveCaret(offsetAt(event.position), (event.modifiers & kModifierShift) != 0);
    return true;
}

void ZTextField::OnMouseDrag(const ZMouseEvent& event)
{
    moveCaret(offsetAt(event.position), true);
}

void ZTextField::moveCaret(size_t offset, bool extendSelection)
{
    caret_ = offset;
    if (!extendSelection)
        anchor_ = offset;
    Invalidate();
}

void ZTextField::erase(size_t from, size_t to)
{
    text_.erase(from, to - from);
    caret_ = anchor_ = from;
    changed();
}

void ZTextField::replaceSelection(const std::string& utf8)
{
    const auto [from, to] = std::minmax(anchor_, caret_);
    text_.replace(from, to - from, utf8);
    caret_ = anchor_ = from + utf8.size();
    changed();
}

void ZTextField::changed()
{
    error_ = false;
    edited_ = true;
    Invalidate();
}

void ZTextField::commit()
{
    edited_ = false;
    error_ = onCommit_ && !onCommit_(text_);
    Invalidate();
}

void ZTextField::OnFocusChanged(bool focused)
{
    if (!focused && edited_)
        commit();
    Invalidate();
}

bool ZTextField::OnKey(const ZKeyEvent& event)
{
    const bool shift = (event.modifiers & kModifierShift) != 0;
    const auto [from, to] = std::minmax(anchor_, caret_);
    switch (event.key) {
    case ZKey::Character:
        replaceSelection(printable(event.text));
        return true;
    case ZKey::Backspace:
        hasSelection() ? erase(from, to) : erase(previousBoundary(text_, caret_), caret_);
        return true;
    case ZKey::Delete:
        hasSelection() ? erase(from, to) : erase(caret_, nextBoundary(text_, caret_));
        return true;
    case ZKey::Left:
        moveCaret(hasSelection() && !shift ? from : previousBoundary(text_, caret_), shift);
        return true;
    case ZKey::Right:
        moveCaret(hasSelection() && !shift ? to : nextBoundary(text_, caret_), shift);
        return true;
    case ZKey::Home:
        moveCaret(0, shift);
        return true;
    case ZKey::End:
        moveCaret(text_.size(), shift);
        return true;
    case ZKey::Enter:
        commit();
        return true;
    case ZKey::Escape:
        if (onCancel_)
            onCancel_();
        return true;
    default:
        return false;
    }
}

void ZTextField::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    const bool hasFocus = focused();
    const ZColor frame = error_ ? theme.error : hasFocus ? theme.accent : theme.panelBorder;
    canvas.FillRoundedRect(bounds(), theme.radius, theme.control);
    canvas.StrokeRoundedRect(bounds(), theme.radius, frame, theme.lineWidth);

    const ZTextStyle style = theme.Text();
    const ZRect area = textRect();
    const auto widthTo = [&](size_t offset) { return canvas.TextWidth(text_.substr(0, offset), style); };
    const double caretX = widthTo(caret_);
    scroll_ = std::clamp(scroll_, std::max(0.0, caretX - area.width), caretX);

    const double ascent = canvas.TextAscent(style), descent = canvas.TextDescent(style);
    const double baseline = area.center().y + (ascent - descent) / 2;
    const double left = area.x - scroll_;
    canvas.Save();
    canvas.ClipTo(area.inset(-theme.lineWidth, 0.0));
    if (hasSelection()) {
        const auto [from, to] = std::minmax(anchor_, caret_);
        const double x0 = left + widthTo(from), x1 = left + widthTo(to);
        canvas.FillRect({x0, baseline - ascent, x1 - x0, ascent + descent}, theme.highlight);
    }
    canvas.DrawText(text_, left, baseline, style);
    if (hasFocus)
        canvas.Line({left + caretX, baseline - ascent}, {left + caretX, baseline + descent}, theme.text,
                    theme.lineWidth);
    canvas.Restore();
}

} // namespace halvern
