#include "editor/resize_grip.h"

#include "ui/ui_root.h"

namespace halvern {

bool ZResizeGrip::OnMouseDown(const ZMouseEvent& event)
{
    if (event.button != ZMouseButton::Left)
        return false;
    if (event.clickCount == 2) {
        listener_.reset();
        return false;
    }
    anchor_ = devicePixels(event.position);
    listener_.started();
    return true;
}

void ZResizeGrip::OnMouseDrag(const ZMouseEvent& event)
{
    const ZPoint at = devicePixels(event.position);
    listener_.dragged(at.x - anchor_.x, at.y - anchor_.y);
}

ZPoint ZResizeGrip::devicePixels(ZPoint logical) const
{
    const double scale = root() != nullptr ? root()->scale() : 1.0;
    return {logical.x * scale, logical.y * scale};
}

// Three diagonal strokes, shortest in the corner.
void ZResizeGrip::PaintSelf(ZCanvas& canvas)
{
    const ZTheme& theme = root()->theme();
    const ZRect& r = bounds();
    const double step = r.width / 4.0;
    for (int i = 1; i <= 3; ++i) {
        const double inset = step * i;
        canvas.Line({r.right() - inset, r.bottom() - 1.0}, {r.right() - 1.0, r.bottom() - inset}, theme.textDim,
                    theme.lineWidth);
    }
}

} // namespace halvern
