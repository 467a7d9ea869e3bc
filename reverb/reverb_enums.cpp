#include "reverb/reverb_enums.h"

namespace halvern {

namespace {

const char* const kReverbModeNames[] = {"Mode 1", "Mode 2", "Mode 3", "Mode 4"};
const char* const kSaturationModeNames[] = {"Soft 1", "Soft 2", "Soft 3", "Soft 4", "Clip 1", "Clip 2", "Clip 3"};

} // namespace

std::span<const char* const> ZEnumNames<ZReverbMode>::names() { return kReverbModeNames; }
std::span<const char* const> ZEnumNames<ZSaturationMode>::names() { return kSaturationModeNames; }

} // namespace halvern
