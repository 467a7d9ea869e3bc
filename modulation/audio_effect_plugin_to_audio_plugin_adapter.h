#pragma once

// The modulator host: the plug-in core that wraps an effect and gives it the framework's
// modulators — four LFOs, four MultiParameters, MIDI and note controllers, the preset
// switch controller and the input meters. Per piece it runs the modulators in a fixed
// order before the effect, so the effect processes with the values they have just set.
//
// Host-visible parameters, in this order: the effect's own (and its automation
// adapters'), the four MultiParameter values, "Bypass", then per LFO 1..4 its enable
// switch, frequency and "LFO modulation".

#include "core/audio_effect_plugin.h"
#include "core/audio_plugin.h"
#include "modulation/lfo.h"
#include "modulation/midi_controllers.h"
#include "modulation/modulator_state.h"
#include "modulation/multi_parameter.h"

#include <array>
#include <atomic>
#include <memory>
#include <random>

namespace halvern {

// A library's interface function: with operation 7 it returns the effect object it was
// given, or a new one when given none; other operations reach the object's messages.
using ZPluginInterfaceFunction = intptr_t (*)(ZPlugin* object, int32_t operation, const ZPluginMessage* message);

// Two values that describe the effect to the framework; kept as they are given.
struct ZEffectDescription {
    int32_t first = 0;
    int32_t second = 0;
};

class ZAudioEffectPluginToAudioPluginAdapter : public ZEventTarget, public ZAudioPlugin {
public:
    static constexpr int kLFOCount = 4;
    static constexpr int kMultiParameterCount = 4;
    static constexpr int kParametersPerLFO = 3;

    // A core without its effect: Attach completes it.
    ZAudioEffectPluginToAudioPluginAdapter();
    // A core around a given effect, complete at once.
    explicit ZAudioEffectPluginToAudioPluginAdapter(std::unique_ptr<ZAudioEffectPlugin> effect);
    ~ZAudioEffectPluginToAudioPluginAdapter() override;

    // Creates the effect through the library's interface function and builds the
    // modulators around it. Throws "Error creating plugin." when no effect comes back.
    void Attach(std::string productName, std::string vendorName, ZPluginInterfaceFunction interfaceFunction,
                ZEffectDescription description);
    const ZEffectDescription& effectDescription() const { return description_; }

    ZAudioEffectPlugin& effect() { return *effect_; }
    ZLFO& lfo(int index) { return *lfos_.at(static_cast<size_t>(index)); }
    ZMultiParameter& multiParameter(int index) { return *multiParameters_.at(static_cast<size_t>(index)); }
    ZMIDIControllers& midiControllers() { return midiControllers_; }

    int multiParameterIndex(int index) const { return firstMultiParameter_ + index; }
    int bypassIndex() const { return bypassIndex_; }
    // The first of the LFO's host parameters (enable, then frequency, then modulation).
    int lfoParameterIndex(int index) const { return firstLFOParameter_ + index * kParametersPerLFO; }

    // The state version this release writes: major, minor and revision in bits 16-23,
    // 8-15 and 0-7. States written before the version was stored read as 5.3.0.
    static constexpr int32_t kStateVersion = 0x070A00;
    static constexpr int32_t kUnversionedState = 0x050300;
    static constexpr int32_t kDefaultMaxLFOBlockSize = 256;

    // Where the preset manager stands: the index of the preset loaded last (-1 for none)
    // and the active preset with its edit flag.
    struct PresetPosition {
        int32_t currentPresetIndex = -1;
        int32_t edit = 0;
        int32_t currentActivePreset = 0;
    };

    // The whole state: the core's settings, then the part that one A-H slot holds.
    void Serialize(const ZSerializationContext& context) override;
    // The part of the state that one slot holds: modulators, controllers, the active
    // preset, the parameters and the effect's own state. Reading runs under the
    // processing lock.
    virtual void serializeState(const ZSerializationContext& context);
    // The version of the state read last (kStateVersion until a state is read).
    int32_t loadedStateVersion() const { return loadedStateVersion_; }
    PresetPosition& presetPosition() { return presetPosition_; }
    // What the stored modulators are read against: the default target and the number of
    // parameters their targets may point at.
    ZModulatorStateScope modulatorStateScope() const { return {defaultTarget_, parameters().count()}; }

