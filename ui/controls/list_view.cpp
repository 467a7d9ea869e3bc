#include "ui/controls/list_view.h"

#include "ui/controls/scroll_indicator.h"
#include "ui/ui_root.h"

#include <algorithm>
#include <cmath>

namespace halvern {

void ZListView::SetRows(std::vector<std::string> rows)
{
    rows_ = std::move(rows);
    selected_ = -1;
    offset_ = 0.0;
    Invalidate();
}

void ZListView::SetSelectedRow(int row)
{
    selected_ = row >= 0 && row < static_cast<int>(rows_.size()) ? row : -1;
    if (selected_ >= 0 && root()) {
        const double top = selected_ * rowHeight();
        if (top < offset_)
            ScrollTo(top);
        else if (top + rowHeight() > offset_ + bounds().height)
            ScrollTo(top + rowHeight() - bounds().height);
    }
    Invalidate();
}

std::string ZListView::Text() const
{
    return selected_ >= 0 ? rows_[selected_] : std::string();
}

double ZListView::rowHeight() const
{
    return root()->theme().rowHeight;
}

double ZListView::contentHeight() const
{
    return rows_.size() * rowHeight();
}

void ZListView::ScrollTo(double offset)
{
    const double clamped = std::clamp(offset, 0.0, MaxScrollOffset(contentHeight(), bounds().height));
    if (clamped == offset_)
        return;
    offset_ = clamped;
    Invalidate();
}

ZRect ZListView::RowRect(int row) const
{
    return {bounds().x, bounds().y + row * rowHeight() - offset_, bounds().width, rowHeight()};
}

int ZListView::RowAt(ZPoint point) const
{
    if (!bounds().contains(point))
        return -1;
    const int row = static_cast<int>(std::floor((point.y - bounds().y + offset_) / rowHeight()));
    return row < static_cast<int>(rows_.size()) ? row : -1;
}

bool ZListView::OnMouseDown(const ZMouseEvent& event)
{
    const int row = RowAt(event.position);
    if (event.button != ZMouseButton::Left || row < 0)
        return false;
    selected_ = row;
    Invalidate();
    if (onSelect_)
        onSelect_(row);
    return false;
}

bool ZListView::OnWheel(const ZWheelEvent& event)
{
    if (MaxScrollOffset(contentHeight(), bounds().height) == 0.0)
        return false;
    ScrollTo(offset_ - event.steps * root()->theme().wheelScroll);
    return true;
}

void ZListView::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& t = root()->theme();
    canvas.FillRect(bounds(), t.panel);
    canvas.Save();
    canvas.ClipTo(bounds());
    const int first = static_cast<int>(offset_ / rowHeight());
    for (int row = first; row < static_cast<int>(rows_.size()); ++row) {
        const ZRect rect = RowRect(row);
        if (rect.y >= bounds().bottom())
            break;
        if (row == selected_)
            canvas.FillRect(rect, t.highlight);
        canvas.DrawTextInRect(rows_[row], {rect.x + t.textInset, rect.y, rect.width - 2 * t.textInset, rect.height},
                              t.Text());
    }
    PaintScrollIndicator(canvas, t, bounds(), contentHeight(), offset_);
    canvas.Restore();
}

} // namespace halvern
