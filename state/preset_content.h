#pragma once

// The content of one preset and its two stored forms. A "preset" element in plain form
// holds the owner's state items itself; in compressed form ("compressed" = "1") its text
// holds the plain element written as a complete markup document, compressed in the zlib
// format at level 9 and written as upper-case hexadecimal, two digits per byte.

#include "state/zml_element.h"

#include <memory>
#include <string_view>

namespace halvern {

inline constexpr std::string_view kPresetElement = "preset";
inline constexpr std::string_view kPresetName = "name";
inline constexpr std::string_view kPresetCompressed = "compressed";
inline constexpr std::string_view kPresetExchangeIndex = "ExchangeIndex";

bool IsCompressedPreset(const ZMLElement& preset);

// The content of a preset: a copy of a plain element, or the element that a compressed
// one holds. Throws "Hexadecimal stream has invalid content.", "Source compressed stream
// has invalid content." or the markup reader's errors for packed text that does not
// decode, inflate or parse.
std::unique_ptr<ZMLElement> PresetContent(const ZMLElement& preset);

// Turns a plain preset into the compressed form: its content is packed into its text,
// and of its attributes only "name", "compressed" and "ExchangeIndex" remain, so that it
// keeps its place in the exchange. A compressed preset stays as it is.
void CompressPreset(ZMLElement& preset);

} // namespace halvern
