#pragma once

// Presents one plug-in core to a VST 2.4 host. Every call the host makes is turned into
// calls on the core inside an exception frame named after the method, so no failure
// reaches the host; the adapter holds no plug-in logic of its own. It is also the
// core's way back to the host: latency reports, automation and outgoing MIDI.
//
// The editor: the core builds it the first time the host asks about it (effEditGetRect,
// effEditOpen or the content scale) and the adapter keeps it for the instance's life,
// open or closed; a closed editor holds no window and no views. The adapter is the
// editor's host: gestures become audioMasterBeginEdit, audioMasterAutomate and
// audioMasterEndEdit, size requests audioMasterSizeWindow.

#include "core/audio_plugin.h"
#include "core/audio_plugin_adapter.h"
#include "core/plugin_editor.h"
#include "core/z_lock.h"
#include "host/vst2/vst2_audio_effect.h"
#include "state/z_memory_stream.h"

#include <array>
#include <memory>
#include <vector>

namespace halvern {

class ZAudioPluginVSTAdapter : public ZVST2AudioEffect, public ZAudioPluginAdapter, public ZEditorHost {
public:
    static constexpr VstInt32 kUniqueID = 0x5A416572; // 'ZAer'
    // effVendorSpecific's content scale: index 'PreS', value 'AeCs', the scale in opt.
    static constexpr VstInt32 kVendorScaleIndex = 0x50726553;  // 'PreS'
    static constexpr VstIntPtr kVendorScaleValue = 0x41654373; // 'AeCs'
    // Outgoing MIDI events one block can carry; more are dropped until the next block.
    static constexpr int kMaxOutgoingEvents = 512;

    // Takes ownership of the core.
    ZAudioPluginVSTAdapter(audioMasterCallback hostCallback, std::unique_ptr<ZAudioPlugin> core);
    ~ZAudioPluginVSTAdapter() override;

    ZAudioPlugin& core() { return *core_; }

    // ---- the host's calls ----
    void setParameter(VstInt32 index, float value) override;
    float getParameter(VstInt32 index) override;
    void getParameterName(VstInt32 index, char* text) override;
    void getParameterDisplay(VstInt32 index, char* text) override;
    void getParameterLabel(VstInt32 index, char* label) override;
    bool string2parameter(VstInt32 index, char* text) override;
    bool canParameterBeAutomated(VstInt32 index) override;
    bool getParameterProperties(VstInt32 index, VstParameterProperties* properties) override;
    void setSampleRate(float rate) override;
    void setBlockSize(VstInt32 size) override;
    void resume() override;
    VstInt32 processEvents(VstEvents* events) override;
    void process(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    void processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames) override;
    bool setSpeakerArrangement(VstSpeakerArrangement* input, VstSpeakerArrangement* output) override;
    bool getInputProperties(VstInt32 index, VstPinProperties* properties) override;
    bool getOutputProperties(VstInt32 index, VstPinProperties* properties) override;
    bool getEffectName(char* name) override;
    bool getVendorString(char* text) override;
    bool getProductString(char* text) override;
    VstInt32 getVendorVersion() override;
    VstPlugCategory getPlugCategory() override;
    VstInt32 getChunk(void** data, bool isPreset) override;
    VstInt32 setChunk(void* data, VstInt32 size, bool isPreset) override;
    VstInt32 canDo(const char* text) override;
    VstInt32 getTailSize() override;
    VstIntPtr vendorSpecific(VstInt32 index, VstIntPtr value, void* ptr, float opt) override;
    bool editorGetRect(ERect** rect) override;
    bool editorOpen(void* parentWindow) override;
    void editorClose() override;
    void editorIdle() override;

    // ---- the core's calls ----
    void ReportLatency(int32_t samples) override;
    void SendAutomation(int32_t index, double normalized) override;
    void QueueMIDIEvent(const ZMIDIEvent& event) override;

    // ---- the editor's calls ----
    void BeginEdit(int32_t index) override;
    void PerformEdit(int32_t index, double normalized) override;
    void EndEdit(int32_t index) override;
    bool RequestResize(ZEditorSize size) override;

    // While set, parameter changes from the host are dropped.
    void SetIgnoreHostParameters(bool ignore) { ignoreHostParameters_ = ignore; }

private:
    void adaptToOldHost();
    void PerformProcessing(float** inputs, float** outputs, VstInt32 sampleFrames, bool replacing);
    // Channel pointers widened to two per bus.
    using BusArray = std::array<float*, 2 * ZAudioPlugin::kMaxChannels>;
    static void mapBuses(float** host, int buses, int width, bool repeatLast, BusArray& into);
    void PrepareProcessing();
    void takeHostTime();
    void FinishProcessing();
    bool pinProperties(VstInt32 index, VstPinProperties* properties, bool input);
    // The editor, built on first use; null when the core has none.
    ZPluginEditor* editor();

    std::unique_ptr<ZAudioPlugin> core_;
    std::unique_ptr<ZPluginEditor> editor_;
    ERect editorRect_{}; // the rectangle handed out by the last effEditGetRect
    ZMemoryStream chunk_; // the block handed out by the last getChunk
    ZLock outgoingLock_;
    std::vector<VstMidiEvent> outgoing_;    // capacity kMaxOutgoingEvents, never grown
    std::vector<VstMidiEvent> sending_;     // the events of the list being sent
    std::vector<unsigned char> eventList_;  // a VstEvents block with room for every event
    int usedInputWidth_ = -1;  // channels per bus the host's arrays hold; -1: the core's
    int usedOutputWidth_ = -1;
    bool ignoreHostParameters_ = false;
};

} // namespace halvern
