#pragma once

// ZMarkupTooltip: a help text in a popup-coloured box, shown near the pointer.

#include "ui/markup/markup_view.h"
#include "ui/ui_root.h"

#include <memory>
#include <string>

namespace halvern {

class ZMarkupTooltip : public ZView {
public:
    // A tooltip drawn in the theme's colours; the theme must outlive it.
    ZMarkupTooltip(const std::string& markup, const ZTheme& theme);

    ZMarkupView& text() { return *text_; }
    std::string Text() const override { return text_->Text(); }
    // The text inset by the padding.
    void Layout() override;

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    const ZTheme& theme_;
    ZMarkupView* text_;
};

inline constexpr double kMarkupTooltipMaxWidth = 320.0;

// The tooltip for a help text at a pointer position, as ZUIRoot::TooltipFactory: at most
// kMarkupTooltipMaxWidth wide, below the pointer (above it when there is no room) and
// inside the root's logical size. Null for a help text that shows nothing.
std::unique_ptr<ZView> MakeMarkupTooltip(const std::string& help, ZPoint at, const ZUIRoot& root);

// A tooltip factory whose tooltips show images through the lookup.
ZUIRoot::TooltipFactory MarkupTooltipFactory(ZMarkupImageLookup images);

} // namespace halvern
