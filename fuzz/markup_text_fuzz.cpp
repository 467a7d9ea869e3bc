// Feeds arbitrary bytes to the markup text renderer: parses them, lays the document out
// at several widths (none and one unit included) and draws it into a small canvas. The
// text drawn must be the document's text without its spaces at every width (control
// names aside, which may be cut to fit), and where each column has a usable width every
// piece must lie inside the width. Anything else aborts.

#include "ui/markup/markup_layout.h"
#include "ui/markup/markup_parser.h"
#include "ui/theme.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace halvern;

void check(bool condition)
{
    if (!condition)
        std::abort();
}

// The words of every text item and unresolved image, without spaces.
void collectText(const ZMarkupParagraph& paragraph, std::string& out)
{
    for (const ZMarkupInline& item : paragraph.items) {
        const bool drawnAsText = item.kind == ZMarkupInline::Kind::Text ||
                                 (item.kind == ZMarkupInline::Kind::Image && item.source != "a");
        if (!drawnAsText)
            continue;
        for (const char c : item.text) {
            if (c != ' ')
                out += c;
        }
    }
}

// The most columns of any table, 1 for text alone.
size_t widestColumns(const ZMarkupDocument& document)
{
    size_t columns = 1;
    for (const ZMarkupBlock& block : document.blocks) {
        if (const auto* table = std::get_if<ZMarkupTable>(&block))
            columns = std::max(columns, table->columnCount());
    }
    return columns;
}

std::string expectedText(const ZMarkupDocument& document)
{
    std::string out;
    for (const ZMarkupBlock& block : document.blocks) {
        if (const auto* paragraph = std::get_if<ZMarkupParagraph>(&block)) {
            collectText(*paragraph, out);
            continue;
        }
        for (const auto& row : std::get<ZMarkupTable>(block).rows) {
            for (const ZMarkupCell& cell : row) {
                for (const ZMarkupParagraph& paragraph : cell.paragraphs)
                    collectText(paragraph, out);
            }
        }
    }
    return out;
}

void checkLayout(const ZMarkupLayout& layout, double width, size_t columns, const std::string& expected)
{
    check(std::isfinite(layout.height()) && layout.height() >= 0.0);
    constexpr double kUsableWidth = 100.0; // wider than any one character or framed name
    const bool usable = width >= kUsableWidth * static_cast<double>(columns);
    std::string drawn;
    for (const ZMarkupPiece& piece : layout.pieces()) {
        check(std::isfinite(piece.box.x) && std::isfinite(piece.box.y) && piece.box.width >= 0.0);
        check(piece.box.y >= 0.0 && piece.box.bottom() <= layout.height() + 1e-6);
        if (usable)
            check(piece.box.x >= 0.0 && piece.box.right() <= width + 1e-6);
        if (piece.kind == ZMarkupPiece::Kind::Text)
            drawn += piece.text;
    }
    check(drawn == expected);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const ZTheme theme = ZTheme::Default();
    static ZCanvas canvas(48, 32, 1.5);
    static cairo_surface_t* image = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 30, 12);
    const ZMarkupImageLookup images = [](const std::string& name) { return name == "a" ? image : nullptr; };

    const ZMarkupDocument document = ParseMarkup(std::string_view(reinterpret_cast<const char*>(data), size));
    const std::string expected = expectedText(document);
    const size_t columns = widestColumns(document);
    for (const double width : {0.0, 1.0, 37.0, 150.0, 320.0}) {
        const ZMarkupLayout layout(document, width, theme, canvas, images);
        checkLayout(layout, width, columns, expected);
        layout.Draw(canvas, {-width / 4, -3.0});
    }
    return 0;
}
