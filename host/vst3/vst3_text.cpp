#include "host/vst3/vst3_text.h"

#include <cstdint>

namespace halvern {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

// The code point starting at text[at]; moves at past it.
char32_t DecodeUtf8(std::string_view text, size_t& at)
{
    const auto lead = static_cast<unsigned char>(text[at++]);
    const int length = lead < 0x80 ? 0 : lead >= 0xF8 ? -1 : lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC2 ? 1 : -1;
    if (length < 0)
        return kReplacement;
    char32_t code = length == 0 ? lead : lead & (0x3F >> length);
    for (int i = 0; i < length; ++i) {
        if (at >= text.size() || (static_cast<unsigned char>(text[at]) & 0xC0) != 0x80)
            return kReplacement;
        code = (code << 6) | (static_cast<unsigned char>(text[at++]) & 0x3F);
    }
    constexpr char32_t kShortest[] = {0, 0x80, 0x800, 0x10000};
    const bool overlong = code < kShortest[length];
    return overlong || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000) ? kReplacement : code;
}

void AppendUtf8(std::string& out, char32_t code)
{
    if (code < 0x80) {
        out.push_back(static_cast<char>(code));
    } else if (code < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (code >> 6)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else if (code < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (code >> 12)));
        out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (code >> 18)));
        out.push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    }
}

} // namespace

void CopyToString128(std::string_view text, Steinberg::Vst::String128 into)
{
    constexpr size_t kUnits = 127;
    size_t written = 0;
    for (size_t at = 0; at < text.size();) {
        const char32_t code = DecodeUtf8(text, at);
        if (code >= 0x10000) {
            if (written + 2 > kUnits)
                break;
            into[written++] = static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
            into[written++] = static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
        } else {
            if (written + 1 > kUnits)
                break;
            into[written++] = static_cast<char16_t>(code);
        }
    }
    into[written] = 0;
}

std::string ToUtf8(const Steinberg::Vst::TChar* text)
{
    std::string out;
    if (text == nullptr)
        return out;
    for (size_t at = 0; text[at] != 0; ++at) {
        char32_t code = static_cast<char16_t>(text[at]);
        if (code >= 0xD800 && code < 0xDC00 && text[at + 1] >= 0xDC00 && text[at + 1] < 0xE000) {
            code = 0x10000 + ((code - 0xD800) << 10) + (static_cast<char16_t>(text[++at]) - 0xDC00);
        } else if (code >= 0xD800 && code < 0xE000) {
            code = kReplacement;
        }
        AppendUtf8(out, code);
    }
    return out;
}

} // namespace halvern
