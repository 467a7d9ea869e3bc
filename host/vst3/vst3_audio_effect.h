#pragma once

// The project's own VST 3 audio processor base: a component (buses, activation, state)
// that is also an IAudioProcessor, the role the full SDK's AudioEffect plays. It keeps
// the buses and the processing set-up; a derived class supplies the processing itself.
// Bus arrangements are accepted when each bus keeps its place and takes mono or stereo.

#include <public.sdk/source/vst/vstcomponent.h>
#include <pluginterfaces/vst/ivstaudioprocessor.h>

namespace halvern {

class ZVST3AudioEffect : public Steinberg::Vst::Component,
                         public Steinberg::Vst::IAudioProcessor,
                         public Steinberg::Vst::IProcessContextRequirements {
public:
    ZVST3AudioEffect();

    Steinberg::Vst::AudioBus* addAudioInput(const Steinberg::Vst::TChar* name, Steinberg::Vst::SpeakerArrangement arrangement);
    Steinberg::Vst::AudioBus* addAudioOutput(const Steinberg::Vst::TChar* name, Steinberg::Vst::SpeakerArrangement arrangement);
    Steinberg::Vst::EventBus* addEventInput(const Steinberg::Vst::TChar* name, Steinberg::int32 channels);

    // The processing set-up the host gave last (rate, longest block, sample size).
    const Steinberg::Vst::ProcessSetup& processSetup() const { return processSetup_; }
    // The channel count of an audio bus, 0 when there is none.
    int channelCount(Steinberg::Vst::BusDirection direction, Steinberg::int32 index);

    // ---- IAudioProcessor ----
    Steinberg::tresult PLUGIN_API setBusArrangements(Steinberg::Vst::SpeakerArrangement* inputs, Steinberg::int32 inputCount,
                                                     Steinberg::Vst::SpeakerArrangement* outputs,
                                                     Steinberg::int32 outputCount) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API getBusArrangement(Steinberg::Vst::BusDirection direction, Steinberg::int32 index,
                                                    Steinberg::Vst::SpeakerArrangement& arrangement) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API canProcessSampleSize(Steinberg::int32 symbolicSampleSize) SMTG_OVERRIDE;
    Steinberg::uint32 PLUGIN_API getLatencySamples() SMTG_OVERRIDE { return 0; }
    Steinberg::tresult PLUGIN_API setupProcessing(Steinberg::Vst::ProcessSetup& setup) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API setProcessing(Steinberg::TBool) SMTG_OVERRIDE { return Steinberg::kResultOk; }
    Steinberg::tresult PLUGIN_API process(Steinberg::Vst::ProcessData&) SMTG_OVERRIDE { return Steinberg::kNotImplemented; }
    Steinberg::uint32 PLUGIN_API getTailSamples() SMTG_OVERRIDE { return Steinberg::Vst::kNoTail; }

    // ---- IProcessContextRequirements: the tempo, position and time signature ----
    Steinberg::uint32 PLUGIN_API getProcessContextRequirements() SMTG_OVERRIDE;

    OBJ_METHODS(ZVST3AudioEffect, Steinberg::Vst::Component)
    DEFINE_INTERFACES
        DEF_INTERFACE(Steinberg::Vst::IAudioProcessor)
        DEF_INTERFACE(Steinberg::Vst::IProcessContextRequirements)
    END_DEFINE_INTERFACES(Steinberg::Vst::Component)
    REFCOUNT_METHODS(Steinberg::Vst::Component)

    // ---- IComponent ----
    Steinberg::tresult PLUGIN_API setActive(Steinberg::TBool state) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API setState(Steinberg::IBStream* state) SMTG_OVERRIDE { return loadComponentState(state); }
    Steinberg::tresult PLUGIN_API getState(Steinberg::IBStream* state) SMTG_OVERRIDE { return saveComponentState(state); }

protected:
    bool active() const { return active_; }

    // The component's state; named apart from the edit controller's setState/getState,
    // which a class that is both must keep separate.
    virtual Steinberg::tresult saveComponentState(Steinberg::IBStream*) { return Steinberg::kNotImplemented; }
    virtual Steinberg::tresult loadComponentState(Steinberg::IBStream*) { return Steinberg::kNotImplemented; }

    // The set-up and the arrangements cannot change while active.
    bool isActive() const { return active_; }

private:
    static bool acceptsArrangement(Steinberg::Vst::SpeakerArrangement arrangement);

    Steinberg::Vst::ProcessSetup processSetup_{};
    bool active_ = false; // the set-up and the arrangements cannot change while active
};

} // namespace halvern
