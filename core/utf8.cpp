#include "core/utf8.h"

namespace halvern {
namespace {

bool isContinuation(unsigned char byte)
{
    return (byte & 0xC0) == 0x80;
}

bool isScalarValue(char32_t codePoint)
{
    return codePoint <= 0x10FFFF && (codePoint < 0xD800 || codePoint > 0xDFFF);
}

// The length of the well-formed sequence at offset, or 0 when there is none.
size_t sequenceLength(std::string_view text, size_t offset)
{
    const auto lead = static_cast<unsigned char>(text[offset]);
    if (lead < 0x80)
        return 1;
    // The sequence's length, the lead byte's payload and the smallest value that needs
    // that length (anything smaller is an overlong form).
    size_t length = 4;
    char32_t codePoint = lead & 0x07;
    char32_t smallest = 0x10000;
    if ((lead & 0xE0) == 0xC0) {
        length = 2;
        codePoint = lead & 0x1F;
        smallest = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3;
        codePoint = lead & 0x0F;
        smallest = 0x800;
    } else if ((lead & 0xF8) != 0xF0) {
        return 0;
    }
    if (offset + length > text.size())
        return 0;
    for (size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[offset + i]);
        if (!isContinuation(byte))
            return 0;
        codePoint = (codePoint << 6) | (byte & 0x3F);
    }
    return codePoint >= smallest && isScalarValue(codePoint) ? length : 0;
}

} // namespace

void AppendUTF8(std::string& out, char32_t codePoint)
{
    if (!isScalarValue(codePoint))
        codePoint = kReplacementCharacter;
    if (codePoint < 0x80) {
        out += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        out += static_cast<char>(0xC0 | (codePoint >> 6));
        out += static_cast<char>(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        out += static_cast<char>(0xE0 | (codePoint >> 12));
        out += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (codePoint & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (codePoint >> 18));
        out += static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (codePoint & 0x3F));
    }
}

std::string SanitizedUTF8(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    size_t offset = 0;
    while (offset < text.size()) {
        const size_t length = sequenceLength(text, offset);
        if (length == 0) {
            AppendUTF8(out, kReplacementCharacter);
            ++offset;
        } else {
            out.append(text, offset, length);
            offset += length;
        }
    }
    return out;
}

size_t NextCharacter(std::string_view text, size_t offset)
{
    ++offset;
    while (offset < text.size() && isContinuation(static_cast<unsigned char>(text[offset])))
        ++offset;
    return offset;
}

} // namespace halvern
