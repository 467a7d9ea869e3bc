#include "ui/controls/scroll_indicator.h"

#include <algorithm>

namespace halvern {

double MaxScrollOffset(double contentHeight, double viewportHeight)
{
    return std::max(0.0, contentHeight - viewportHeight);
}

void PaintScrollIndicator(ZCanvas& canvas, const ZTheme& theme, const ZRect& viewport, double contentHeight,
                          double offset)
{
    if (contentHeight <= viewport.height || viewport.empty())
        return;
    const double width = theme.scrollBarWidth;
    const double length = viewport.height * viewport.height / contentHeight;
    const double top = viewport.y + (viewport.height - length) * offset / MaxScrollOffset(contentHeight, viewport.height);
    canvas.FillRoundedRect({viewport.right() - width, top, width, length}, width / 2, theme.textDim);
}

} // namespace halvern
