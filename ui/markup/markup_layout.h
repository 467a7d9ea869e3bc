#pragma once

// ZMarkupLayout: a markup document set to a width. Words wrap at spaces only; a word
// wider than the width breaks between characters (a line always takes at least one
// character, so only a width narrower than one character is exceeded). Paragraphs and
// tables stand apart by the theme's spacing; table columns take their content's width
// and share what the width allows. The result is a list of positioned pieces and a
// height; Draw paints them with canvas calls in theme colours.

#include "ui/canvas.h"
#include "ui/markup/markup_document.h"
#include "ui/markup/markup_metrics.h"
#include "ui/markup/surface_reference.h"
#include "ui/theme.h"

#include <functional>
#include <string>
#include <vector>

namespace halvern {

// Resolves an image's name to an ARGB32 image surface (its pixels in logical units), or
// null when there is none: the image's text is shown instead. The layout keeps its own
// reference to each surface it is given.
using ZMarkupImageLookup = std::function<cairo_surface_t*(const std::string& name)>;

// One thing the layout draws, in the layout's coordinates (its top left is 0, 0).
struct ZMarkupPiece {
    enum class Kind { Text, Chip, Image, Rule };
    Kind kind = Kind::Text;
    // Text: the run's advance by its font's ascent and descent; Chip: its frame; Image:
    // where it is drawn; Rule: the line.
    ZRect box;
    double baseline = 0.0; // Text and Chip
    std::string text;      // Text and Chip
    ZTextStyle style;      // Text and Chip
    ZSurfaceReference image;
};

class ZMarkupLayout {
public:
    // Sets the document to the width, measuring text on the canvas (which is not drawn
    // on) in the theme's fonts.
    ZMarkupLayout(const ZMarkupDocument& document, double width, const ZTheme& theme, const ZCanvas& measure,
                  const ZMarkupImageLookup& images = {});

    double width() const { return width_; }
    double height() const { return height_; }
    // The right edge of the widest piece.
    double usedWidth() const;
    const std::vector<ZMarkupPiece>& pieces() const { return pieces_; }

    // Paints the pieces with the layout's top left at origin.
    void Draw(ZCanvas& canvas, ZPoint origin) const;

private:
    void drawChip(ZCanvas& canvas, const ZMarkupPiece& chip, const ZRect& box, double baseline) const;

    ZMarkupMetrics metrics_;
    double width_;
    double height_ = 0.0;
    std::vector<ZMarkupPiece> pieces_;
};

} // namespace halvern
