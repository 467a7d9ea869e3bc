#include "core/channel_mode.h"

#include "core/z_format.h"

namespace halvern {

bool ChannelModeFromText(std::string_view text, ZChannelMode& mode)
{
    int index = -1;
    for (int i = 0; i < kChannelModeCount && index < 0; ++i)
        if (kChannelModeNames[static_cast<size_t>(i)] == text)
            index = i;
    if (index < 0)
        index = ZDecimalIndex(text, kChannelModeCount);
    if (index < 0)
        return false;
    mode = static_cast<ZChannelMode>(index);
    return true;
}

std::string_view ChannelModeName(ZChannelMode mode)
{
    const int index = static_cast<int>(mode);
    return index >= 0 && index < kChannelModeCount ? kChannelModeNames[static_cast<size_t>(index)] : kChannelModeNames[0];
}

} // namespace halvern
