#pragma once

// ZPopupMenu: a list of commands shown as an overlay of the root. The hovered item is
// highlighted; a click on an enabled item removes the menu and runs the item's action;
// Up, Down and Enter choose with the keyboard and Escape closes.

#include "ui/view.h"

#include <functional>
#include <string>
#include <vector>

namespace halvern {

struct ZMenuItem {
    std::string text;
    std::function<void()> action;
    bool enabled = true;
    bool checked = false;
    bool separator = false;

    static ZMenuItem Separator()
    {
        ZMenuItem item;
        item.enabled = false;
        item.separator = true;
        return item;
    }
};

struct ZTheme;

class ZPopupMenu : public ZView {
public:
    explicit ZPopupMenu(std::vector<ZMenuItem> items);

    // Opens a menu below the anchor (above it when there is no room below), kept inside
    // the root, at least minWidth wide; pushes it as an overlay and gives it the keyboard.
    static ZPopupMenu* Show(ZUIRoot& root, std::vector<ZMenuItem> items, const ZRect& anchor, double minWidth = 0.0);

    const std::vector<ZMenuItem>& items() const { return items_; }
    // The highlighted item's index, or -1.
    int highlighted() const { return highlighted_; }
    // The rectangle of an item in root coordinates.
    ZRect ItemRect(int index) const;
    // Runs an enabled item as a click would; false for a separator or a disabled item.
    bool Choose(int index);

    bool AcceptsMouse() const override { return true; }
    bool AcceptsFocus() const override { return true; }
    bool OnMouseDown(const ZMouseEvent& event) override;
    void OnMouseMove(const ZMouseEvent& event) override;
    void OnMouseLeave() override;
    bool OnKey(const ZKeyEvent& event) override;
    ZCursor Cursor() const override { return ZCursor::Hand; }

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    ZPoint measure(const ZCanvas& canvas, const ZTheme& theme) const;
    double itemHeight(const ZMenuItem& item, const ZTheme& theme) const;
    int itemAt(ZPoint point) const;
    void highlight(int index);
    void moveHighlight(int direction);
    void close();

    std::vector<ZMenuItem> items_;
    int highlighted_ = -1;
};

} // namespace halvern
