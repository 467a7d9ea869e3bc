#include "core/channel_mode.h"

namespace halvern {

ZChannelMode ChannelModeFromName(std::string_view name)
{
    for (int i = 0; i < kChannelModeCount; ++i)
        if (kChannelModeNames[static_cast<size_t>(i)] == name)
            return static_cast<ZChannelMode>(i);
    return ZChannelMode::Stereo;
}

std::string_view ChannelModeName(ZChannelMode mode)
{
    const int index = static_cast<int>(mode);
    return index >= 0 && index < kChannelModeCount ? kChannelModeNames[static_cast<size_t>(index)] : kChannelModeNames[0];
}

} // namespace halvern
