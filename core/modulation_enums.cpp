#include "core/modulation_enums.h"

#include <iterator>

namespace halvern {

namespace {

// The names of all modulation enumerations, one table after another; each
// enumeration reads its own slice.
const char* const kModulationNames[] = {
    // ZRangeMode
    "Up and down", "Full range", "Up only", "Down only", "Interval",
    // ZLFOFollowerMode
    "Linear", "Squared", "Logarithmic", "Direct",
    // ZLFOEnvelopeMode
    "MIDI", "Audio",
    // ZMultiParameterMode
    "Normal", "Switch", "Trigger", "Banks",
    // ZMultiParameterValueMode
    "Percents", "By first parameter",
    // ZLFOMode
    "Normal", "Envelope", "MIDI Envelope", "Random", "Pitch",
    // ZNoteControllerMode
    "Linear", "Logarithmic", "On/Off", "On/Off (all octaves)", "Switch", "Switch (all octaves)",
};
static_assert(std::size(kModulationNames) == 28, "the slices below cover the whole table");

std::span<const char* const> slice(size_t offset, size_t count)
{
    return std::span<const char* const>(kModulationNames).subspan(offset, count);
}

} // namespace

std::span<const char* const> ZEnumNames<ZRangeMode>::names() { return slice(0, 5); }
std::span<const char* const> ZEnumNames<ZLFOFollowerMode>::names() { return slice(5, 4); }
std::span<const char* const> ZEnumNames<ZLFOEnvelopeMode>::names() { return slice(9, 2); }
std::span<const char* const> ZEnumNames<ZMultiParameterMode>::names() { return slice(11, 4); }
std::span<const char* const> ZEnumNames<ZMultiParameterValueMode>::names() { return slice(15, 2); }
std::span<const char* const> ZEnumNames<ZLFOMode>::names() { return slice(17, 5); }
std::span<const char* const> ZEnumNames<ZNoteControllerMode>::names() { return slice(22, 6); }

} // namespace halvern
