#pragma once

// The document model of a help text: paragraphs of inline items and tables whose cells
// hold paragraphs. The parser builds it; the layout engine wraps and draws it.

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

namespace halvern {

// Styles of an inline text; several may apply at once.
enum ZMarkupStyle : unsigned {
    kMarkupPlain = 0,
    kMarkupBold = 1,
    kMarkupItalic = 2,
    kMarkupName = 4,      // names the thing the text describes: semibold, accent-coloured
    kMarkupReference = 8, // points at another topic: accent-coloured like a link
};

struct ZMarkupInline {
    enum class Kind {
        Text,      // text in a style; spaces in it are the only places a line may break
        Control,   // a control's name, shown as a framed chip that never breaks
        Image,     // an image by name; text is shown when the name does not resolve
        LineBreak, // the rest of the paragraph starts on a new line
    };
    Kind kind = Kind::Text;
    std::string text; // valid UTF-8
    unsigned style = kMarkupPlain;
    std::string source; // an image's name

    bool operator==(const ZMarkupInline&) const = default;
};

struct ZMarkupParagraph {
    std::vector<ZMarkupInline> items;

    bool operator==(const ZMarkupParagraph&) const = default;
};

struct ZMarkupCell {
    std::vector<ZMarkupParagraph> paragraphs;

    bool operator==(const ZMarkupCell&) const = default;
};

struct ZMarkupTable {
    std::vector<std::vector<ZMarkupCell>> rows;

    // The number of cells of the longest row.
    size_t columnCount() const;
    bool operator==(const ZMarkupTable&) const = default;
};

using ZMarkupBlock = std::variant<ZMarkupParagraph, ZMarkupTable>;

struct ZMarkupDocument {
    std::vector<ZMarkupBlock> blocks;

    // The text without markup: paragraphs and line breaks as new lines, table cells
    // separated by tabs, a control's name as it is, an image as its text.
    std::string PlainText() const;
};

} // namespace halvern
