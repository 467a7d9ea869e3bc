#pragma once

// The enumerations of the modulation system and their names.

#include "core/z_enum_names.h"

#include <cstdint>

namespace halvern {

// How a modulator's output in [-1, 1] maps onto its target's range.
enum class ZRangeMode : int32_t { UpAndDown, FullRange, UpOnly, DownOnly, Interval };

// How an envelope follower shapes the level it follows.
enum class ZLFOFollowerMode : int32_t { Linear, Squared, Logarithmic, Direct };

// What triggers an LFO envelope.
enum class ZLFOEnvelopeMode : int32_t { Midi, Audio };

enum class ZMultiParameterMode : int32_t { Normal, Switch, Trigger, Banks };

// How a MultiParameter's targets read its value.
enum class ZMultiParameterValueMode : int32_t { Percents, ByFirstParameter };

// The operating mode of an LFO.
enum class ZLFOMode : int32_t { Normal, Envelope, MidiEnvelope, Random, Pitch };

// How a note controller turns notes into a value.
enum class ZNoteControllerMode : int32_t { Linear, Logarithmic, OnOff, OnOffAllOctaves, Switch, SwitchAllOctaves };

template <> struct ZEnumNames<ZRangeMode> { static std::span<const char* const> names(); };
template <> struct ZEnumNames<ZLFOFollowerMode> { static std::span<const char* const> names(); };
template <> struct ZEnumNames<ZLFOEnvelopeMode> { static std::span<const char* const> names(); };
template <> struct ZEnumNames<ZMultiParameterMode> { static std::span<const char* const> names(); };
template <> struct ZEnumNames<ZMultiParameterValueMode> { static std::span<const char* const> names(); };
template <> struct ZEnumNames<ZLFOMode> { static std::span<const char* const> names(); };
template <> struct ZEnumNames<ZNoteControllerMode> { static std::span<const char* const> names(); };

} // namespace halvern
