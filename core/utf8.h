#pragma once

// UTF-8 text: encoding a code point, replacing malformed bytes, stepping by characters.

#include <cstddef>
#include <string>
#include <string_view>

namespace halvern {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

// Appends a code point; one that is not a Unicode scalar value (a surrogate, above
// U+10FFFF) is appended as U+FFFD.
void AppendUTF8(std::string& out, char32_t codePoint);

// The text with every byte that is not part of a well-formed UTF-8 sequence (overlong
// forms, surrogates and values above U+10FFFF included) replaced by U+FFFD.
std::string SanitizedUTF8(std::string_view text);

// The offset of the character after the one starting at offset in valid UTF-8.
size_t NextCharacter(std::string_view text, size_t offset);

} // namespace halvern
