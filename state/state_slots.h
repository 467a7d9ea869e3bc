#pragma once

// The eight A-H state slots of a plug-in: each holds the slot part of the state (what
// the core's serializeState writes) as it was when the slot was last left. The live
// slot's element is stale while it is live, since the plug-in itself holds that state.
// The selector ("AH") is the requested slot as a host-visible value, shown as a letter.
// Nothing here locks: the caller excludes processing.

#include "core/z_value_number.h"
#include "state/zml_element.h"

#include <array>
#include <cstdint>
#include <string>

namespace halvern {

class ZAudioEffectPluginToAudioPluginAdapter;
class ZSerializationContext;

class ZStateSlots {
public:
    static constexpr int kCount = 8;

    explicit ZStateSlots(ZAudioEffectPluginToAudioPluginAdapter& core);

    // All eight slots take the core's current state; slot A is live and none was before.
    void initialise();

    int live() const { return live_; }
    int requested() const { return requested_; }
    // The slot that was live before the last switch, -1 for none.
    int previous() const { return previous_; }
    const ZMLElement& state(int slot) const { return slots_.at(static_cast<size_t>(slot)); }
    // The state every slot held after initialise: the plug-in's defaults.
    const ZMLElement& initialState() const { return initial_; }
    ZValue& selector() { return selector_; }
    static char Letter(int slot) { return static_cast<char>('A' + slot); }

    // Asks for a slot, limited to A-H.
    void request(int slot);
    // Reads a slot's stored state into the core, replacing the core's state.
    void load(int slot);
    // Leaves the live slot for the requested one when they differ: the live state is
    // stored into the live slot, the requested slot's state is read, and the core hears
    // that its state changed. False when there was nothing to switch.
    bool switchToRequested();

    // "PresetIndex" (always written; kept when absent) and a "Preset0".."Preset7" copy
    // of every slot but the live one, in this order. A child that is present on reading
    // replaces its slot; a missing one leaves the slot as it was.
    void serialize(const ZSerializationContext& context);

private:
    static std::string ChildName(int slot);

    ZAudioEffectPluginToAudioPluginAdapter& core_;
    std::array<ZMLElement, kCount> slots_;
    ZMLElement initial_;
    int32_t live_ = 0;
    int32_t requested_ = 0;
    int32_t previous_ = -1;
    ZValueInt selector_{&requested_, 0, kCount - 1, 0, 1};
};

} // namespace halvern
