#include "host/vst3/z_audio_plugin_vst3_adapter.h"

#include "core/exception_frame.h"
#include "host/host_time.h"
#include "host/library_module.h"
#include "host/vst3/vst3_editor_view.h"
#include "host/vst3/vst3_text.h"
#include "state/plugin_state_block.h"

#include <pluginterfaces/base/ibstream.h>
#include <pluginterfaces/gui/iplugview.h>
#include <pluginterfaces/vst/ivstevents.h>
#include <pluginterfaces/vst/ivstparameterchanges.h>
#include <pluginterfaces/vst/ivstprocesscontext.h>
#include <pluginterfaces/vst/vstspeaker.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace halvern {

using namespace Steinberg;
using namespace Steinberg::Vst;

namespace {

constexpr int32 kStateReadPiece = 1024;

bool Is(const TUID iid, const TUID other) { return FUnknownPrivate::iidEqual(iid, other); }

} // namespace

ZAudioPluginVST3Adapter::ZAudioPluginVST3Adapter(std::unique_ptr<ZAudioPlugin> core)
    : core_(std::move(core)), unreported_(static_cast<size_t>(core_->GetParameterCount()))
{
    points_.reserve(kMaxChangePoints);
    for (auto& value : unreported_)
        value.store(kNotPending, std::memory_order_relaxed);
    VST3InstanceCreated();
    core_->SetHostAdapter(this);
    for (int index = 0; index < core_->GetParameterCount(); ++index)
        if (core_->GetParameterID(index) == "Bypass")
            bypassIndex_ = index;
}

ZAudioPluginVST3Adapter::~ZAudioPluginVST3Adapter()
{
    core_.reset();
    VST3InstanceReleased();
}

// One object answers for every interface; the processor side's count is the one count.
tresult PLUGIN_API ZAudioPluginVST3Adapter::queryInterface(const TUID iid, void** object)
{
    if (object == nullptr)
        return kInvalidArgument;
    if (Is(iid, IMidiMapping::iid)) {
        addRef();
        *object = static_cast<IMidiMapping*>(this);
        return kResultOk;
    }
    if (ZVST3AudioEffect::queryInterface(iid, object) == kResultOk)
        return kResultOk;
    return EditControllerEx1::queryInterface(iid, object);
}

uint32 PLUGIN_API ZAudioPluginVST3Adapter::addRef() { return ZVST3AudioEffect::addRef(); }
uint32 PLUGIN_API ZAudioPluginVST3Adapter::release() { return ZVST3AudioEffect::release(); }

// Hosts initialise the object once as the component and may do so again as the
// controller; the second call finds it ready.
tresult PLUGIN_API ZAudioPluginVST3Adapter::initialize(FUnknown* context)
{
    return Guarded("ZAudioPluginVST3Adapter::initialize", tresult{kResultFalse}, [&]() -> tresult {
        if (initialized_)
            return kResultOk;
        if (ZVST3AudioEffect::initialize(context) != kResultOk || EditControllerEx1::initialize(context) != kResultOk)
            return kResultFalse;
        addAudioInput(STR16("Stereo In"), SpeakerArr::kStereo);
        addAudioOutput(STR16("Stereo Out"), SpeakerArr::kStereo);
        if (core_->ReceivesMIDI())
            addEventInput(STR16("MIDI In"), 16);
        addUnits();
        initialized_ = true;
        return kResultOk;
    });
}

tresult PLUGIN_API ZAudioPluginVST3Adapter::terminate()
{
    return Guarded("ZAudioPluginVST3Adapter::terminate", tresult{kResultFalse}, [&]() -> tresult {
        if (!initialized_)
            return kResultOk;
        initialized_ = false;
        ZVST3AudioEffect::terminate();
        EditControllerEx1::terminate();
        return kResultOk;
    });
}

