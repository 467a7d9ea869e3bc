#include "ui/markup/markup_tooltip.h"

#include <algorithm>
#include <cmath>

namespace halvern {
namespace {

// Between the box's border and its text.
double tooltipPadding(const ZTheme& theme)
{
    return theme.spacing;
}

std::unique_ptr<ZView> makeTooltip(const std::string& help, ZPoint at, const ZUIRoot& root,
                                   const ZMarkupImageLookup& images)
{
    const ZTheme& theme = root.theme();
    auto tooltip = std::make_unique<ZMarkupTooltip>(help, theme);
    ZMarkupView& text = tooltip->text();
    if (text.document().blocks.empty())
        return nullptr;
    text.SetImageLookup(images);

    // Measured as the root's canvas will draw it.
    const double padding = tooltipPadding(theme);
    const double maxTextWidth = std::max(std::min(kMarkupTooltipMaxWidth, root.logicalWidth()) - 2 * padding, 0.0);
    const ZCanvas measure(1, 1, root.scale());
    const ZMarkupLayout layout(text.document(), maxTextWidth, theme, measure, images);
    const double width = std::min(std::ceil(layout.usedWidth()), maxTextWidth) + 2 * padding;
    const double height = std::ceil(layout.height()) + 2 * padding;

    // Below the pointer, clear of its arrow; above it when the root ends first.
    const double rootWidth = root.logicalWidth();
    const double rootHeight = root.logicalHeight();
    double y = at.y + theme.rowHeight;
    if (y + height > rootHeight)
        y = at.y - height - theme.spacing / 2;
    const double x = std::clamp(at.x, 0.0, std::max(rootWidth - width, 0.0));
    y = std::clamp(y, 0.0, std::max(rootHeight - height, 0.0));
    tooltip->SetBounds({x, y, width, height});
    return tooltip;
}

} // namespace

ZMarkupTooltip::ZMarkupTooltip(const std::string& markup, const ZTheme& theme)
    : theme_(theme), text_(AddChild(std::make_unique<ZMarkupView>(markup)))
{
}

void ZMarkupTooltip::Layout()
{
    const double padding = tooltipPadding(theme_);
    text_->SetBounds(bounds().inset(padding, padding));
}

void ZMarkupTooltip::PaintSelf(ZCanvas& canvas)
{
    const double halfLine = theme_.lineWidth / 2; // the border's stroke stays inside the bounds
    canvas.FillRoundedRect(bounds(), theme_.radius, theme_.popup);
    canvas.StrokeRoundedRect(bounds().inset(halfLine, halfLine), theme_.radius, theme_.popupBorder, theme_.lineWidth);
}

std::unique_ptr<ZView> MakeMarkupTooltip(const std::string& help, ZPoint at, const ZUIRoot& root)
{
    return makeTooltip(help, at, root, {});
}

ZUIRoot::TooltipFactory MarkupTooltipFactory(ZMarkupImageLookup images)
{
    return [images = std::move(images)](const std::string& help, ZPoint at, const ZUIRoot& root) {
        return makeTooltip(help, at, root, images);
    };
}

} // namespace halvern