    // "Enable modulators": when off, no LFO runs; MultiParameters still act.
    void SetModulatorsEnabled(bool enabled);
    bool modulatorsEnabled() const { return modulatorsEnabled_; }

    // "Randomize": new random settings for every modulator; "Randomize (only enabled)":
    // only for the enabled ones. Editor thread.
    void GenerateRandomSettings();
    void GenerateRandomSettingsSmart();

    // The periodic update outside the audio callback: hands the changes the modulators
    // made to the host.
    virtual void ProcessUpdate();

    // The preset step the preset switch controller asked for (-1, +1 or 0); taken once.
    // The audio thread only records the step; the plug-in's preset manager takes it on
    // its own thread (FollowPresetSwitch) and loads the preset there.
    int TakePresetStep() { return presetStep_.exchange(0); }
    bool HasPresetStep() const { return presetStep_.load() != 0; }
    double inputMeterLevel() const { return inputMeter_; }
    double sideChainMeterLevel() const { return sideChainMeter_; }

    std::string GetParameterName(int32_t index) override;
    int32_t GetTailSamples() override;
    // MIDI reaches the controllers, the note controllers and the envelopes.
    bool ReceivesMIDI() override { return true; }
    int32_t GetMIDIControllerParameter(int channel, int controller) override
    {
        return midiControllers_.assignedParameter(channel, controller);
    }
    void InitProcessing() override;
    void ProcessSubBlock(float* const* inputs, float* const* outputs, int32_t sampleCount) override;
    void PrepareForProcessingOnce(float* const* inputs, float* const* outputs, int32_t sampleCount) override;
    // The audio callback for one piece: modulators, then the effect.
    void Process(float* const* inputs, float* const* outputs, int32_t sampleCount);

    void ProcessNote(int channel, int note, int velocity, bool on, int32_t sampleOffset) override;
    void ProcessMIDIController(int channel, int controller, int value, int32_t sampleOffset) override;
    void ProcessAftertouch(int channel, int value, int32_t sampleOffset) override;
    void ProcessPitchBend(int channel, int value, int32_t sampleOffset) override;

private:
    void prepareEffectAndModulators();
    void attachEffect(std::unique_ptr<ZAudioEffectPlugin> effect);
    void registerParameters();
    void serializeSettings(const ZSerializationContext& context);
    void serializeSurround(const ZSerializationContext& context);
    void serializeBypass(const ZSerializationContext& context);
    void serializeModulators(const ZSerializationContext& context);
    void serializeActivePreset(const ZSerializationContext& context);
    void serializeParameters(const ZSerializationContext& context);
    // After a load: running switches stop, the LFOs start again from their phase and
    // the effect takes the loaded values at the next block.
    void ActualiseAfterLoading();
    void runLFOs(float* const* inputs, int n);
    void runMultiParameters(int n);
    void feedMeters(float* const* inputs, int n);
    void randomize(bool onlyEnabled);
    ZLFOInput detectorInput(const ZLFO& lfo, float* const* inputs, int n) const;

    std::unique_ptr<ZAudioEffectPlugin> effect_;
    ZEffectDescription description_;
    ZModulatorTarget defaultTarget_;
    std::array<std::unique_ptr<ZLFO>, kLFOCount> lfos_;
    std::array<std::unique_ptr<ZMultiParameter>, kMultiParameterCount> multiParameters_;
    ZMIDIControllers midiControllers_;
    bool modulatorsEnabled_ = true;
    int firstMultiParameter_ = 0;
    int bypassIndex_ = 0;
    int firstLFOParameter_ = 0;
    double inputMeter_ = 0.0;
    double sideChainMeter_ = 0.0;
    std::atomic<int> presetStep_{0};
    int32_t loadedStateVersion_ = kStateVersion;
    // The storage text of each effect parameter's default. Storage texts round (six
    // decimals), so a stored default reads back as the exact default, not a neighbour.
    std::vector<std::string> defaultStorageTexts_;
    PresetPosition presetPosition_;
    std::mt19937 random_{std::random_device{}()};
};

} // namespace halvern