// One unit per panel: a panel record opens a unit that holds the parameters after it,
// up to the next panel; parameters before the first panel stay in the root unit.
void ZAudioPluginVST3Adapter::addUnits()
{
    String128 name;
    CopyToString128("Root", name);
    addUnit(new Unit(name, kRootUnitId, kNoParentUnitId, hasPrograms() ? kFactoryProgramList : kNoProgramListId));
    if (hasPrograms()) {
        CopyToString128("Factory presets", name);
        auto* programs = new ProgramList(name, kFactoryProgramList, kRootUnitId);
        for (int32_t program = 0; program < core_->GetProgramCount(); ++program) {
            CopyToString128(core_->GetProgramName(program), name);
            programs->addProgram(name);
        }
        addProgramList(programs);
    }
    unitOf_.assign(static_cast<size_t>(core_->GetParameterCount()), kRootUnitId);
    UnitID current = kRootUnitId;
    for (int index = 0; index < core_->GetParameterCount(); ++index) {
        if (core_->GetParameterType(index) == ZParameterType::Panel) {
            current = static_cast<UnitID>(units.size());
            CopyToString128(core_->GetParameterName(index), name);
            addUnit(new Unit(name, current, kRootUnitId));
        }
        unitOf_[static_cast<size_t>(index)] = current;
    }
}

// A rate the core does not take is refused, and the previous set-up stays.
tresult PLUGIN_API ZAudioPluginVST3Adapter::setupProcessing(ProcessSetup& setup)
{
    if (!ZAudioPlugin::IsUsableSampleRate(setup.sampleRate))
        return kResultFalse;
    return ZVST3AudioEffect::setupProcessing(setup);
}

tresult PLUGIN_API ZAudioPluginVST3Adapter::setActive(TBool state)
{
    return Guarded("ZAudioPluginVST3Adapter::setActive", tresult{kResultFalse}, [&]() -> tresult {
        if (state != 0) {
            const ProcessSetup& setup = processSetup();
            core_->SetSampleRate(setup.sampleRate);
            core_->SetMaxBlockSize(setup.maxSamplesPerBlock);
            core_->InitProcessing();
            silence_.assign(static_cast<size_t>(setup.maxSamplesPerBlock), 0.0f);
            scratch_.assign(static_cast<size_t>(setup.maxSamplesPerBlock), 0.0f);
        }
        return ZVST3AudioEffect::setActive(state);
    });
}

tresult PLUGIN_API ZAudioPluginVST3Adapter::setProcessing(TBool)
{
    return kResultOk;
}

uint32 PLUGIN_API ZAudioPluginVST3Adapter::getLatencySamples()
{
    return Guarded("ZAudioPluginVST3Adapter::getLatencySamples", uint32{0},
                   [&] { return static_cast<uint32>(std::max(core_->GetLatency(), 0)); });
}

uint32 PLUGIN_API ZAudioPluginVST3Adapter::getTailSamples()
{
    return Guarded("ZAudioPluginVST3Adapter::getTailSamples", uint32{0},
                   [&] { return static_cast<uint32>(std::max(core_->GetTailSamples(), 0)); });
}

// ---- processing ----

// A second call while one runs (a host bug) is turned away before it touches anything
// the running one uses.
tresult PLUGIN_API ZAudioPluginVST3Adapter::process(ProcessData& data)
{
    if (processing_.test_and_set(std::memory_order_acquire))
        return kResultFalse;
    const tresult result = Guarded("ZAudioPluginVST3Adapter::process", tresult{kResultFalse}, [&]() -> tresult {
        takeProcessContext(data.processContext);
        takeEvents(data.inputEvents);
        const int changeCount = collectChanges(data.inputParameterChanges);
        const bool hasAudio = data.numSamples > 0 && data.numOutputs > 0 && data.outputs != nullptr &&
                              data.outputs[0].channelBuffers32 != nullptr && data.outputs[0].numChannels > 0;
        if (hasAudio && !active()) {
            // Not activated: nothing is prepared to process with, so the block is silent.
            for (int i = 0; i < changeCount; ++i)
                apply(points_[static_cast<size_t>(i)]);
            clearOutputs(data);
        } else if (hasAudio) {
            processAudio(data, changeCount);
        } else {
            // A flush: no audio, only parameter changes to take over.
            for (int i = 0; i < changeCount; ++i)
                apply(points_[static_cast<size_t>(i)]);
        }
        reportChanges(data.outputParameterChanges);
        return kResultOk;
    });
    processing_.clear(std::memory_order_release);
    return result;
}

