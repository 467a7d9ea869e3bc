#pragma once

// ZResizeGrip: the small grip in the editor's bottom-right corner. Dragging it asks for a
// new editor size; a double click asks for the natural size again. It reports the drag
// in device pixels, which keep their meaning while the editor's scale changes under it.

#include "ui/view.h"

#include <functional>

namespace halvern {

class ZResizeGrip : public ZView {
public:
    struct Listener {
        std::function<void()> started;                      // a drag begins
        std::function<void(double dx, double dy)> dragged;  // device pixels from where it began
        std::function<void()> reset;                        // the double click
    };

    explicit ZResizeGrip(Listener listener) : listener_(std::move(listener)) {}

    bool AcceptsMouse() const override { return true; }
    bool OnMouseDown(const ZMouseEvent& event) override;
    void OnMouseDrag(const ZMouseEvent& event) override;
    ZCursor Cursor() const override { return ZCursor::Move; }

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    ZPoint devicePixels(ZPoint logical) const;

    Listener listener_;
    ZPoint anchor_;
};

} // namespace halvern
