#pragma once

// What each kind of preset manager manages: the whole plug-in, one LFO, one
// MultiParameter, or the shape of one LFO's signal generator. A preset's content is
// exactly what the owner's state function writes: the plug-in's is the host state (the
// same store and load as host blocks), a modulator's the items of its element in the
// plug-in's state.

#include "modulation/audio_effect_plugin_to_audio_plugin_adapter.h"
#include "state/plugin_state_block.h"
#include "state/preset_manager.h"
#include "state/serialization_context.h"

#include <cstdint>
#include <string_view>

namespace halvern {

class ZPluginPresetOwner {
public:
    static constexpr std::string_view kKind = "Plugin";

    explicit ZPluginPresetOwner(ZAudioEffectPluginToAudioPluginAdapter& core) : core_(&core) {}

    void Store(ZMLElement& element) { StorePluginState(*core_, element); }
    // Loads like a host state, except that the preset switch controller stays as it is
    // (the content is given the current one): it is what steps through the presets, and
    // a preset stored without it would otherwise switch it off at the first step.
    void Load(ZMLElement& content);
    // Kept in the plug-in's state as "CurrentPresetIndex", so that next and previous go
    // on from the preset loaded last after the host has reloaded the plug-in.
    int32_t& currentPresetIndex() { return core_->presetPosition().currentPresetIndex; }
    ZAudioEffectPluginToAudioPluginAdapter& core() { return *core_; }

private:
    ZAudioEffectPluginToAudioPluginAdapter* core_;
};

// One modulator of the plug-in, by its index. Kind gives the folder name (kKind) and
// the state function: Kind::Serialize(context, core, index).
template <class Kind>
class ZModulatorPresetOwnerT {
public:
    static constexpr std::string_view kKind = Kind::kKind;

    ZModulatorPresetOwnerT(ZAudioEffectPluginToAudioPluginAdapter& core, int index) : core_(&core), index_(index) {}

    // Both under the processing lock, so that no block runs with half a preset.
    void Store(ZMLElement& element)
    {
        ZLockHolder hold(core_->processingLock(), -1);
        serialize(ZSerializationContext(element, true));
    }
    void Load(ZMLElement& content)
    {
        ZLockHolder hold(core_->processingLock(), -1);
        ZReadOrRestore(content, [this](const ZSerializationContext& context) { serialize(context); });
    }
    int32_t& currentPresetIndex() { return currentPresetIndex_; }

private:
    void serialize(const ZSerializationContext& context) { Kind::Serialize(context, *core_, index_); }

    ZAudioEffectPluginToAudioPluginAdapter* core_;
    int index_;
    int32_t currentPresetIndex_ = -1;
};

struct ZLFOPresetKind {
    static constexpr std::string_view kKind = "LFO";
    // Reading starts the LFO again from its phase, as after a host state.
    static void Serialize(const ZSerializationContext& context, ZAudioEffectPluginToAudioPluginAdapter& core, int index);
};

struct ZMultiParameterPresetKind {
    static constexpr std::string_view kKind = "MultiParameter";
    static void Serialize(const ZSerializationContext& context, ZAudioEffectPluginToAudioPluginAdapter& core, int index);
};

// The shape of LFO index.
struct ZSignalGeneratorPresetKind {
    static constexpr std::string_view kKind = "SignalGenerator";
    static void Serialize(const ZSerializationContext& context, ZAudioEffectPluginToAudioPluginAdapter& core, int index);
};

using ZPluginPresetManager = ZPresetManagerT<ZPluginPresetOwner>;
using ZLFOPresetManager = ZPresetManagerT<ZModulatorPresetOwnerT<ZLFOPresetKind>>;
using ZMultiParameterPresetManager = ZPresetManagerT<ZModulatorPresetOwnerT<ZMultiParameterPresetKind>>;
using ZSignalGeneratorPresetManager = ZPresetManagerT<ZModulatorPresetOwnerT<ZSignalGeneratorPresetKind>>;

// Loads the preset that the "PreviousNextPresetController" asked for since the last
// call: the next one for a step up, the previous one for a step down. The audio thread
// only records the step in the core (an atomic integer, see TakePresetStep), so it
// neither allocates nor touches a collection; the thread that owns the manager (the
// editor's or the host's idle update) calls this and does the loading. Returns true
// when a preset was loaded.
bool FollowPresetSwitch(ZPluginPresetManager& manager);

} // namespace halvern