void ZAudioPluginVST3Adapter::takeProcessContext(const ProcessContext* context)
{
    ZHostTimeInfo& info = core_->hostTime();
    if (context == nullptr) {
        info.positionValid = false;
        return;
    }
    if (context->sampleRate > 0.0)
        info.sampleRate = context->sampleRate;
    if ((context->state & ProcessContext::kTempoValid) != 0 && context->tempo > 0.0)
        info.tempo = context->tempo;
    info.positionValid = (context->state & ProcessContext::kProjectTimeMusicValid) != 0;
    if (info.positionValid)
        info.musicalPosition = context->projectTimeMusic;
    if ((context->state & ProcessContext::kTimeSigValid) != 0) {
        info.timeSigNumerator = context->timeSigNumerator;
        info.timeSigDenominator = context->timeSigDenominator;
    }
    if ((context->state & ProcessContext::kBarPositionValid) != 0)
        info.barStart = RoundedBarStart(context->barPositionMusic, info.timeSigDenominator);
}

// Notes and pressure from the event bus reach the core's MIDI controllers as MIDI
// messages at their sample offsets.
void ZAudioPluginVST3Adapter::takeEvents(IEventList* events)
{
    if (events == nullptr)
        return;
    const int32 count = events->getEventCount();
    for (int32 i = 0; i < count; ++i) {
        Event event{};
        if (events->getEvent(i, event) != kResultOk)
            continue;
        auto seven = [](float x) { return static_cast<uint8_t>(std::clamp(std::lround(x * 127.0f), 0L, 127L)); };
        switch (event.type) {
        case Event::kNoteOnEvent:
            core_->ProcessMIDIMessage(static_cast<uint8_t>(0x90 | (event.noteOn.channel & 0x0F)),
                                      static_cast<uint8_t>(event.noteOn.pitch & 0x7F), std::max<uint8_t>(seven(event.noteOn.velocity), 1),
                                      event.sampleOffset);
            break;
        case Event::kNoteOffEvent:
            core_->ProcessMIDIMessage(static_cast<uint8_t>(0x80 | (event.noteOff.channel & 0x0F)),
                                      static_cast<uint8_t>(event.noteOff.pitch & 0x7F), seven(event.noteOff.velocity),
                                      event.sampleOffset);
            break;
        case Event::kPolyPressureEvent:
            core_->ProcessMIDIMessage(static_cast<uint8_t>(0xA0 | (event.polyPressure.channel & 0x0F)),
                                      static_cast<uint8_t>(event.polyPressure.pitch & 0x7F), seven(event.polyPressure.pressure),
                                      event.sampleOffset);
            break;
        default:
            break;
        }
    }
}

// Gathers the block's parameter change points in the order of their sample offsets
// (arrival order among equal offsets), without allocating.
int ZAudioPluginVST3Adapter::collectChanges(IParameterChanges* changes)
{
    points_.clear();
    if (changes == nullptr)
        return 0;
    const int32 queues = changes->getParameterCount();
    for (int32 q = 0; q < queues; ++q) {
        IParamValueQueue* queue = changes->getParameterData(q);
        if (queue == nullptr || (!isParameter(queue->getParameterId()) && queue->getParameterId() != kProgramParameter))
            continue;
        for (int32 p = 0; p < queue->getPointCount() && points_.size() < kMaxChangePoints; ++p) {
            int32 offset = 0;
            ParamValue value = 0.0;
            if (queue->getPoint(p, offset, value) == kResultOk && std::isfinite(value))
                points_.push_back(ChangePoint{std::max(offset, int32{0}), static_cast<int32>(points_.size()), queue->getParameterId(),
                                              std::clamp(value, 0.0, 1.0)});
        }
    }
    std::sort(points_.begin(), points_.end(), [](const ChangePoint& a, const ChangePoint& b) {
        return a.offset != b.offset ? a.offset < b.offset : a.order < b.order;
    });
    return static_cast<int>(points_.size());
}

// The host's points give the shape of a change; each takes effect at its sample. A
// program change is loaded off the audio thread.
void ZAudioPluginVST3Adapter::apply(const ChangePoint& point)
{
    if (point.id == kProgramParameter)
        core_->RequestProgram(programAt(point.value));
    else
        core_->SetParameterAtBlockStart(static_cast<int32_t>(point.id), point.value);
}

