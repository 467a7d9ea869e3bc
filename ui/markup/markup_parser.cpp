#include "ui/markup/markup_parser.h"

#include "ui/markup/markup_lexer.h"
#include "core/utf8.h"

#include <algorithm>
#include <optional>

namespace halvern {
namespace {

using Kind = ZMarkupInline::Kind;

// The inline styles by tag name.
std::optional<unsigned> styleOfTag(std::string_view name)
{
    if (name == "b" || name == "strong")
        return kMarkupBold;
    if (name == "i" || name == "em")
        return kMarkupItalic;
    if (name == "name")
        return kMarkupName;
    if (name == "reference")
        return kMarkupReference;
    return std::nullopt;
}

// Builds the document from the text and tags in reading order.
class DocumentBuilder {
public:
    void Text(std::string_view raw);
    void Tag(const ZMarkupTag& tag);
    ZMarkupDocument Finish();

private:
    void open(const ZMarkupTag& tag);
    void close(std::string_view name);

    // ---- text ----
    void appendText(std::string_view utf8);
    void appendCodePoint(char32_t codePoint);
    void flushSpace();
    void trimTrailingSpace();
    ZMarkupInline& textItem();
    unsigned currentStyle() const;
    void openStyle(std::string_view name, unsigned style);
    void closeStyle(std::string_view name);

    // ---- inline items ----
    void beginControl();
    void endControl();
    void lineBreak();
    void image(const ZMarkupTag& tag);

    // ---- blocks ----
    void endParagraph();
    void beginTable();
    void endTable();
    void beginRow();
    void beginCell();
    std::vector<ZMarkupCell>& currentRow();

    struct OpenStyle {
        std::string name;
        unsigned style;
    };

