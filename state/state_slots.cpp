#include "state/state_slots.h"

#include "modulation/audio_effect_plugin_to_audio_plugin_adapter.h"
#include "state/serialization_context.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace halvern {

ZStateSlots::ZStateSlots(ZAudioEffectPluginToAudioPluginAdapter& core) : core_(core)
{
    selector_.setFormatter([](int slot) { return std::string(1, Letter(slot)); });
    selector_.setParser([](std::string_view text, int& slot) {
        const int letter = text.size() == 1 ? std::toupper(static_cast<unsigned char>(text[0])) - 'A' : -1;
        if (letter < 0 || letter >= kCount)
            return false;
        slot = letter;
        return true;
    });
}

void ZStateSlots::initialise()
{
    live_ = 0;
    requested_ = 0;
    previous_ = -1;
    slots_[0].clear();
    core_.serializeState(ZSerializationContext(slots_[0], true));
    initial_ = std::move(*slots_[0].clone());
    for (int slot = 1; slot < kCount; ++slot)
        slots_[static_cast<size_t>(slot)] = std::move(*slots_[0].clone());
}

void ZStateSlots::request(int slot)
{
    requested_ = std::clamp(slot, 0, kCount - 1);
}

void ZStateSlots::load(int slot)
{
    core_.serializeState(ZSerializationContext(slots_.at(static_cast<size_t>(slot)), false));
}

bool ZStateSlots::switchToRequested()
{
    if (requested_ == live_)
        return false;
    ZMLElement& left = slots_[static_cast<size_t>(live_)];
    left.clear();
    core_.serializeState(ZSerializationContext(left, true));
    previous_ = live_;
    live_ = requested_;
    load(live_);
    core_.StateChanged();
    return true;
}

std::string ZStateSlots::ChildName(int slot)
{
    return "Preset" + std::to_string(slot);
}

void ZStateSlots::serialize(const ZSerializationContext& context)
{
    context.kept("PresetIndex", live_);
    if (context.reading()) {
        live_ = std::clamp(live_, 0, kCount - 1);
        requested_ = live_;
    }
    for (int slot = 0; slot < kCount; ++slot) {
        if (slot == live_)
            continue;
        ZMLElement& held = slots_[static_cast<size_t>(slot)];
        if (context.storing()) {
            context.element().addCopy(held).setName(ChildName(slot));
        } else if (const ZMLElement* stored = context.element().findChild(ChildName(slot))) {
            held = std::move(*stored->clone());
            held.setName(ChildName(slot));
        }
    }
}

} // namespace halvern
