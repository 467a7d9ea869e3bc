#include "host/vst2/z_audio_plugin_vst_adapter.h"

#include "core/exception_frame.h"
#include "core/trace.h"
#include "host/host_time.h"
#include "host/library_module.h"
#include "state/plugin_state_block.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

namespace halvern {
namespace {

constexpr VstInt32 kVendorVersion = 710; // 7.10

bool Is(const char* text, const char* name)
{
    return std::strcmp(text, name) == 0;
}

// "Input L", "Input R", "Sidechain L", ..., "Output L"; buses after these are numbered.
std::string ChannelLabel(bool input, VstInt32 index, int perBus)
{
    const int bus = perBus > 0 ? index / perBus : 0;
    std::string label = input ? (bus == 0 ? "Input" : "Sidechain") : "Output";
    if (bus > 1 || (!input && bus > 0)) {
        label.push_back(' ');
        label.append(std::to_string(bus + 1));
    }
    if (perBus == 2)
        label.append(index % 2 == 0 ? " L" : " R");
    return label;
}

} // namespace

ZAudioPluginVSTAdapter::ZAudioPluginVSTAdapter(audioMasterCallback hostCallback, std::unique_ptr<ZAudioPlugin> core)
    : ZVST2AudioEffect(hostCallback, 0, core->GetParameterCount()), core_(std::move(core))
{
    outgoing_.reserve(kMaxOutgoingEvents);
    sending_.reserve(kMaxOutgoingEvents);
    eventList_.resize(offsetof(VstEvents, events) + sizeof(VstEvent*) * kMaxOutgoingEvents);
    VST2InstanceCreated();
    core_->SetHostAdapter(this);
    core_->SetSampleRate(sampleRate());
    core_->SetMaxBlockSize(blockSize());
    if (hostCallback != nullptr)
        adaptToOldHost();

    canProcessReplacing();
    programsAreChunks();
    isSynth(core_->ReceivesMIDI() && core_->inputChannelCount() == 0);
    setNumInputs(std::max(getNumInputs(), core_->inputChannelCount()));
    setNumOutputs(core_->outputChannelCount());
    setUniqueID(kUniqueID);
    setVersion(kVendorVersion);
    ReportLatency(core_->GetLatency());
    resume();
    hasEditor(core_->HasEditor());
}

// Hosts older than 2.3 see stereo buses only; hosts older than 1.0 get at least two
// inputs announced.
void ZAudioPluginVSTAdapter::adaptToOldHost()
{
    int inputs = core_->inputChannelCount();
    VstInt32 version = getMasterVersion();
    if (version == 0)
        version = 1;
    if (version < 2300 && inputs > 0) {
        inputs = 2 * (inputs / std::max(core_->channelsPerBus(), 1));
        core_->SetChannelConfiguration(inputs, 2, 2);
    }
    if (version < 100 && inputs < 2)
        setNumInputs(2);
}

ZAudioPluginVSTAdapter::~ZAudioPluginVSTAdapter()
{
    GuardedVoid("ZAudioPluginVSTAdapter::~ZAudioPluginVSTAdapter", [&] { editor_.reset(); }); // closes it; before the core goes
    core_.reset();
    VST2InstanceReleased();
}

void ZAudioPluginVSTAdapter::setParameter(VstInt32 index, float value)
{
    GuardedVoid("ZAudioPluginVSTAdapter::setParameter", [&] {
        if (!ignoreHostParameters_)
            core_->SetParameter(index, value);
    });
}

float ZAudioPluginVSTAdapter::getParameter(VstInt32 index)
{
    return Guarded("ZAudioPluginVSTAdapter::getParameter", 0.0f,
                   [&] { return static_cast<float>(core_->GetParameter(index)); });
}

void ZAudioPluginVSTAdapter::getParameterName(VstInt32 index, char* text)
{
    GuardedVoid("ZAudioPluginVSTAdapter::getParameterName",
                [&] { copyText(text, core_->GetParameterID(index).substr(0, 24), kParameterNameChars); });
}

void ZAudioPluginVSTAdapter::getParameterDisplay(VstInt32 index, char* text)
{
    GuardedVoid("ZAudioPluginVSTAdapter::getParameterDisplay",
                [&] { copyText(text, core_->GetParameterValueName(index), kParameterDisplayChars); });
}

void ZAudioPluginVSTAdapter::getParameterLabel(VstInt32 index, char* label)
{
    GuardedVoid("ZAudioPluginVSTAdapter::getParameterLabel",
                [&] { copyText(label, core_->GetParameterUnitsName(index), kParameterLabelChars); });
}

// A text typed in the host's own parameter view, in the parameter's display units. A
// text that is not a value of the parameter changes nothing and answers false.
bool ZAudioPluginVSTAdapter::string2parameter(VstInt32 index, char* text)
{
    return Guarded("ZAudioPluginVSTAdapter::string2parameter", false, [&] {
        if (index < 0 || index >= core_->GetParameterCount())
            return false;
        return text == nullptr || core_->SetParameterFromDisplayText(index, text);
    });
}

bool ZAudioPluginVSTAdapter::canParameterBeAutomated(VstInt32 index)
{
    return Guarded("ZAudioPluginVSTAdapter::canParameterBeAutomated", false, [&] {
        return index >= 0 && index < core_->GetParameterCount() && core_->parameters().info(index).automatable;
    });
}

// Switches (and the panels, which hold no value) are announced as switches, so hosts show
// them as buttons; enumerations and integers as integer steps.
bool ZAudioPluginVSTAdapter::getParameterProperties(VstInt32 index, VstParameterProperties* properties)
{
    return Guarded("ZAudioPluginVSTAdapter::getParameterProperties", false, [&] {
        if (properties == nullptr || index < 0 || index >= core_->GetParameterCount())
            return false;
        *properties = VstParameterProperties{};
        const ZParameterType type = core_->GetParameterType(index);
        // Hosts show the properties' label as the parameter's name.
        const std::string name = core_->GetParameterName(index);
        copyText(properties->label, name, kVstMaxLabelLen - 1);
        copyText(properties->shortLabel, name, kVstMaxShortLabelLen - 1);
        if (type == ZParameterType::Switch || type == ZParameterType::Panel) {
            properties->flags = kVstParameterIsSwitch;
        } else if (type == ZParameterType::Enumeration || type == ZParameterType::Integer) {
            const ZValue* value = core_->parameters().value(index);
            properties->flags = kVstParameterUsesIntegerMinMax | kVstParameterUsesIntStep;
            properties->maxInteger = value != nullptr ? std::max(value->stepCount() - 1, 0) : 0;
            properties->stepInteger = 1;
            properties->largeStepInteger = 1;
        }
        return true;
    });
}

void ZAudioPluginVSTAdapter::setSampleRate(float rate)
{
    GuardedVoid("ZAudioPluginVSTAdapter::setSampleRate", [&] {
        ZVST2AudioEffect::setSampleRate(rate);
        if (ZAudioPlugin::IsUsableSampleRate(rate)) {
            core_->SetSampleRate(rate);
            core_->InitProcessing();
        }
    });
}

void ZAudioPluginVSTAdapter::setBlockSize(VstInt32 size)
{
    GuardedVoid("ZAudioPluginVSTAdapter::setBlockSize", [&] {
        ZVST2AudioEffect::setBlockSize(size);
        if (size > 0)
            core_->SetMaxBlockSize(size);
    });
}

void ZAudioPluginVSTAdapter::resume()
{
    GuardedVoid("ZAudioPluginVSTAdapter::resume", [&] {
        if ((getFlags() & effFlagsIsSynth) != 0 || canDo("receiveVstMidiEvent") == 1)
            wantEvents(1);
        core_->InitProcessing();
    });
}

VstInt32 ZAudioPluginVSTAdapter::processEvents(VstEvents* events)
{
    return Guarded("ZAudioPluginVSTAdapter::processEvents", VstInt32{0}, [&] {
        if (events == nullptr || events->numEvents <= 0)
            return VstInt32{1};
        takeHostTime();
        for (VstInt32 i = 0; i < events->numEvents; ++i) {
            const VstEvent* event = events->events[i];
            if (event == nullptr || event->type != kVstMidiType)
                continue;
            const auto* midi = reinterpret_cast<const VstMidiEvent*>(event);
            core_->ProcessMIDIMessage(static_cast<uint8_t>(midi->midiData[0]), static_cast<uint8_t>(midi->midiData[1]),
                                      static_cast<uint8_t>(midi->midiData[2]), midi->deltaFrames);
        }
        return VstInt32{1};
    });
}

void ZAudioPluginVSTAdapter::process(float** inputs, float** outputs, VstInt32 sampleFrames)
{
    GuardedVoid("ZAudioPluginVSTAdapter::process", [&] { PerformProcessing(inputs, outputs, sampleFrames, false); });
}

void ZAudioPluginVSTAdapter::processReplacing(float** inputs, float** outputs, VstInt32 sampleFrames)
{
    GuardedVoid("ZAudioPluginVSTAdapter::processReplacing",
                [&] { PerformProcessing(inputs, outputs, sampleFrames, true); });
}

// Maps the host's channels onto the core's two-channel buses. The host's arrays hold as
// many channels per bus as the speaker arrangement it set; only when that is two for
// both directions are they passed on as they are. Otherwise a narrower input bus repeats
// its last channel, so that a mono source feeds both sides, while a narrower output bus
// takes only the channels it has: the core writes the others to its scratch, so a mono
// host gets exactly the left side of the stereo path. A bus whose first channel is
// missing is left out.
void ZAudioPluginVSTAdapter::PerformProcessing(float** inputs, float** outputs, VstInt32 n, bool replacing)
{
    if (n <= 0 || outputs == nullptr)
        return;
    PrepareProcessing();
    const int perBus = core_->channelsPerBus();
    const int inputWidth = usedInputWidth_ < 0 ? perBus : usedInputWidth_;
    const int outputWidth = usedOutputWidth_ < 0 ? perBus : usedOutputWidth_;
    if (perBus == 2 && inputWidth == 2 && outputWidth == 2) {
        core_->ProcessBlock(inputs, outputs, n, replacing);
    } else {
        // Per call, so that a second caller turned away by the core never redirects the first.
        BusArray busInputs{};
        BusArray busOutputs{};
        mapBuses(inputs, core_->GetInputBusCount(), inputWidth, true, busInputs);
        mapBuses(outputs, core_->GetOutputBusCount(), outputWidth, false, busOutputs);
        core_->ProcessBlock(busInputs.data(), busOutputs.data(), n, replacing);
    }
    FinishProcessing();
}

void ZAudioPluginVSTAdapter::mapBuses(float** host, int buses, int width, bool repeatLast, BusArray& into)
{
    if (host == nullptr || width <= 0)
        return;
    for (int bus = 0; bus < buses && 2 * bus + 1 < static_cast<int>(into.size()); ++bus) {
        float** channels = host + bus * width;
        if (channels[0] == nullptr)
            continue;
        for (int channel = 0; channel < 2; ++channel)
            into[static_cast<size_t>(2 * bus + channel)] =
                channel < width ? channels[channel] : repeatLast ? channels[width - 1] : nullptr;
    }
}

void ZAudioPluginVSTAdapter::PrepareProcessing()
{
    GuardedVoid("ZAudioPluginVSTAdapter::PrepareProcessing", [&] { takeHostTime(); });
}

// The song position, tempo and time signature for the coming block, as far as the host
// knows them.
void ZAudioPluginVSTAdapter::takeHostTime()
{
    const VstTimeInfo* time = getTimeInfo(kVstPpqPosValid | kVstTempoValid | kVstBarsValid | kVstTimeSigValid);
    ZHostTimeInfo& info = core_->hostTime();
    if (time == nullptr) {
        info.positionValid = false;
        return;
    }
    info.sampleRate = time->sampleRate;
    if ((time->flags & kVstTempoValid) != 0 && time->tempo > 0.0)
        info.tempo = time->tempo;
    info.positionValid = (time->flags & kVstPpqPosValid) != 0;
    if (info.positionValid)
        info.musicalPosition = time->ppqPos;
    if ((time->flags & kVstTimeSigValid) != 0) {
        info.timeSigNumerator = time->timeSigNumerator;
        info.timeSigDenominator = time->timeSigDenominator;
    }
    if ((time->flags & kVstBarsValid) != 0)
        info.barStart = RoundedBarStart(time->barStartPos, info.timeSigDenominator);
}

// Sends the MIDI events queued during the block.
void ZAudioPluginVSTAdapter::FinishProcessing()
{
    {
        ZLockHolder hold(outgoingLock_, -1);
        sending_.swap(outgoing_);
        outgoing_.clear();
    }
    if (sending_.empty())
        return;
    auto* list = reinterpret_cast<VstEvents*>(eventList_.data());
    list->numEvents = static_cast<VstInt32>(sending_.size());
    for (size_t i = 0; i < sending_.size(); ++i)
        list->events[i] = reinterpret_cast<VstEvent*>(&sending_[i]);
    sendVstEventsToHost(list);
    sending_.clear();
}

void ZAudioPluginVSTAdapter::QueueMIDIEvent(const ZMIDIEvent& event)
{
    VstMidiEvent record{};
    record.type = kVstMidiType;
    record.byteSize = sizeof(VstMidiEvent);
    record.deltaFrames = event.sampleOffset;
    for (int i = 0; i < 4; ++i)
        record.midiData[i] = static_cast<char>(event.bytes[i]);
    ZLockHolder hold(outgoingLock_, -1);
    if (outgoing_.size() < kMaxOutgoingEvents)
        outgoing_.push_back(record);
}

bool ZAudioPluginVSTAdapter::setSpeakerArrangement(VstSpeakerArrangement* input, VstSpeakerArrangement* output)
{
    return Guarded("ZAudioPluginVSTAdapter::setSpeakerArrangement", false, [&] {
        if ((input != nullptr && input->numChannels > core_->inputChannelCount()) ||
            (output != nullptr && output->numChannels > core_->outputChannelCount()))
            return false;
        // A direction the host gives no arrangement for keeps the one it had.
        const int perBus = core_->channelsPerBus();
        if (core_->GetInputBusCount() == 0)
            usedInputWidth_ = 0;
        else if (input != nullptr)
            usedInputWidth_ = std::min(input->numChannels, perBus);
        if (output != nullptr)
            usedOutputWidth_ = std::clamp(output->numChannels, 1, perBus);
        return true;
    });
}

bool ZAudioPluginVSTAdapter::getInputProperties(VstInt32 index, VstPinProperties* properties)
{
    return Guarded("ZAudioPluginVSTAdapter::getInputProperties", false,
                   [&] { return pinProperties(index, properties, true); });
}

bool ZAudioPluginVSTAdapter::getOutputProperties(VstInt32 index, VstPinProperties* properties)
{
    return Guarded("ZAudioPluginVSTAdapter::getOutputProperties", false,
                   [&] { return pinProperties(index, properties, false); });
}

bool ZAudioPluginVSTAdapter::pinProperties(VstInt32 index, VstPinProperties* properties, bool input)
{
    const int count = input ? getNumInputs() : getNumOutputs();
    if (properties == nullptr || index < 0 || index >= count)
        return false;
    const int perBus = core_->channelsPerBus();
    copyText(properties->label, ChannelLabel(input, index, perBus), kVstMaxLabelLen - 1);
    copyText(properties->shortLabel, ChannelLabel(input, index, perBus).substr(0, 7), kVstMaxShortLabelLen - 1);
    if (perBus == 1) {
        properties->flags = kVstPinIsActive;
        properties->arrangementType = kSpeakerArrMono;
    } else if (perBus == 2) {
        properties->flags = kVstPinIsActive | kVstPinIsStereo;
        properties->arrangementType = kSpeakerArrStereo;
    } else {
        properties->flags = kVstPinIsActive | kVstPinUseSpeaker;
        properties->arrangementType = kSpeakerArr80Music;
    }
    return true;
}

bool ZAudioPluginVSTAdapter::getEffectName(char* name)
{
    return Guarded("ZAudioPluginVSTAdapter::getEffectName", false, [&] {
        copyText(name, core_->productName(), kEffectNameChars);
        return true;
    });
}

bool ZAudioPluginVSTAdapter::getVendorString(char* text)
{
    return Guarded("ZAudioPluginVSTAdapter::getVendorString", false, [&] {
        copyText(text, core_->vendorName(), kVendorStringChars);
        return true;
    });
}

bool ZAudioPluginVSTAdapter::getProductString(char* text)
{
    return Guarded("ZAudioPluginVSTAdapter::getProductString", false, [&] {
        copyText(text, core_->productName(), kProductStringChars);
        return true;
    });
}

VstInt32 ZAudioPluginVSTAdapter::getVendorVersion()
{
    return kVendorVersion;
}

VstPlugCategory ZAudioPluginVSTAdapter::getPlugCategory()
{
    return kPlugCategRoomFx;
}

VstInt32 ZAudioPluginVSTAdapter::getChunk(void** data, bool)
{
    return Guarded("ZAudioPluginVSTAdapter::getChunk", VstInt32{0}, [&] {
        if (data == nullptr)
            return VstInt32{0};
        chunk_ = SavePluginState(*core_);
        *data = const_cast<uint8_t*>(chunk_.data());
        return static_cast<VstInt32>(chunk_.size());
    });
}

VstInt32 ZAudioPluginVSTAdapter::setChunk(void* data, VstInt32 size, bool)
{
    return Guarded("ZAudioPluginVSTAdapter::setChunk", VstInt32{0}, [&] {
        LoadPluginState(*core_, data, size);
        return VstInt32{1};
    });
}

VstInt32 ZAudioPluginVSTAdapter::canDo(const char* text)
{
    return Guarded("ZAudioPluginVSTAdapter::canDo", VstInt32{0}, [&] {
        if (text == nullptr)
            return VstInt32{0};
        for (const char* name : {"receiveVstEvents", "receiveVstEvent", "receiveVstMidiEvents", "receiveVstMidiEvent"})
            if (Is(text, name))
                return core_->ReceivesMIDI() ? VstInt32{1} : VstInt32{-1};
        for (const char* name : {"sendVstEvents", "sendVstEvent", "sendVstMidiEvents", "sendVstMidiEvent"})
            if (Is(text, name))
                return core_->SendsMIDI() ? VstInt32{1} : VstInt32{-1};
        for (const char* name : {"plugAsChannelInsert", "canMono", "plugAsSend", "receiveVstTimeInfo"})
            if (Is(text, name))
                return VstInt32{1};
        if (Is(text, "bypass"))
            return VstInt32{-1};
        return VstInt32{0};
    });
}

// 0 would leave the tail to the host's guess; the reverb reports its own.
VstInt32 ZAudioPluginVSTAdapter::getTailSize()
{
    return Guarded("ZAudioPluginVSTAdapter::getTailSize", VstInt32{0},
                   [&] { return std::max<VstInt32>(core_->GetTailSamples(), 1); });
}

// ---- the editor ----

ZPluginEditor* ZAudioPluginVSTAdapter::editor()
{
    if (!editor_ && core_->HasEditor())
        editor_ = core_->CreateEditor(*this);
    return editor_.get();
}

bool ZAudioPluginVSTAdapter::editorGetRect(ERect** rect)
{
    return Guarded("ZAudioPluginVSTAdapter::editorGetRect", false, [&] {
        if (editor() == nullptr)
            return false;
        const ZEditorSize size = editor_->Size();
        editorRect_ = ERect{0, 0, static_cast<short>(size.height), static_cast<short>(size.width)};
        *rect = &editorRect_;
        return true;
    });
}

bool ZAudioPluginVSTAdapter::editorOpen(void* parentWindow)
{
    return Guarded("ZAudioPluginVSTAdapter::editorOpen", false, [&] {
        return editor() != nullptr && editor_->Open(reinterpret_cast<uintptr_t>(parentWindow));
    });
}

void ZAudioPluginVSTAdapter::editorClose()
{
    GuardedVoid("ZAudioPluginVSTAdapter::editorClose", [&] {
        if (editor_)
            editor_->Close();
    });
}

void ZAudioPluginVSTAdapter::editorIdle()
{
    GuardedVoid("ZAudioPluginVSTAdapter::editorIdle", [&] {
        if (editor_)
            editor_->Idle();
    });
}

VstIntPtr ZAudioPluginVSTAdapter::vendorSpecific(VstInt32 index, VstIntPtr value, void*, float opt)
{
    return Guarded("ZAudioPluginVSTAdapter::vendorSpecific", VstIntPtr{0}, [&] {
        if (index != kVendorScaleIndex || value != kVendorScaleValue || editor() == nullptr)
            return VstIntPtr{0};
        editor_->SetContentScale(opt);
        return VstIntPtr{1};
    });
}

void ZAudioPluginVSTAdapter::BeginEdit(int32_t index) { beginEdit(index); }

void ZAudioPluginVSTAdapter::PerformEdit(int32_t index, double normalized)
{
    core_->SetParameter(index, normalized);
    SendAutomation(index, normalized);
}

void ZAudioPluginVSTAdapter::EndEdit(int32_t index) { endEdit(index); }

bool ZAudioPluginVSTAdapter::RequestResize(ZEditorSize size) { return sizeWindow(size.width, size.height); }

void ZAudioPluginVSTAdapter::ReportLatency(int32_t samples)
{
    Trace("Latency:" + std::to_string(samples), "ZAudioPluginVSTAdapter::ReportLatency");
    setInitialDelay(samples);
    ioChanged();
}

void ZAudioPluginVSTAdapter::SendAutomation(int32_t index, double normalized)
{
    callHost(audioMasterAutomate, index, 0, nullptr, static_cast<float>(normalized));
}

} // namespace halvern
