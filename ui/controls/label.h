#pragma once

// ZLabel: one line of static text in one of the theme's text styles, aligned in its
// bounds and cut with an ellipsis when it does not fit.

#include "ui/canvas.h"
#include "ui/view.h"

#include <string>

namespace halvern {

enum class ZLabelStyle {
    Text,  // primary text
    Label, // dim small text (names, captions)
    Value, // value texts
    Title, // panel titles
};

class ZLabel : public ZView {
public:
    explicit ZLabel(std::string text, ZLabelStyle style = ZLabelStyle::Text, ZTextAlign align = ZTextAlign::Left);

    void SetText(std::string text);
    std::string Text() const override { return text_; }

    // The text's width, a label line high.
    ZPoint PreferredSize() const override;

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    ZTextStyle textStyle() const;

    std::string text_;
    ZLabelStyle style_;
    ZTextAlign align_;
};

} // namespace halvern