// Cuts the block at its change points, so that each change takes effect at its sample.
void ZAudioPluginVST3Adapter::processAudio(ProcessData& data, int changeCount)
{
    AudioBusBuffers& output = data.outputs[0];
    const bool hasInput = data.numInputs > 0 && data.inputs != nullptr && data.inputs[0].channelBuffers32 != nullptr &&
                          data.inputs[0].numChannels > 0;
    const int n = data.numSamples;
    float* const* in = hasInput ? data.inputs[0].channelBuffers32 : nullptr;
    float* inputs[2] = {hasInput ? in[0] : nullptr, hasInput ? in[std::min(data.inputs[0].numChannels, 2) - 1] : nullptr};
    float* outputs[2] = {output.channelBuffers32[0], output.numChannels > 1 ? output.channelBuffers32[1] : nullptr};

    int next = 0;
    for (int at = 0; at < n;) {
        while (next < changeCount && points_[static_cast<size_t>(next)].offset <= at)
            apply(points_[static_cast<size_t>(next++)]);
        const int end = next < changeCount ? std::min(points_[static_cast<size_t>(next)].offset, n) : n;
        processSegment(inputs, outputs, at, end - at);
        at = end;
    }
    for (; next < changeCount; ++next)
        apply(points_[static_cast<size_t>(next)]);
    for (int32 bus = 0; bus < data.numOutputs; ++bus)
        flagSilence(data.outputs[bus], n);
}

// A missing input channel reads silence and a missing output channel (the second of a
// mono bus) goes to scratch; both buffers hold the longest block the host announced, so
// longer segments go in pieces.
void ZAudioPluginVST3Adapter::processSegment(float* const* inputs, float* const* outputs, int offset, int length)
{
    const bool needsSilence = inputs[0] == nullptr || inputs[1] == nullptr;
    const bool needsScratch = outputs[0] == nullptr || outputs[1] == nullptr;
    const int piece = needsSilence || needsScratch ? std::max(static_cast<int>(scratch_.size()), 1) : length;
    for (int done = 0; done < length;) {
        const int n = std::min(piece, length - done);
        const int at = offset + done;
        float* in[2];
        float* out[2];
        for (int channel = 0; channel < 2; ++channel) {
            in[channel] = inputs[channel] != nullptr ? inputs[channel] + at : silence_.data();
            out[channel] = outputs[channel] != nullptr ? outputs[channel] + at : scratch_.data();
        }
        if (needsSilence)
            std::fill(silence_.begin(), silence_.begin() + n, 0.0f);
        core_->ProcessBlock(in, out, n, true);
        done += n;
    }
}

void ZAudioPluginVST3Adapter::clearOutputs(ProcessData& data)
{
    for (int32 bus = 0; bus < data.numOutputs; ++bus)
        for (int32 channel = 0; channel < data.outputs[bus].numChannels; ++channel)
            if (float* x = data.outputs[bus].channelBuffers32 != nullptr ? data.outputs[bus].channelBuffers32[channel] : nullptr)
                std::fill(x, x + data.numSamples, 0.0f);
    for (int32 bus = 0; bus < data.numOutputs; ++bus)
        flagSilence(data.outputs[bus], data.numSamples);
}

// Channels whose whole block is silent are cleared and flagged, so the host may skip them.
void ZAudioPluginVST3Adapter::flagSilence(AudioBusBuffers& bus, int samples)
{
    bus.silenceFlags = 0;
    if (bus.channelBuffers32 == nullptr)
        return;
    for (int32 channel = 0; channel < bus.numChannels && channel < 64; ++channel) {
        float* x = bus.channelBuffers32[channel];
        if (x == nullptr || !std::all_of(x, x + samples, [](float v) { return std::fabs(v) <= kSilence; }))
            continue;
        std::fill(x, x + samples, 0.0f);
        bus.silenceFlags |= uint64{1} << channel;
    }
}

