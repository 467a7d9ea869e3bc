#include "ui/markup/markup_metrics.h"

#include "ui/markup/markup_document.h"

namespace halvern {

ZMarkupMetrics::ZMarkupMetrics(const ZTheme& theme)
    : text(theme.Text()),
      accent(theme.accent),
      chipText(theme.Text(theme.smallFontSize)),
      chipFill(theme.control),
      chipBorder(theme.panelBorder),
      chipPaddingX(theme.spacing * 0.5),
      chipPaddingY(theme.spacing * 0.125),
      chipRadius(theme.radius),
      rule(theme.panelBorder),
      lineWidth(theme.lineWidth),
      lineGap(theme.fontSize * 0.25),
      paragraphGap(theme.spacing),
      cellPaddingX(theme.spacing * 0.5),
      cellPaddingY(theme.spacing * 0.25)
{
}

ZTextStyle ZMarkupMetrics::TextStyle(unsigned styleFlags) const
{
    ZTextStyle style = text;
    if (styleFlags & (kMarkupBold | kMarkupName))
        style.weight = ZFontWeight::SemiBold;
    if (styleFlags & (kMarkupName | kMarkupReference))
        style.color = accent;
    if (styleFlags & kMarkupItalic)
        style.italic = true;
    return style;
}

} // namespace halvern
