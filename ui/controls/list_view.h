#pragma once

// ZListView: rows of text, one of them selected. A click selects a row and calls the
// selection handler; the wheel scrolls by theme.wheelScroll a notch.

#include "ui/view.h"

#include <functional>
#include <string>
#include <vector>

namespace halvern {

class ZListView : public ZView {
public:
    ZListView() = default;

    // New rows; the selection is cleared and the list scrolled to the top.
    void SetRows(std::vector<std::string> rows);
    const std::vector<std::string>& rows() const { return rows_; }
    // Selects a row (-1: none) without calling the handler, and scrolls it into view.
    void SetSelectedRow(int row);
    int selectedRow() const { return selected_; }
    // Called with the row a click selected.
    void SetOnSelect(std::function<void(int row)> onSelect) { onSelect_ = std::move(onSelect); }
    // The selected row's text, or empty.
    std::string Text() const override;

    void ScrollTo(double offset);
    double scrollOffset() const { return offset_; }
    // The row under a point, or -1.
    int RowAt(ZPoint point) const;
    ZRect RowRect(int row) const;

    bool AcceptsMouse() const override { return true; }
    bool OnMouseDown(const ZMouseEvent& event) override;
    bool OnWheel(const ZWheelEvent& event) override;

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    double rowHeight() const;
    double contentHeight() const;

    std::vector<std::string> rows_;
    int selected_ = -1;
    double offset_ = 0.0;
    std::function<void(int)> onSelect_;
};

} // namespace halvern