// Changes made inside the plug-in (modulators, MIDI controllers, slots) go back to the
// host as output parameter changes at the start of the block: those flagged during
// processing, and those another thread handed over through SendAutomation.
void ZAudioPluginVST3Adapter::reportChanges(IParameterChanges* changes)
{
    if (changes == nullptr)
        return;
    auto report = [changes](ParamID id, double value) {
        int32 queueIndex = 0;
        IParamValueQueue* queue = changes->addParameterData(id, queueIndex);
        int32 pointIndex = 0;
        if (queue != nullptr)
            queue->addPoint(0, value, pointIndex);
    };
    core_->parameters().sendMarked([&report](int index, double value) { report(static_cast<ParamID>(index), value); });
    if (!anyUnreported_.exchange(false, std::memory_order_acq_rel))
        return;
    for (size_t index = 0; index < unreported_.size(); ++index)
        if (const double value = unreported_[index].exchange(kNotPending, std::memory_order_acq_rel); value != kNotPending)
            report(static_cast<ParamID>(index), value);
}

// ---- state ----

tresult ZAudioPluginVST3Adapter::saveComponentState(IBStream* state)
{
    return Guarded("ZAudioPluginVSTAdapter::getState", tresult{kResultFalse}, [&]() -> tresult {
        if (state == nullptr)
            return kInvalidArgument;
        const ZMemoryStream block = SavePluginState(*core_);
        int32 written = 0;
        return state->write(const_cast<uint8_t*>(block.data()), static_cast<int32>(block.size()), &written);
    });
}

namespace {

// The host's stream in pieces of 1024 bytes until a read delivers fewer than asked.
std::vector<uint8_t> ReadWholeStream(IBStream* state)
{
    std::vector<uint8_t> bytes;
    for (;;) {
        const size_t at = bytes.size();
        bytes.resize(at + kStateReadPiece);
        int32 read = 0;
        if (state->read(bytes.data() + at, kStateReadPiece, &read) != kResultOk)
            read = 0;
        read = std::clamp(read, int32{0}, kStateReadPiece);
        bytes.resize(at + static_cast<size_t>(read));
        if (read < kStateReadPiece)
            return bytes;
    }
}

} // namespace

tresult ZAudioPluginVST3Adapter::loadComponentState(IBStream* state)
{
    return Guarded("ZAudioPluginVSTAdapter::setState", tresult{kResultFalse}, [&]() -> tresult {
        if (state == nullptr)
            return kInvalidArgument;
        const std::vector<uint8_t> bytes = ReadWholeStream(state);
        LoadPluginState(*core_, bytes.data(), static_cast<int32_t>(bytes.size()));
        return kResultOk;
    });
}

// The controller reads the processor's block too; being the same object, it only checks
// that the block is whole, since the processor side has applied it.
tresult PLUGIN_API ZAudioPluginVST3Adapter::setComponentState(IBStream* state)
{
    return Guarded("ZAudioPluginVST3Adapter::setComponentState", tresult{kResultFalse}, [&]() -> tresult {
        if (state == nullptr)
            return kInvalidArgument;
        const std::vector<uint8_t> bytes = ReadWholeStream(state);
        ReadStateDocument(bytes.data(), static_cast<int32_t>(bytes.size()));
        return kResultOk;
    });
}

// ---- parameters ----

bool ZAudioPluginVST3Adapter::isParameter(ParamID id)
{
    return id < static_cast<ParamID>(core_->GetParameterCount());
}

int32_t ZAudioPluginVST3Adapter::programAt(ParamValue normalized)
{
    const int32_t last = core_->GetProgramCount() - 1;
    return static_cast<int32_t>(std::lround(std::clamp(normalized, 0.0, 1.0) * std::max(last, 0)));
}

int ZAudioPluginVST3Adapter::stepCountOf(ParamID id)
{
    if (id == kProgramParameter)
        return std::max(core_->GetProgramCount() - 1, 0);
    return isParameter(id) ? stepCountOf(static_cast<int>(id)) : 0;
}

int ZAudioPluginVST3Adapter::stepCountOf(int index)
{
    switch (core_->GetParameterType(index)) {
    case ZParameterType::Switch:
        return 1;
    case ZParameterType::Enumeration:
    case ZParameterType::Integer: {
        const ZValue* value = core_->parameters().value(index);
        return value != nullptr ? std::max(value->stepCount() - 1, 0) : 0;
    }
    case ZParameterType::Panel:
        return core_->parameters().value(index) != nullptr ? 1 : 0;
    default:
        return 0;
    }
}

int32 PLUGIN_API ZAudioPluginVST3Adapter::getParameterCount()
{
    return Guarded("ZAudioPluginVST3Adapter::getParameterCount", int32{0},
                   [&] { return core_->GetParameterCount() + (hasPrograms() ? 1 : 0); });
}

