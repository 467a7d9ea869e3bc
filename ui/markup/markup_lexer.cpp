#include "ui/markup/markup_lexer.h"

#include "core/utf8.h"

#include <algorithm>
#include <cstdint>

namespace halvern {
namespace {

constexpr size_t kMaxEntityBytes = 12; // "&#x10FFFF;" and a little room

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isNameCharacter(char c)
{
    return isLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '_' || c == ':' || c == '.';
}

bool isSpace(char c)
{
    return IsMarkupSpace(static_cast<unsigned char>(c));
}

void skipSpaces(std::string_view text, size_t& pos)
{
    while (pos < text.size() && isSpace(text[pos]))
        ++pos;
}

std::string readName(std::string_view text, size_t& pos)
{
    std::string name;
    for (; pos < text.size() && isNameCharacter(text[pos]); ++pos)
        name += static_cast<char>(text[pos] >= 'A' && text[pos] <= 'Z' ? text[pos] - 'A' + 'a' : text[pos]);
    return name;
}

std::string decodeAttributeValue(std::string_view raw)
{
    std::string value;
    bool pendingSpace = false;
    for (size_t i = 0; i < raw.size();) {
        char32_t codePoint = static_cast<unsigned char>(raw[i]);
        size_t length = raw[i] == '&' ? DecodeMarkupEntity(raw, i, codePoint) : 0;
        if (IsMarkupSpace(codePoint)) {
            pendingSpace = !value.empty();
            i += std::max<size_t>(length, 1);
            continue;
        }
        if (pendingSpace)
            value += ' ';
        pendingSpace = false;
        if (length > 0) {
            AppendUTF8(value, codePoint);
        } else {
            length = NextCharacter(raw, i) - i;
            value.append(raw, i, length);
        }
        i += length;
    }
    return value;
}

// Reads one attribute at pos; false when there is no attribute name there.
bool readAttribute(std::string_view text, size_t& pos, ZMarkupTag& tag)
{
    std::string name = readName(text, pos);
    if (name.empty())
        return false;
    skipSpaces(text, pos);
    std::string_view raw;
    if (pos < text.size() && text[pos] == '=') {
        ++pos;
        skipSpaces(text, pos);
        if (pos < text.size() && (text[pos] == '"' || text[pos] == '\'')) {
            const size_t close = text.find(text[pos], pos + 1);
            if (close == std::string_view::npos) {
                pos = text.size(); // the tag never ends
                return true;
            }
            raw = text.substr(pos + 1, close - pos - 1);
            pos = close + 1;
        } else {
            const size_t begin = pos;
            while (pos < text.size() && !isSpace(text[pos]) && text[pos] != '>' && text[pos] != '<' &&
                   text.substr(pos, 2) != "/>")
                ++pos;
            raw = text.substr(begin, pos - begin);
        }
    }
    tag.attributes.emplace_back(std::move(name), decodeAttributeValue(raw));
    return true;
}

size_t readComment(std::string_view text, size_t start, ZMarkupTag& tag)
{
    tag.kind = ZMarkupTag::Kind::Ignored;
    const size_t close = text.find("-->", start + 4);
    return close == std::string_view::npos ? text.size() : close + 3; // an open comment runs to the end
}

size_t readDeclaration(std::string_view window, size_t start, ZMarkupTag& tag)
{
    tag.kind = ZMarkupTag::Kind::Ignored;
    const size_t close = window.find('>', start);
    return close == std::string_view::npos ? std::string_view::npos : close + 1;
}

bool parseNumber(std::string_view digits, int base, uint64_t& value)
{
    if (digits.empty())
        return false;
    value = 0;
    for (const char c : digits) {
        int digit = -1;
        if (c >= '0' && c <= '9')
            digit = c - '0';
        else if (base == 16 && c >= 'a' && c <= 'f')
            digit = c - 'a' + 10;
        else if (base == 16 && c >= 'A' && c <= 'F')
            digit = c - 'A' + 10;
        if (digit < 0)
            return false;
        value = value * static_cast<uint64_t>(base) + static_cast<uint64_t>(digit);
    }
    return true;
}

bool decodeBody(std::string_view body, char32_t& codePoint)
{
    static constexpr std::pair<std::string_view, char32_t> kNamed[] = {
        {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}, {"nbsp", 0xA0},
    };
    for (const auto& [name, value] : kNamed) {
        if (body == name) {
            codePoint = value;
            return true;
        }
    }
    if (body.size() < 2 || body[0] != '#')
        return false;
    const bool hex = body[1] == 'x' || body[1] == 'X';
    uint64_t value = 0;
    if (!parseNumber(body.substr(hex ? 2 : 1), hex ? 16 : 10, value))
        return false;
    codePoint = value == 0 || value > 0x10FFFF ? kReplacementCharacter : static_cast<char32_t>(value);
    return true;
}

} // namespace

std::string ZMarkupTag::attribute(std::string_view attributeName) const
{
    for (const auto& [name, value] : attributes) {
        if (name == attributeName)
            return value;
    }
    return {};
}

size_t ReadMarkupTag(std::string_view text, size_t start, ZMarkupTag& tag)
{
    tag = ZMarkupTag{};
    if (text.substr(start, 4) == "<!--")
        return readComment(text, start, tag);
    const std::string_view window = text.substr(0, std::min(text.size(), start + kMaxMarkupTagBytes));
    size_t pos = start + 1;
    if (pos < window.size() && (window[pos] == '!' || window[pos] == '?'))
        return readDeclaration(window, pos, tag);
    tag.kind = ZMarkupTag::Kind::Open;
    if (pos < window.size() && window[pos] == '/') {
        tag.kind = ZMarkupTag::Kind::Close;
        ++pos;
    }
    if (pos >= window.size() || !isLetter(window[pos]))
        return std::string_view::npos;
    tag.name = readName(window, pos);
    while (true) {
        skipSpaces(window, pos);
        if (pos >= window.size())
            return std::string_view::npos;
        if (window[pos] == '>')
            return pos + 1;
        if (window[pos] == '<')
            return std::string_view::npos; // the '<' at start was text
        if (window.substr(pos, 2) == "/>") {
            tag.selfClosing = true;
            return pos + 2;
        }
        if (!readAttribute(window, pos, tag))
            ++pos; // a stray character inside a tag is passed over
    }
}

size_t DecodeMarkupEntity(std::string_view text, size_t start, char32_t& codePoint)
{
    const size_t semicolon = text.substr(0, start + kMaxEntityBytes + 1).find(';', start + 1);
    if (semicolon == std::string_view::npos)
        return 0;
    if (!decodeBody(text.substr(start + 1, semicolon - start - 1), codePoint))
        return 0;
    return semicolon - start + 1;
}

} // namespace halvern
