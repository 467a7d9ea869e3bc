#include "ui/markup/markup_document.h"

#include <algorithm>

namespace halvern {
namespace {

void appendParagraph(std::string& out, const ZMarkupParagraph& paragraph)
{
    for (const ZMarkupInline& item : paragraph.items)
        out += item.kind == ZMarkupInline::Kind::LineBreak ? std::string("\n") : item.text;
}

void appendParagraphs(std::string& out, const std::vector<ZMarkupParagraph>& paragraphs)
{
    for (size_t i = 0; i < paragraphs.size(); ++i) {
        if (i > 0)
            out += '\n';
        appendParagraph(out, paragraphs[i]);
    }
}

void appendTable(std::string& out, const ZMarkupTable& table)
{
    for (size_t r = 0; r < table.rows.size(); ++r) {
        if (r > 0)
            out += '\n';
        for (size_t c = 0; c < table.rows[r].size(); ++c) {
            if (c > 0)
                out += '\t';
            appendParagraphs(out, table.rows[r][c].paragraphs);
        }
    }
}

} // namespace

size_t ZMarkupTable::columnCount() const
{
    size_t count = 0;
    for (const auto& row : rows)
        count = std::max(count, row.size());
    return count;
}

std::string ZMarkupDocument::PlainText() const
{
    std::string out;
    for (size_t i = 0; i < blocks.size(); ++i) {
        if (i > 0)
            out += '\n';
        if (const auto* paragraph = std::get_if<ZMarkupParagraph>(&blocks[i]))
            appendParagraph(out, *paragraph);
        else
            appendTable(out, std::get<ZMarkupTable>(blocks[i]));
    }
    return out;
}

} // namespace halvern
