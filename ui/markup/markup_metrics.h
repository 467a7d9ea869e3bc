#pragma once

// ZMarkupMetrics: the sizes, colours and text styles a markup text is set in, all taken
// from the theme.

#include "ui/canvas.h"
#include "ui/theme.h"

namespace halvern {

struct ZMarkupMetrics {
    explicit ZMarkupMetrics(const ZTheme& theme);

    // The text style of a combination of ZMarkupStyle flags.
    ZTextStyle TextStyle(unsigned styleFlags) const;

    ZTextStyle text;        // plain text
    ZColor accent;          // names and references
    ZTextStyle chipText;    // a control's name
    ZColor chipFill;
    ZColor chipBorder;
    double chipPaddingX;
    double chipPaddingY;
    double chipRadius;
    ZColor rule;            // the lines between table rows
    double lineWidth;
    double lineGap;         // added between two lines of a paragraph
    double paragraphGap;    // between paragraphs and tables
    double cellPaddingX;
    double cellPaddingY;
};

} // namespace halvern
