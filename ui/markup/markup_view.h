#pragma once

// ZMarkupView: one help text in markup, wrapped to the view's width and drawn from its
// top left. It draws no background (its container does).

#include "ui/markup/markup_document.h"
#include "ui/markup/markup_layout.h"
#include "ui/view.h"

#include <memory>
#include <string>

namespace halvern {

class ZMarkupView : public ZView {
public:
    explicit ZMarkupView(std::string markup = {});

    void SetMarkup(std::string markup);
    const std::string& markup() const { return markup_; }
    const ZMarkupDocument& document() const { return document_; }
    void SetImageLookup(ZMarkupImageLookup images);
    const ZMarkupImageLookup& imageLookup() const { return images_; }

    // The text without markup.
    std::string Text() const override;
    // The bounds' width (the unwrapped text's width while the view has none) by the
    // height the text takes at it.
    ZPoint PreferredSize() const override;
    double HeightForWidth(double width) const;

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    // The text set to a width, measured on the canvas; kept until something changes.
    const ZMarkupLayout& layoutFor(double width, const ZCanvas& measure) const;
    // Measured on the root's canvas, or at scale 1 while the view is not shown.
    const ZMarkupLayout& layoutFor(double width) const;
    const ZTheme& theme() const;

    std::string markup_;
    ZMarkupDocument document_;
    ZMarkupImageLookup images_;
    mutable std::unique_ptr<ZMarkupLayout> layout_;
    mutable double layoutScale_ = 0.0;
    mutable const ZTheme* layoutTheme_ = nullptr;
};

} // namespace halvern
