#include "core/z_object.h"

#include <cstring>

namespace halvern {

int32_t ZPluginMessage::argument(int number) const
{
    const int slot = number - 1;
    if (slots == nullptr || slot < 0 || slot >= slotCount)
        return 0;
    uint32_t words[2];
    std::memcpy(words, &slots[slot], sizeof(words));
    return static_cast<int32_t>(words[1]);
}

void* ZPluginMessage::pointer(int number) const
{
    const int slot = number - 1;
    if (slots == nullptr || slot < 0 || slot >= slotCount)
        return nullptr;
    return reinterpret_cast<void*>(static_cast<uintptr_t>(slots[slot]));
}

intptr_t ZPlugin::HandleMessage(int32_t, const ZPluginMessage&)
{
    return 0;
}

} // namespace halvern
