#pragma once

// The enumerations of the reverb's parameters and their names.

#include "core/z_enum_names.h"

#include <cstdint>

namespace halvern {

// The mixing algorithm of the late reverberation network.
enum class ZReverbMode : int32_t { Mode1, Mode2, Mode3, Mode4 };

// The curve of the saturation shaper: four rounded curves of growing drive, then three
// clippers with increasingly hard knees.
enum class ZSaturationMode : int32_t { Soft1, Soft2, Soft3, Soft4, Clip1, Clip2, Clip3 };

template <> struct ZEnumNames<ZReverbMode> { static std::span<const char* const> names(); };
template <> struct ZEnumNames<ZSaturationMode> { static std::span<const char* const> names(); };

} // namespace halvern
