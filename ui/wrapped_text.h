#pragma once

// ZWrappedText: a text of several paragraphs (separated by new lines) in the theme's
// primary style, wrapped at spaces to the view's width and drawn from its top left. A
// word wider than the view is cut with an ellipsis, lines below the view are left out.

#include "ui/canvas.h"
#include "ui/view.h"

#include <string>
#include <vector>

namespace halvern {

// The lines that a text takes at a width: each paragraph broken at spaces, an empty
// paragraph an empty line.
std::vector<std::string> WrapText(const ZCanvas& canvas, const std::string& text, const ZTextStyle& style,
                                  double width);

class ZWrappedText : public ZView {
public:
    explicit ZWrappedText(std::string text = {});

    void SetText(std::string text);
    std::string Text() const override { return text_; }
    // The height of the text wrapped to a width (0 for no text or while the view is not
    // shown).
    double HeightForWidth(double width) const;
    double lineHeight() const;

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    std::string text_;
};

} // namespace halvern
