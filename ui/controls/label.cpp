#include "ui/controls/label.h"

#include "ui/ui_root.h"

namespace halvern {

ZLabel::ZLabel(std::string text, ZLabelStyle style, ZTextAlign align)
    : text_(std::move(text)), style_(style), align_(align)
{
}

void ZLabel::SetText(std::string text)
{
    if (text_ == text)
        return;
    text_ = std::move(text);
    Invalidate();
}

ZTextStyle ZLabel::textStyle() const
{
    const ZTheme& t = root()->theme();
    switch (style_) {
    case ZLabelStyle::Label:
        return t.Label();
    case ZLabelStyle::Value:
        return t.Value();
    case ZLabelStyle::Title:
        return t.Title();
    case ZLabelStyle::Text:
        break;
    }
    return t.Text();
}

ZPoint ZLabel::PreferredSize() const
{
    ZUIRoot* r = root();
    if (!r)
        return {};
    return {r->canvas().TextWidth(text_, textStyle()), r->theme().labelHeight};
}

void ZLabel::PaintSelf(ZCanvas& canvas)
{
    canvas.DrawTextInRect(text_, bounds(), textStyle(), align_);
}

} // namespace halvern
