#include "ui/markup/markup_view.h"

#include "ui/markup/markup_parser.h"
#include "ui/ui_root.h"

#include <algorithm>

namespace halvern {
namespace {

// Wide enough that no help text wraps: the width of its longest line.
constexpr double kUnwrappedWidth = 1.0e6;

} // namespace

ZMarkupView::ZMarkupView(std::string markup) : markup_(std::move(markup)), document_(ParseMarkup(markup_)) {}

void ZMarkupView::SetMarkup(std::string markup)
{
    if (markup == markup_)
        return;
    markup_ = std::move(markup);
    document_ = ParseMarkup(markup_);
    layout_.reset();
    Invalidate();
}

void ZMarkupView::SetImageLookup(ZMarkupImageLookup images)
{
    images_ = std::move(images);
    layout_.reset();
    Invalidate();
}

std::string ZMarkupView::Text() const
{
    return document_.PlainText();
}

ZPoint ZMarkupView::PreferredSize() const
{
    const double width = bounds().width > 0.0 ? bounds().width : layoutFor(kUnwrappedWidth).usedWidth();
    return {width, HeightForWidth(width)};
}

double ZMarkupView::HeightForWidth(double width) const
{
    return layoutFor(width).height();
}

void ZMarkupView::PaintSelf(ZCanvas& canvas)
{
    layoutFor(bounds().width, canvas).Draw(canvas, {bounds().x, bounds().y});
}

const ZMarkupLayout& ZMarkupView::layoutFor(double width, const ZCanvas& measure) const
{
    const ZTheme& currentTheme = theme();
    const bool current = layout_ && layout_->width() == std::max(width, 0.0) && layoutScale_ == measure.scale() &&
                         layoutTheme_ == &currentTheme;
    if (!current) {
        layout_ = std::make_unique<ZMarkupLayout>(document_, width, currentTheme, measure, images_);
        layoutScale_ = measure.scale();
        layoutTheme_ = &currentTheme;
    }
    return *layout_;
}

const ZMarkupLayout& ZMarkupView::layoutFor(double width) const
{
    if (ZUIRoot* shownIn = root())
        return layoutFor(width, shownIn->canvas());
    const ZCanvas measure(1, 1, 1.0);
    return layoutFor(width, measure);
}

const ZTheme& ZMarkupView::theme() const
{
    if (const ZUIRoot* shownIn = root())
        return shownIn->theme();
    static const ZTheme fallback = ZTheme::Default();
    return fallback;
}

} // namespace halvern
