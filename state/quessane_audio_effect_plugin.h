#pragma once

// The maker-wide plug-in core: the modulator host that every effect of the family runs
// in, with eight A-H state slots, ABCD morphing over slots A-D and the "AGC".
//
// Host-visible parameters appended after the modulator host's: "AH" (the requested slot,
// eight steps shown as A to H), the morph pad's u and v, then the "AGC" switch.
//
// Threads. A slot switch stores and reads markup, which allocates, so it never runs on
// the audio thread. A host's change of "AH" or of the pad is recorded like any other
// parameter change, and the instance's update thread then carries it out under the
// processing lock, as a state load does (the host adapters have no idle call that would
// do it). SelectSlot and MoveMorph are the editor's forms and act at once.
//
// Morph table: A-D's values as last stored or read, refreshed on leaving or entering a slot and after a host state load.

#include "core/update_thread.h"
#include "core/z_value_number.h"
#include "modulation/audio_effect_plugin_to_audio_plugin_adapter.h"
#include "state/abcd_morph.h"
#include "state/automatic_gain_control.h"
#include "state/preset_owners.h"
#include "state/state_slots.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace halvern {

class ZQuessaneAudioEffectPlugin : public ZAudioEffectPluginToAudioPluginAdapter {
public:
    // Empty until Attach gives it its effect.
    ZQuessaneAudioEffectPlugin();
    // Complete at once around a given effect.
    explicit ZQuessaneAudioEffectPlugin(std::unique_ptr<ZAudioEffectPlugin> effect);
    ~ZQuessaneAudioEffectPlugin() override;

    // The modulator host's Attach; then the slots take the effect's defaults.
    void Attach(std::string productName, std::string vendorName, ZPluginInterfaceFunction interfaceFunction,
                ZEffectDescription description);

    const ZStateSlots& slots() const { return slots_; }
    // Switches to a slot (limited to A-H) at once; nothing happens when it is live.
    void SelectSlot(int slot);
    // The element that holds a copied slot.
    static constexpr std::string_view kSlotElement = "Slot";
    // The live slot's state as a slot keeps it, to be pasted into a slot later.
    std::unique_ptr<ZMLElement> CopyLiveSlot();
    // Replaces the live slot's state by a copied one and tells the host every value
    // again. A state that does not read throws and leaves the plug-in as it was.
    void PasteIntoLiveSlot(ZMLElement& state);
    // Per slot, whether its state differs from the defaults every slot starts with.
    std::array<bool, ZStateSlots::kCount> SlotsHoldingChanges();
    // Counts changes of the slots' set-up (switches, pastes, loaded states), so that a
    // view knows when to look again.
    uint64_t slotChanges() const { return slotChanges_.load(std::memory_order_acquire); }

    // Moves the pad to (u, v), each limited to 0..1; returns how many parameters it set.
    int MoveMorph(double u, double v);
    // The question before morph changes are kept in the live slot: the message for its
    // letter when the live slot is one of A-D, empty otherwise.
    std::string MorphWarning() const;

    // "AGC": off (0) or on (1).
    void SetAGC(bool on);
    bool agc() const { return agc_ != 0; }
    double agcGainDb() const { return gainControl_.gainDb(); }

    // The plug-in's preset manager on the factory collection and the user's presets in
    // userDataFolder (none when empty). Its factory presets are the host's programs.
    void SetPresets(ZPresetCollection factory, const std::string& userDataFolder);
    // The user's own folder (presets, the editor's style file); empty when there is none.
    const std::string& userDataFolder() const { return userDataFolder_; }
    ZPluginPresetManager* presets() { return presets_.get(); }
    int32_t GetProgramCount() override;
    std::string GetProgramName(int32_t index) override;
    int32_t GetCurrentProgram() override;
    bool LoadProgram(int32_t index) override;
    void RequestProgram(int32_t index) override;

    int slotParameterIndex() const { return slotParameter_; }
    int agcParameterIndex() const { return agcParameter_; }
    // Axis 0 is u, axis 1 is v.
    int morphParameterIndex(int axis) const { return firstMorphParameter_ + axis; }

    // "AGC", "PresetIndex" and the slots, then the modulator host's state.
    void Serialize(const ZSerializationContext& context) override;
    // Every value goes to the host again, sent by the update thread at once (not only
    // once the host runs the next block).
    void StateChanged() override;
    // A host's change of the slot or the pad is carried out by the update thread.
    void HostChangedParameter(int32_t index) override;
    void InitProcessing() override;
    void ProcessSubBlock(float* const* inputs, float* const* outputs, int32_t sampleCount) override;
    // Wakes the update thread when the preset switch controller asked for a step or when
    // changes made inside the plug-in (modulators, MIDI controllers) wait for the host.
    void PrepareForProcessingOnce(float* const* inputs, float* const* outputs, int32_t sampleCount) override;
    // Carries out the slot switch or pad move a host asked for, the program it asked for
    // and the preset step of the preset switch controller, then hands the pending
    // automation to the host.
    void ProcessUpdate() override;

private:
    std::string userDataFolder_;

    void setUp();
    std::vector<int> morphableParameters() const;
    void registerParameters();
    // The processing lock is held by the caller of these.
    bool switchSlots();
    void captureCorner(int slot);
    void captureStoredCorners(ZMLElement& loadedState);
    void serializePad(const ZSerializationContext& context);
    void setAGCUnlocked(bool on);

    ZStateSlots slots_{*this};
    ZABCDMorph morph_;
    ZAutomaticGainControl gainControl_;
    int32_t agc_ = 0;
    bool agcRunning_ = false; // the audio thread's view: the control starts afresh when switched on
    ZValueInt agcValue_{&agc_, 0, 1, 0, 1};
    int agcParameter_ = -1;
    int slotParameter_ = -1;
    int firstMorphParameter_ = -1;
    // A host's slot or pad request: 0 for none, else the number of state loads before it
    // plus one; a request older than the last load is dropped.
    std::atomic<uint64_t> slotRequest_{0};
    std::atomic<uint64_t> padRequest_{0};
    std::atomic<uint64_t> loads_{0};
    std::atomic<uint64_t> slotChanges_{0};
    std::unique_ptr<ZPluginPresetManager> presets_;
    std::vector<std::string> programNames_; // the factory presets' names, fixed once set
    std::atomic<int32_t> requestedProgram_{-1};
    // Last, so that it stops before anything it uses goes.
    ZUpdateThread updates_{[this] { ProcessUpdate(); }};
};

} // namespace halvern