void ZAudioPluginVST3Adapter::programParameterInfo(ParameterInfo& info)
{
    info.id = kProgramParameter;
    CopyToString128("Program", info.title);
    CopyToString128("Program", info.shortTitle);
    info.stepCount = stepCountOf(kProgramParameter);
    info.defaultNormalizedValue = 0.0;
    info.unitId = kRootUnitId;
    info.flags = ParameterInfo::kIsProgramChange | ParameterInfo::kIsList;
}

tresult PLUGIN_API ZAudioPluginVST3Adapter::getParameterInfo(int32 index, ParameterInfo& info)
{
    return Guarded("ZAudioPluginVST3Adapter::getParameterInfo", tresult{kResultFalse}, [&]() -> tresult {
        info = ParameterInfo{};
        if (index == core_->GetParameterCount() && hasPrograms()) {
            programParameterInfo(info);
            return kResultOk;
        }
        if (index < 0 || !isParameter(static_cast<ParamID>(index)))
            return kInvalidArgument;
        info.id = static_cast<ParamID>(index);
        CopyToString128(core_->GetParameterName(index), info.title);
        CopyToString128(core_->GetParameterID(index), info.shortTitle);
        CopyToString128(core_->GetParameterUnitsName(index), info.units);
        info.stepCount = stepCountOf(index);
        info.defaultNormalizedValue = core_->GetParameterDefaultValue(index);
        info.unitId = static_cast<size_t>(index) < unitOf_.size() ? unitOf_[static_cast<size_t>(index)] : kRootUnitId;
        const bool hasValue = core_->parameters().value(index) != nullptr;
        if (!hasValue)
            info.flags = ParameterInfo::kIsReadOnly | ParameterInfo::kIsHidden;
        else if (core_->parameters().info(index).automatable)
            info.flags = ParameterInfo::kCanAutomate;
        if (core_->GetParameterType(index) == ZParameterType::Enumeration)
            info.flags |= ParameterInfo::kIsList;
        if (index == bypassIndex_)
            info.flags |= ParameterInfo::kIsBypass;
        return kResultOk;
    });
}

tresult PLUGIN_API ZAudioPluginVST3Adapter::getParamStringByValue(ParamID id, ParamValue normalized, String128 text)
{
    return Guarded("ZAudioPluginVST3Adapter::getParamStringByValue", tresult{kResultFalse}, [&]() -> tresult {
        if (text == nullptr || !std::isfinite(normalized))
            return kInvalidArgument;
        if (id == kProgramParameter && hasPrograms()) {
            CopyToString128(core_->GetProgramName(programAt(normalized)), text);
            return kResultOk;
        }
        if (!isParameter(id))
            return kInvalidArgument;
        CopyToString128(core_->GetParameterValueNameFrom01(static_cast<int32_t>(id), std::clamp(normalized, 0.0, 1.0)), text);
        return kResultOk;
    });
}

tresult PLUGIN_API ZAudioPluginVST3Adapter::getParamValueByString(ParamID id, TChar* text, ParamValue& normalized)
{
    return Guarded("ZAudioPluginVST3Adapter::getParamValueByString", tresult{kResultFalse}, [&]() -> tresult {
        if (id == kProgramParameter && text != nullptr) {
            const std::string name = ToUtf8(text);
            for (int32_t program = 0; program < core_->GetProgramCount(); ++program)
                if (core_->GetProgramName(program) == name) {
                    normalized = static_cast<double>(program) / std::max(stepCountOf(kProgramParameter), 1);
                    return kResultOk;
                }
            return kResultFalse;
        }
        const ZValue* value = isParameter(id) ? core_->parameters().value(static_cast<int>(id)) : nullptr;
        if (value == nullptr || text == nullptr)
            return kInvalidArgument;
        double parsed = 0.0;
        if (!value->normalizedFromDisplayText(ToUtf8(text), parsed))
            return kResultFalse;
        normalized = parsed;
        return kResultOk;
    });
}

