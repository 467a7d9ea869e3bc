#include "ui/controls/popup_menu.h"

#include "ui/ui_root.h"

#include <algorithm>

namespace halvern {

ZPopupMenu::ZPopupMenu(std::vector<ZMenuItem> items) : items_(std::move(items))
{
}

ZPopupMenu* ZPopupMenu::Show(ZUIRoot& root, std::vector<ZMenuItem> items, const ZRect& anchor, double minWidth)
{
    auto* menu = static_cast<ZPopupMenu*>(root.PushOverlay(std::make_unique<ZPopupMenu>(std::move(items))));
    const ZPoint size = menu->measure(root.canvas(), root.theme());
    const double width = std::min(std::max(size.x, minWidth), root.logicalWidth());
    const double height = std::min(size.y, root.logicalHeight());
    double y = anchor.bottom();
    if (y + height > root.logicalHeight() && anchor.y - height >= 0.0)
        y = anchor.y - height;
    y = std::clamp(y, 0.0, root.logicalHeight() - height);
    const double x = std::clamp(anchor.x, 0.0, root.logicalWidth() - width);
    menu->SetBounds({x, y, width, height});
    root.SetFocus(menu);
    return menu;
}

ZPoint ZPopupMenu::measure(const ZCanvas& canvas, const ZTheme& theme) const
{
    const ZTextStyle style = theme.Text();
    double textWidth = 0.0, height = 2 * theme.lineWidth;
    for (const ZMenuItem& item : items_) {
        textWidth = std::max(textWidth, canvas.TextWidth(item.text, style));
        height += itemHeight(item, theme);
    }
    // A check column as wide as a row is high before the text, the text inset after it.
    return {theme.rowHeight + textWidth + 2 * theme.textInset, height};
}

double ZPopupMenu::itemHeight(const ZMenuItem& item, const ZTheme& theme) const
{
    return item.separator ? theme.spacing : theme.rowHeight;
}

ZRect ZPopupMenu::ItemRect(int index) const
{
    const ZTheme& theme = root()->theme();
    double y = bounds().y + theme.lineWidth;
    for (int i = 0; i < index; ++i)
        y += itemHeight(items_[i], theme);
    return {bounds().x, y, bounds().width, itemHeight(items_[index], theme)};
}

int ZPopupMenu::itemAt(ZPoint point) const
{
    for (int i = 0; i < static_cast<int>(items_.size()); ++i)
        if (ItemRect(i).contains(point))
            return i;
    return -1;
}

bool ZPopupMenu::Choose(int index)
{
    if (index < 0 || index >= static_cast<int>(items_.size()) || !items_[index].enabled || items_[index].separator)
        return false;
    // The menu is destroyed after the event, so the action may open another overlay.
    std::function<void()> action = items_[index].action;
    close();
    if (action)
        action();
    return true;
}

void ZPopupMenu::close()
{
    if (ZUIRoot* r = root())
        r->RemoveOverlay(this);
}

bool ZPopupMenu::OnMouseDown(const ZMouseEvent& event)
{
    if (event.button == ZMouseButton::Left)
        Choose(itemAt(event.position));
    return false;
}

void ZPopupMenu::OnMouseMove(const ZMouseEvent& event)
{
    const int index = itemAt(event.position);
    highlight(index >= 0 && items_[index].enabled && !items_[index].separator ? index : -1);
}

void ZPopupMenu::OnMouseLeave()
{
    highlight(-1);
}

void ZPopupMenu::highlight(int index)
{
    if (index == highlighted_)
        return;
    highlighted_ = index;
    Invalidate();
}

void ZPopupMenu::moveHighlight(int direction)
{
    const int count = static_cast<int>(items_.size());
    int index = highlighted_;
    for (int tries = 0; tries < count; ++tries) {
        index = index < 0 ? (direction > 0 ? 0 : count - 1) : (index + direction + count) % count;
        if (items_[index].enabled && !items_[index].separator) {
            highlight(index);
            return;
        }
    }
}

bool ZPopupMenu::OnKey(const ZKeyEvent& event)
{
    switch (event.key) {
    case ZKey::Escape:
        close();
        return true;
    case ZKey::Up:
        moveHighlight(-1);
        return true;
    case ZKey::Down:
        moveHighlight(+1);
        return true;
    case ZKey::Enter:
        Choose(highlighted_);
        return true;
    default:
        return false;
    }
}

void ZPopupMenu::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    canvas.FillRoundedRect(bounds(), theme.radius, theme.popup);
    canvas.StrokeRoundedRect(bounds(), theme.radius, theme.popupBorder, theme.lineWidth);
    for (int i = 0; i < static_cast<int>(items_.size()); ++i) {
        const ZMenuItem& item = items_[i];
        const ZRect row = ItemRect(i).inset(theme.lineWidth, 0.0);
        if (item.separator) {
            const double y = row.center().y;
            canvas.Line({row.x + theme.textInset, y}, {row.right() - theme.textInset, y}, theme.popupBorder,
                        theme.lineWidth);
            continue;
        }
        if (i == highlighted_)
            canvas.FillRect(row, theme.highlight);
        ZTextStyle style = theme.Text();
        if (!item.enabled)
            style.color = theme.textDim;
        const ZRect check{row.x, row.y, theme.rowHeight, row.height};
        if (item.checked)
            canvas.FillCircle(check.center(), theme.handleRadius / 2, theme.accent);
        canvas.DrawTextInRect(item.text, {check.right(), row.y, row.right() - check.right() - theme.textInset, row.height},
                              style);
    }
}

} // namespace halvern
