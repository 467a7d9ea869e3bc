#pragma once

// Text between the framework's UTF-8 strings and the UTF-16 strings of VST 3.

#include <pluginterfaces/vst/vsttypes.h>

#include <string>
#include <string_view>

namespace halvern {

// Writes text into a String128, cut at 127 UTF-16 units (never inside a surrogate pair)
// and terminated. Malformed UTF-8 bytes become U+FFFD.
void CopyToString128(std::string_view text, Steinberg::Vst::String128 into);
// A terminated UTF-16 string as UTF-8; unpaired surrogates become U+FFFD.
std::string ToUtf8(const Steinberg::Vst::TChar* text);

} // namespace halvern