// Plain values are step numbers for stepped parameters and the normalised value for the others.
ParamValue PLUGIN_API ZAudioPluginVST3Adapter::normalizedParamToPlain(ParamID id, ParamValue normalized)
{
    return Guarded("ZAudioPluginVST3Adapter::normalizedParamToPlain", ParamValue{0.0}, [&] {
        const int steps = stepCountOf(id);
        return steps > 0 ? std::round(std::clamp(normalized, 0.0, 1.0) * steps) : normalized;
    });
}

ParamValue PLUGIN_API ZAudioPluginVST3Adapter::plainParamToNormalized(ParamID id, ParamValue plain)
{
    return Guarded("ZAudioPluginVST3Adapter::plainParamToNormalized", ParamValue{0.0}, [&] {
        const int steps = stepCountOf(id);
        return steps > 0 ? std::clamp(plain / steps, 0.0, 1.0) : plain;
    });
}

ParamValue PLUGIN_API ZAudioPluginVST3Adapter::getParamNormalized(ParamID id)
{
    return Guarded("ZAudioPluginVST3Adapter::getParamNormalized", ParamValue{0.0}, [&] {
        if (id == kProgramParameter)
            return static_cast<double>(std::max(core_->GetCurrentProgram(), 0)) / std::max(stepCountOf(kProgramParameter), 1);
        return isParameter(id) ? core_->GetParameter(static_cast<int32_t>(id)) : 0.0;
    });
}

// The controller's view is the core itself, so the value is set: a host that saves the
// state before the next block is processed finds it there. The same change arriving
// through process() at its sample then finds the value already made.
tresult PLUGIN_API ZAudioPluginVST3Adapter::setParamNormalized(ParamID id, ParamValue value)
{
    return Guarded("ZAudioPluginVST3Adapter::setParamNormalized", tresult{kResultFalse}, [&]() -> tresult {
        if (id == kProgramParameter && hasPrograms() && std::isfinite(value)) {
            if (programAt(value) != core_->GetCurrentProgram())
                core_->RequestProgram(programAt(value));
            return kResultOk;
        }
        if (!isParameter(id) || !std::isfinite(value))
            return kInvalidArgument;
        core_->SetParameterIfChanged(static_cast<int32_t>(id), std::clamp(value, 0.0, 1.0));
        return kResultOk;
    });
}

// The editor's view, when the core has an editor; the host owns the one reference.
IPlugView* PLUGIN_API ZAudioPluginVST3Adapter::createView(FIDString name)
{
    return Guarded("ZAudioPluginVST3Adapter::createView", static_cast<IPlugView*>(nullptr), [&]() -> IPlugView* {
        if (name == nullptr || std::strcmp(name, ViewType::kEditor) != 0 || !core_->HasEditor())
            return nullptr;
        return ZVST3EditorView::Create(*this, *core_);
    });
}

tresult PLUGIN_API ZAudioPluginVST3Adapter::getMidiControllerAssignment(int32 busIndex, int16 channel, CtrlNumber controller,
                                                                       ParamID& id)
{
    return Guarded("ZAudioPluginVST3Adapter::getMidiControllerAssignment", tresult{kResultFalse}, [&]() -> tresult {
        if (busIndex != 0 || channel < 0 || channel > 15)
            return kResultFalse;
        const int32_t parameter = core_->GetMIDIControllerParameter(channel, controller);
        if (parameter < 0 || !isParameter(static_cast<ParamID>(parameter)))
            return kResultFalse;
        id = static_cast<ParamID>(parameter);
        return kResultTrue;
    });
}

// ---- the core's calls ----

void ZAudioPluginVST3Adapter::ReportLatency(int32_t)
{
    if (componentHandler != nullptr)
        componentHandler->restartComponent(kLatencyChanged);
}

// Kept for the next block's output parameter changes: a single-component plug-in tells
// the host about its own changes from the processor, not through the edit callbacks.
void ZAudioPluginVST3Adapter::SendAutomation(int32_t index, double normalized)
{
    if (index < 0 || static_cast<size_t>(index) >= unreported_.size())
        return;
    unreported_[static_cast<size_t>(index)].store(normalized, std::memory_order_release);
    anyUnreported_.store(true, std::memory_order_release);
}

// The plug-in has no event output bus; the core sends no MIDI.
void ZAudioPluginVST3Adapter::QueueMIDIEvent(const ZMIDIEvent&) {}

} // namespace halvern