    ZMarkupDocument document_;
    ZMarkupParagraph paragraph_;
    std::optional<ZMarkupTable> table_;
    std::vector<OpenStyle> styles_;
    bool inControl_ = false; // the paragraph's last item is the chip being read
    bool pendingSpace_ = false;
};

void DocumentBuilder::Text(std::string_view raw)
{
    size_t i = 0;
    while (i < raw.size()) {
        if (IsMarkupSpace(static_cast<unsigned char>(raw[i]))) {
            pendingSpace_ = true;
            ++i;
            continue;
        }
        if (raw[i] == '&') {
            char32_t codePoint = 0;
            if (const size_t length = DecodeMarkupEntity(raw, i, codePoint)) {
                appendCodePoint(codePoint);
                i += length;
                continue;
            }
        }
        size_t end = i + 1;
        while (end < raw.size() && raw[end] != '&' && !IsMarkupSpace(static_cast<unsigned char>(raw[end])))
            ++end;
        appendText(raw.substr(i, end - i));
        i = end;
    }
}

void DocumentBuilder::Tag(const ZMarkupTag& tag)
{
    if (tag.kind == ZMarkupTag::Kind::Open)
        open(tag);
    else if (tag.kind == ZMarkupTag::Kind::Close)
        close(tag.name);
}

ZMarkupDocument DocumentBuilder::Finish()
{
    endParagraph();
    endTable();
    return std::move(document_);
}

void DocumentBuilder::open(const ZMarkupTag& tag)
{
    const std::string& name = tag.name;
    if (name == "p")
        endParagraph();
    else if (name == "br")
        lineBreak();
    else if (name == "img")
        image(tag);
    else if (name == "control" && !tag.selfClosing)
        beginControl();
    else if (name == "table" && !tag.selfClosing)
        beginTable();
    else if (name == "tr")
        beginRow();
    else if (name == "td" || name == "th")
        beginCell();
    else if (const auto style = styleOfTag(name); style && !tag.selfClosing)
        openStyle(name, *style);
}

void DocumentBuilder::close(std::string_view name)
{
    if (name == "p" || name == "tr" || name == "td" || name == "th")
        endParagraph();
    else if (name == "control")
        endControl();
    else if (name == "table")
        endTable();
    else if (styleOfTag(name))
        closeStyle(name);
}

void DocumentBuilder::appendText(std::string_view utf8)
{
    flushSpace();
    textItem().text += utf8;
}

void DocumentBuilder::appendCodePoint(char32_t codePoint)
{
    if (IsMarkupSpace(codePoint)) {
        pendingSpace_ = true;
        return;
    }
    std::string utf8;
    AppendUTF8(utf8, codePoint);
    appendText(utf8);
}

// A space is written only between two pieces of content of one line, never at the start
// of a paragraph, line or chip.
void DocumentBuilder::flushSpace()
{
    if (!pendingSpace_)
        return;
    pendingSpace_ = false;
    if (paragraph_.items.empty())
        return;
    const ZMarkupInline& last = paragraph_.items.back();
    if (last.kind == Kind::LineBreak || (inControl_ && last.text.empty()))
        return;
    textItem().text += ' ';
}

// The item text goes to: the chip being read, else a text item in the current style.
// A line never ends in a space.
void DocumentBuilder::trimTrailingSpace()
{
    pendingSpace_ = false;
    std::vector<ZMarkupInline>& items = paragraph_.items;
    if (items.empty() || items.back().kind != Kind::Text || !items.back().text.ends_with(' '))
        return;
    items.back().text.pop_back();
    if (items.back().text.empty())
        items.pop_back();
}

ZMarkupInline& DocumentBuilder::textItem()
{
    std::vector<ZMarkupInline>& items = paragraph_.items;
    if (inControl_)
        return items.back();
    const unsigned style = currentStyle();
    if (items.empty() || items.back().kind != Kind::Text || items.back().style != style)
        items.push_back({Kind::Text, {}, style, {}});
    return items.back();
}

unsigned DocumentBuilder::currentStyle() const
{
    unsigned style = kMarkupPlain;
    for (const OpenStyle& open : styles_)
        style |= open.style;
    return style;
}

// A space written before a tag belongs to the text before it.
void DocumentBuilder::openStyle(std::string_view name, unsigned style)
{
    flushSpace();
    if (styles_.size() < kMaxMarkupNesting)
        styles_.push_back({std::string(name), style});
}

// Closes the innermost open style of that name and every style opened inside it.
void DocumentBuilder::closeStyle(std::string_view name)
{
    const auto open = std::find_if(styles_.rbegin(), styles_.rend(),
                                   [&](const OpenStyle& style) { return style.name == name; });
    if (open == styles_.rend())
        return;
    flushSpace();
    styles_.erase(std::prev(open.base()), styles_.end());
}

void DocumentBuilder::beginControl()
{
    if (inControl_)
        return;
    flushSpace();
    paragraph_.items.push_back({Kind::Control, {}, kMarkupPlain, {}});
    inControl_ = true;
}

void DocumentBuilder::endControl()
{
    if (!inControl_)
        return;
    inControl_ = false;
    if (paragraph_.items.back().text.empty())
        paragraph_.items.pop_back();
}

void DocumentBuilder::lineBreak()
{
    endControl();
    trimTrailingSpace();
    paragraph_.items.push_back({Kind::LineBreak, {}, kMarkupPlain, {}});
}

void DocumentBuilder::image(const ZMarkupTag& tag)
{
    endControl();
    const std::string source = tag.attribute("src");
    std::string text = tag.attribute("alt");
    if (text.empty())
        text = source;
    if (text.empty())
        return;
    flushSpace();
    paragraph_.items.push_back({Kind::Image, std::move(text), currentStyle(), source});
}

// Moves the paragraph read so far to the open table cell or the document.
void DocumentBuilder::endParagraph()
{
    endControl();
    trimTrailingSpace();
    if (paragraph_.items.empty())
        return;
    if (table_) {
        std::vector<ZMarkupCell>& row = currentRow();
        if (row.empty())
            row.emplace_back();
        row.back().paragraphs.push_back(std::move(paragraph_));
    } else {
        document_.blocks.emplace_back(std::move(paragraph_));
    }
    paragraph_ = {};
}

void DocumentBuilder::beginTable()
{
    if (table_)
        return;
    endParagraph();
    table_.emplace();
}

void DocumentBuilder::endTable()
{
    if (!table_)
        return;
    endParagraph();
    std::erase_if(table_->rows, [](const std::vector<ZMarkupCell>& row) { return row.empty(); });
    if (!table_->rows.empty())
        document_.blocks.emplace_back(std::move(*table_));
    table_.reset();
}

void DocumentBuilder::beginRow()
{
    if (!table_)
        return;
    endParagraph();
    table_->rows.emplace_back();
}

void DocumentBuilder::beginCell()
{
    if (!table_)
        return;
    endParagraph();
    std::vector<ZMarkupCell>& row = currentRow();
    if (row.size() < kMaxMarkupColumns)
        row.emplace_back();
}

std::vector<ZMarkupCell>& DocumentBuilder::currentRow()
{
    if (table_->rows.empty())
        table_->rows.emplace_back();
    return table_->rows.back();
}

} // namespace

ZMarkupDocument ParseMarkup(std::string_view markup)
{
    const std::string text = SanitizedUTF8(markup.substr(0, kMaxMarkupBytes));
    const std::string_view view(text);
    DocumentBuilder builder;
    size_t textStart = 0;
    size_t pos = view.find('<');
    while (pos != std::string_view::npos) {
        ZMarkupTag tag;
        const size_t end = ReadMarkupTag(view, pos, tag);
        if (end == std::string_view::npos) {
            pos = view.find('<', pos + 1); // a '<' that starts no tag is text
            continue;
        }
        builder.Text(view.substr(textStart, pos - textStart));
        builder.Tag(tag);
        textStart = end;
        pos = view.find('<', end);
    }
    builder.Text(view.substr(textStart));
    return builder.Finish();
}

} // namespace halvern
