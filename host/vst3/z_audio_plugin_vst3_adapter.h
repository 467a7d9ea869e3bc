#pragma once

// Presents one plug-in core to a VST 3 host as a single object that is both the audio
// processor and the edit controller. Every call the host makes is turned into calls on
// the core inside an exception frame named after the method; the adapter keeps no
// plug-in logic of its own. It is also the core's way back to the host: latency changes
// and parameter changes made inside the plug-in.
//
// Parameters are the core's registry: ID = index, values are the normalised ones, texts
// come from the value model. The controller side keeps no copy: it reads the core.
// Threads: process runs on the host's audio thread; the core's processing lock keeps
// state loads and set-up changes out of a running block. The editor's view lives on the
// host's UI thread.

#include "core/audio_plugin.h"
#include "core/audio_plugin_adapter.h"
#include "host/vst3/vst3_audio_effect.h"

#include <public.sdk/source/vst/vsteditcontroller.h>
#include <pluginterfaces/vst/ivstmidicontrollers.h>

#include <atomic>
#include <memory>
#include <vector>

namespace halvern {

class ZAudioPluginVST3Adapter : public ZVST3AudioEffect,
                                public Steinberg::Vst::EditControllerEx1,
                                public Steinberg::Vst::IMidiMapping,
                                public ZAudioPluginAdapter {
public:
    // Parameter change points one block can carry; later ones are applied at its end.
    static constexpr int kMaxChangePoints = 4096;
    // Output samples at most this far from 0 (-160 dB) count as silence for the flags.
    static constexpr float kSilence = 1.0e-8f;
    // The program change parameter that selects a factory preset, beyond the core's IDs,
    // and its program list in the root unit.
    static constexpr Steinberg::Vst::ParamID kProgramParameter = 0x10000;
    static constexpr Steinberg::Vst::ProgramListID kFactoryProgramList = 1;

    // Takes ownership of the core.
    explicit ZAudioPluginVST3Adapter(std::unique_ptr<ZAudioPlugin> core);
    ~ZAudioPluginVST3Adapter() override;

    ZAudioPlugin& core() { return *core_; }

    // ---- FUnknown, once for every base ----
    Steinberg::tresult PLUGIN_API queryInterface(const Steinberg::TUID iid, void** object) SMTG_OVERRIDE;
    Steinberg::uint32 PLUGIN_API addRef() SMTG_OVERRIDE;
    Steinberg::uint32 PLUGIN_API release() SMTG_OVERRIDE;

    // ---- IPluginBase, for the processor and the controller alike ----
    Steinberg::tresult PLUGIN_API initialize(Steinberg::FUnknown* context) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API terminate() SMTG_OVERRIDE;

    // ---- IComponent / IAudioProcessor ----
    Steinberg::tresult PLUGIN_API setupProcessing(Steinberg::Vst::ProcessSetup& setup) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API setActive(Steinberg::TBool state) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API setProcessing(Steinberg::TBool state) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API process(Steinberg::Vst::ProcessData& data) SMTG_OVERRIDE;
    Steinberg::uint32 PLUGIN_API getLatencySamples() SMTG_OVERRIDE;
    Steinberg::uint32 PLUGIN_API getTailSamples() SMTG_OVERRIDE;

    // ---- IEditController ----
    Steinberg::tresult PLUGIN_API setComponentState(Steinberg::IBStream* state) SMTG_OVERRIDE;
    Steinberg::int32 PLUGIN_API getParameterCount() SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API getParameterInfo(Steinberg::int32 index, Steinberg::Vst::ParameterInfo& info) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API getParamStringByValue(Steinberg::Vst::ParamID id, Steinberg::Vst::ParamValue normalized,
                                                        Steinberg::Vst::String128 text) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API getParamValueByString(Steinberg::Vst::ParamID id, Steinberg::Vst::TChar* text,
                                                        Steinberg::Vst::ParamValue& normalized) SMTG_OVERRIDE;
    Steinberg::Vst::ParamValue PLUGIN_API normalizedParamToPlain(Steinberg::Vst::ParamID id,
                                                                 Steinberg::Vst::ParamValue normalized) SMTG_OVERRIDE;
    Steinberg::Vst::ParamValue PLUGIN_API plainParamToNormalized(Steinberg::Vst::ParamID id,
                                                                 Steinberg::Vst::ParamValue plain) SMTG_OVERRIDE;
    Steinberg::Vst::ParamValue PLUGIN_API getParamNormalized(Steinberg::Vst::ParamID id) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API setParamNormalized(Steinberg::Vst::ParamID id, Steinberg::Vst::ParamValue value) SMTG_OVERRIDE;
    // "editor": the core's editor as an X11 view (see ZVST3EditorView); null for other names.
    Steinberg::IPlugView* PLUGIN_API createView(Steinberg::FIDString name) SMTG_OVERRIDE;

    // ---- IMidiMapping ----
    Steinberg::tresult PLUGIN_API getMidiControllerAssignment(Steinberg::int32 busIndex, Steinberg::int16 channel,
                                                              Steinberg::Vst::CtrlNumber controller,
                                                              Steinberg::Vst::ParamID& id) SMTG_OVERRIDE;

    // ---- the core's calls ----
    void ReportLatency(int32_t samples) override;
    void SendAutomation(int32_t index, double normalized) override;
    void QueueMIDIEvent(const ZMIDIEvent& event) override;

protected:
    Steinberg::tresult saveComponentState(Steinberg::IBStream* state) override;
    Steinberg::tresult loadComponentState(Steinberg::IBStream* state) override;

private:
    struct ChangePoint {
        Steinberg::int32 offset;
        Steinberg::int32 order; // arrival order, so that equal offsets keep it
        Steinberg::Vst::ParamID id;
        double value;
    };

    bool isParameter(Steinberg::Vst::ParamID id);
    bool hasPrograms() { return core_->GetProgramCount() > 0; }
    int stepCountOf(int index);
    int stepCountOf(Steinberg::Vst::ParamID id);
    int32_t programAt(Steinberg::Vst::ParamValue normalized);
    void addUnits();
    void programParameterInfo(Steinberg::Vst::ParameterInfo& info);
    void takeProcessContext(const Steinberg::Vst::ProcessContext* context);
    void takeEvents(Steinberg::Vst::IEventList* events);
    int collectChanges(Steinberg::Vst::IParameterChanges* changes);
    void apply(const ChangePoint& point);
    void processAudio(Steinberg::Vst::ProcessData& data, int changeCount);
    void processSegment(float* const* inputs, float* const* outputs, int offset, int length);
    static void flagSilence(Steinberg::Vst::AudioBusBuffers& bus, int samples);
    static void clearOutputs(Steinberg::Vst::ProcessData& data);
    void reportChanges(Steinberg::Vst::IParameterChanges* changes);

    static constexpr double kNotPending = -1.0;

    std::unique_ptr<ZAudioPlugin> core_;
    // Values changed inside the plug-in outside processing, for the next block's report.
    std::vector<std::atomic<double>> unreported_;
    std::atomic<bool> anyUnreported_{false};
    std::vector<int> unitOf_;           // the unit of each parameter
    std::vector<ChangePoint> points_;   // capacity kMaxChangePoints, never grown
    std::vector<float> silence_, scratch_; // for a missing input and a mono output; sized in setActive
    int bypassIndex_ = -1;
    bool initialized_ = false;
    std::atomic_flag processing_ = ATOMIC_FLAG_INIT;
};

} // namespace halvern
