#pragma once

// The scroll position bar that lists and scroll areas draw along their right edge while
// their content is taller than the viewport, and the scroll range they share.

#include "ui/canvas.h"
#include "ui/theme.h"

namespace halvern {

// The largest offset that still fills the viewport (0 when the content fits).
double MaxScrollOffset(double contentHeight, double viewportHeight);

void PaintScrollIndicator(ZCanvas& canvas, const ZTheme& theme, const ZRect& viewport, double contentHeight,
                          double offset);

} // namespace halvern
