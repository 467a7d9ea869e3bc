#include "state/zml_reader.h"

#include "core/utf8.h"

#include "core/z_exception.h"
#include "core/z_format.h"
#include "state/z_stream.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace halvern {
namespace {

// The faults the reader reports.
constexpr const char* kInvalidClosingName = "Invalid closing element name.";
constexpr const char* kTextOutside = "Text outside of any element.";
constexpr const char* kEmptyEntityName = "XML entity cannot have empty name.";
constexpr const char* kTooLarge = "Document is larger than {0} bytes.";
constexpr const char* kNoRoot = "Document has no root element.";
constexpr const char* kSecondRoot = "Document has more than one root element.";
constexpr const char* kTooDeep = "Elements are nested deeper than {0} levels.";
constexpr const char* kNotClosed = "Element ({0}) is not closed.";
constexpr const char* kInvalidElementName = "Invalid element name.";
constexpr const char* kInvalidAttributeName = "Invalid attribute name.";
constexpr const char* kUnterminatedTag = "Unterminated element tag.";
constexpr const char* kInvalidTagCharacter = "Invalid character in element tag.";
constexpr const char* kNoValue = "Attribute ({0}) has no value.";
constexpr const char* kUnquotedValue = "Value of attribute ({0}) is not quoted.";
constexpr const char* kUnterminatedValue = "Unterminated attribute value.";
constexpr const char* kDuplicateAttribute = "Duplicate attribute ({0}).";
constexpr const char* kUnterminatedComment = "Unterminated comment.";
constexpr const char* kUnterminatedInstruction = "Unterminated processing instruction.";
constexpr const char* kUnterminatedCData = "Unterminated CDATA section.";
constexpr const char* kDeclaration = "Markup declarations are not supported.";
constexpr const char* kUnterminatedEntity = "Unterminated XML entity.";
constexpr const char* kUnknownEntity = "Unknown XML entity ({0}).";
constexpr const char* kInvalidReference = "Invalid character reference ({0}).";

// Names quoted in messages are cut to this many bytes.
constexpr size_t kQuotedNameLength = 40;
constexpr int32_t kStreamPiece = 65536;
constexpr uint32_t kMaxCodePoint = 0x10FFFF;

[[noreturn]] void fail(const char* message)
{
    throw ZException(message);
}

[[noreturn]] void fail(const char* format, std::string_view name)
{
    throw ZException(ZFormat(format).arg(name.substr(0, kQuotedNameLength)).text());
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool isNameCharacter(char c)
{
    const auto u = static_cast<unsigned char>(c);
    return (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z') || (u >= '0' && u <= '9') || u == '_' || u == ':' ||
           u == '-' || u == '.' || u >= 0x80;
}

int digitValue(char c, uint32_t base)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (base == 16 && c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (base == 16 && c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}


// Appends the character that an entity name (the text between '&' and ';') stands for.
void appendEntity(std::string_view name, std::string& out)
{
    if (name[0] != '#') {
        if (name == "lt")
            out += '<';
        else if (name == "gt")
            out += '>';
        else if (name == "amp")
            out += '&';
        else if (name == "quot")
            out += '"';
        else if (name == "apos")
            out += '\'';
        else
            fail(kUnknownEntity, name);
        return;
    }
    std::string_view digits = name.substr(1);
    uint32_t base = 10;
    if (!digits.empty() && digits[0] == 'x') {
        base = 16;
        digits.remove_prefix(1);
    }
    if (digits.empty())
        fail(kInvalidReference, name);
    uint32_t codePoint = 0;
    for (char c : digits) {
        const int digit = digitValue(c, base);
        if (digit < 0)
            fail(kInvalidReference, name);
        codePoint = codePoint * base + static_cast<uint32_t>(digit);
        if (codePoint > kMaxCodePoint)
            fail(kInvalidReference, name);
    }
    if (codePoint >= 0xD800 && codePoint <= 0xDFFF)
        fail(kInvalidReference, name);
    AppendUTF8(out, codePoint);
}

// Appends raw character data with its entity references replaced.
void appendDecoded(std::string_view raw, std::string& out)
{
    size_t at = 0;
    while (at < raw.size()) {
        const size_t ampersand = raw.find('&', at);
        if (ampersand == std::string_view::npos) {
            out.append(raw.substr(at));
            return;
        }
        out.append(raw.substr(at, ampersand - at));
        size_t end = ampersand + 1;
        while (end < raw.size() && (isNameCharacter(raw[end]) || raw[end] == '#'))
            ++end;
        if (end >= raw.size() || raw[end] != ';')
            fail(kUnterminatedEntity);
        if (end == ampersand + 1)
            fail(kEmptyEntityName);
        appendEntity(raw.substr(ampersand + 1, end - ampersand - 1), out);
        at = end + 1;
    }
}

// One pass over the document with an explicit stack of open elements.
class Reader {
public:
    explicit Reader(std::string_view document) : in_(document) {}

    std::unique_ptr<ZMLElement> run()
    {
        if (in_.size() > kZMLMaxDocumentSize)
            throw ZException(ZFormat(kTooLarge).arg(static_cast<int64_t>(kZMLMaxDocumentSize)).text());
        if (startsWith("\xEF\xBB\xBF"))
            pos_ = 3;
        while (pos_ < in_.size()) {
            if (in_[pos_] != '<')
                characterData();
            else if (startsWith("<?"))
                skipPast("?>", 2, kUnterminatedInstruction);
            else if (startsWith("<!--"))
                skipPast("-->", 4, kUnterminatedComment);
            else if (startsWith("<![CDATA["))
                cdata();
            else if (startsWith("<!"))
                fail(kDeclaration);
            else if (startsWith("</"))
                closingTag();
            else
                openingTag();
        }
        if (!open_.empty())
            fail(kNotClosed, open_.back().element->name());
        if (!root_)
            fail(kNoRoot);
        return std::move(root_);
    }

private:
    // An element whose closing tag is still ahead. text collects its character data
    // exactly; layoutText the same without the literal blanks at the ends of each run,
    // which becomes the text when the element turns out to have children.
    struct Open {
        ZMLElement* element;
        std::string text;
        std::string layoutText;
    };

    bool startsWith(std::string_view prefix) const { return in_.compare(pos_, prefix.size(), prefix) == 0; }

    bool atEnd() const { return pos_ >= in_.size(); }

    // Skips blanks; true when there was at least one.
    bool skipBlanks()
    {
        const size_t start = pos_;
        while (pos_ < in_.size() && isBlank(in_[pos_]))
            ++pos_;
        return pos_ != start;
    }

    void skipPast(std::string_view terminator, size_t openerLength, const char* unterminated)
    {
        const size_t end = in_.find(terminator, pos_ + openerLength);
        if (end == std::string_view::npos)
            fail(unterminated);
        pos_ = end + terminator.size();
    }

    std::string_view readName(const char* invalid)
    {
        const size_t start = pos_;
        while (pos_ < in_.size() && isNameCharacter(in_[pos_]))
            ++pos_;
        const std::string_view name = in_.substr(start, pos_ - start);
        if (!IsZMLName(name))
            fail(invalid);
        return name;
    }

    void characterData()
    {
        const size_t end = std::min(in_.find('<', pos_), in_.size());
        const std::string_view raw = in_.substr(pos_, end - pos_);
        pos_ = end;
        size_t first = 0;
        size_t last = raw.size();
        while (first < last && isBlank(raw[first]))
            ++first;
        while (last > first && isBlank(raw[last - 1]))
            --last;
        if (open_.empty()) {
            if (first < last)
                fail(kTextOutside);
            return;
        }
        Open& open = open_.back();
        const size_t mark = open.layoutText.size();
        appendDecoded(raw.substr(first, last - first), open.layoutText);
        open.text.append(raw.substr(0, first));
        open.text.append(open.layoutText, mark);
        open.text.append(raw.substr(last));
    }

    void cdata()
    {
        constexpr std::string_view opener = "<![CDATA[";
        if (open_.empty())
            fail(kTextOutside);
        const size_t end = in_.find("]]>", pos_ + opener.size());
        if (end == std::string_view::npos)
            fail(kUnterminatedCData);
        const std::string_view content = in_.substr(pos_ + opener.size(), end - pos_ - opener.size());
        open_.back().text.append(content);
        open_.back().layoutText.append(content);
        pos_ = end + 3;
    }

    void closingTag()
    {
        pos_ += 2;
        const std::string_view name = readName(kInvalidElementName);
        skipBlanks();
        if (atEnd())
            fail(kUnterminatedTag);
        if (in_[pos_] != '>')
            fail(kInvalidTagCharacter);
        ++pos_;
        if (open_.empty() || open_.back().element->name() != name)
            fail(kInvalidClosingName);
        Open& open = open_.back();
        open.element->setText(open.element->children().empty() ? std::move(open.text) : std::move(open.layoutText));
        open_.pop_back();
    }

    void openingTag()
    {
        if (open_.empty() && root_)
            fail(kSecondRoot);
        if (open_.size() >= static_cast<size_t>(kZMLMaxDepth))
            throw ZException(ZFormat(kTooDeep).arg(kZMLMaxDepth).text());
        ++pos_;
        const std::string_view name = readName(kInvalidElementName);
        ZList<ZAttribute> attributes;
        bool empty = false;
        for (;;) {
            const bool blank = skipBlanks();
            if (atEnd())
                fail(kUnterminatedTag);
            const char c = in_[pos_];
            if (c == '>') {
                ++pos_;
                break;
            }
            if (c == '/') {
                if (pos_ + 1 >= in_.size())
                    fail(kUnterminatedTag);
                if (in_[pos_ + 1] != '>')
                    fail(kInvalidTagCharacter);
                pos_ += 2;
                empty = true;
                break;
            }
            if (!blank || !isNameCharacter(c))
                fail(kInvalidTagCharacter);
            attributes.push_back(attribute());
        }
        std::stable_sort(attributes.begin(), attributes.end(),
                         [](const ZAttribute& a, const ZAttribute& b) { return a.name < b.name; });
        const auto repeated = std::adjacent_find(attributes.begin(), attributes.end(),
                                                 [](const ZAttribute& a, const ZAttribute& b) { return a.name == b.name; });
        if (repeated != attributes.end())
            fail(kDuplicateAttribute, repeated->name);

        ZMLElement* element;
        if (open_.empty()) {
            root_ = std::make_unique<ZMLElement>(std::string(name));
            element = root_.get();
        } else {
            element = &open_.back().element->addChild(std::string(name));
        }
        element->setAttributes(std::move(attributes));
        if (!empty)
            open_.push_back(Open{element, {}, {}});
    }

    ZAttribute attribute()
    {
        ZAttribute attribute;
        const std::string_view name = readName(kInvalidAttributeName);
        attribute.name = std::string(name);
        skipBlanks();
        if (atEnd())
            fail(kUnterminatedTag);
        if (in_[pos_] != '=')
            fail(kNoValue, name);
        ++pos_;
        skipBlanks();
        if (atEnd())
            fail(kUnterminatedTag);
        const char quote = in_[pos_];
        if (quote != '"' && quote != '\'')
            fail(kUnquotedValue, name);
        const size_t end = in_.find(quote, pos_ + 1);
        if (end == std::string_view::npos)
            fail(kUnterminatedValue);
        appendDecoded(in_.substr(pos_ + 1, end - pos_ - 1), attribute.value);
        pos_ = end + 1;
        return attribute;
    }

    std::string_view in_;
    size_t pos_ = 0;
    std::unique_ptr<ZMLElement> root_;
    std::vector<Open> open_;
};

} // namespace

std::unique_ptr<ZMLElement> ReadZMLDocument(std::string_view document)
{
    return Reader(document).run();
}

std::unique_ptr<ZMLElement> ReadZMLDocument(ZStream& stream, size_t sizeLimit)
{
    const size_t limit = std::min(sizeLimit, kZMLMaxDocumentSize);
    std::string bytes;
    for (;;) {
        const size_t had = bytes.size();
        bytes.resize(had + kStreamPiece);
        const int32_t got = stream.Read(bytes.data() + had, kStreamPiece);
        bytes.resize(had + static_cast<size_t>(std::max(got, 0)));
        if (bytes.size() > limit)
            throw ZException(ZFormat(kTooLarge).arg(static_cast<int64_t>(limit)).text());
        if (got < kStreamPiece)
            break;
    }
    return ReadZMLDocument(bytes);
}

} // namespace halvern
