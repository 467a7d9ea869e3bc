#include "core/audio_plugin.h"

#include "core/exception_frame.h"
#include "core/value_displays.h"
#include "core/vector_kernels.h"
#include "core/z_exception.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace halvern {
namespace {

// Used when a host starts processing without having told the sample rate or block size
// (plug-in scanners answer 0 to both).
constexpr double kFallbackSampleRate = 44100.0;
// The rates taken from hosts: anything slower is no audio rate, anything faster would
// size the delay lines past reason.
constexpr double kLowestSampleRate = 100.0;
constexpr double kHighestSampleRate = 768000.0;
constexpr int kFallbackBlockSize = 1024;

void sizeBuffers(std::vector<std::vector<float>>& buffers, int count, int length)
{
    buffers.assign(static_cast<size_t>(count), std::vector<float>(static_cast<size_t>(length), 0.0f));
}

} // namespace

ZAudioPlugin::ZAudioPlugin()
{
    bypassValue_.setFormatter(FormatOnOff);
}
ZAudioPlugin::~ZAudioPlugin() = default;

// ---------------------------------------------------------------- parameters

int32_t ZAudioPlugin::GetParameterCount()
{
    return parameters().count();
}

void ZAudioPlugin::SetParameter(int32_t index, double value)
{
    GuardedVoid("ZAudioPlugin::SetParameter", [&] { setParameter(index, value, false); });
}

void ZAudioPlugin::SetParameterAtBlockStart(int32_t index, double value)
{
    GuardedVoid("ZAudioPlugin::SetParameterAtBlockStart", [&] { setParameter(index, value, true); });
}

// Before processing starts a change is written at once; afterwards the audio thread
// takes it over at its next block, so values never change inside a piece.
void ZAudioPlugin::setParameter(int32_t index, double value, bool jump)
{
    if (!prepared_ && processingLock_.Acquire(0)) {
        try {
            parameters().setNow(index, value);
        } catch (...) {
            processingLock_.Release();
            throw;
        }
        processingLock_.Release();
    } else {
        parameters().park(index, value, jump);
    }
    HostChangedParameter(index);
}

void ZAudioPlugin::HostChangedParameter(int32_t) {}

void ZAudioPlugin::SetParameterIfChanged(int32_t index, double value)
{
    GuardedVoid("ZAudioPlugin::SetParameterIfChanged", [&] {
        if (parameters().normalized(index) != value)
            SetParameter(index, value);
    });
}

double ZAudioPlugin::GetParameter(int32_t index)
{
    return Guarded("ZAudioPlugin::GetParameter", 0.0, [&] { return parameters().normalized(index); });
}

std::string ZAudioPlugin::GetParameterName(int32_t index)
{
    return Guarded("ZAudioPlugin::GetParameterName", std::string(), [&] { return parameters().info(index).name; });
}

std::string ZAudioPlugin::GetParameterID(int32_t index)
{
    return Guarded("ZAudioPlugin::GetParameterID", std::string(), [&] { return parameters().info(index).id; });
}

std::string ZAudioPlugin::GetParameterValueName(int32_t index)
{
    return Guarded("ZAudioPlugin::GetParameterValueName", std::string(), [&] {
        const ZValue* value = parameters().value(index);
        return value != nullptr ? value->displayTextAt(parameters().normalized(index)) : std::string();
    });
}

std::string ZAudioPlugin::GetParameterValueNameFrom01(int32_t index, double normalized)
{
    return Guarded("ZAudioPlugin::GetParameterValueNameFrom01", std::string(), [&] {
        const ZValue* value = parameters().value(index);
        return value != nullptr ? value->displayTextAt(normalized) : std::string();
    });
}

double ZAudioPlugin::ParseParameterValueName(int32_t index, const std::string& text)
{
    return Guarded("ZAudioPlugin::ParseParameterValueName", 0.0, [&] {
        const ZValue* value = parameters().value(index);
        double normalized = parameters().normalized(index);
        if (value == nullptr || !value->normalizedFromDisplayText(text, normalized))
            return parameters().normalized(index);
        return normalized;
    });
}

bool ZAudioPlugin::SetParameterFromDisplayText(int32_t index, const std::string& text)
{
    return Guarded("ZAudioPlugin::SetParameterFromDisplayText", false, [&] {
        const ZValue* value = parameters().value(index);
        double normalized = 0.0;
        if (value == nullptr || !value->normalizedFromDisplayText(text, normalized))
            return false;
        SetParameter(index, normalized);
        return true;
    });
}

std::string ZAudioPlugin::GetParameterUnitsName(int32_t index)
{
    return Guarded("ZAudioPlugin::GetParameterUnitsName", std::string(), [&] { return parameters().info(index).units; });
}

ZParameterType ZAudioPlugin::GetParameterType(int32_t index)
{
    return Guarded("ZAudioPlugin::GetParameterType", ZParameterType::Float, [&] { return parameters().info(index).type; });
}

double ZAudioPlugin::GetParameterDefaultValue(int32_t index)
{
    return Guarded("ZAudioPlugin::GetParameterDefaultValue", 0.0, [&] { return parameters().defaultNormalized(index); });
}

int32_t ZAudioPlugin::GetInputBusCount()
{
    return inputChannels_ / channelsPerBus_;
}

int32_t ZAudioPlugin::GetOutputBusCount()
{
    return outputChannels_ / channelsPerBus_;
}

// ---------------------------------------------------------------- set-up

template <typename T>
void ZAudioPlugin::setLocked(T& field, T value)
{
    ZLockHolder hold(processingLock_, -1);
    field = value;
}

void ZAudioPlugin::SetChannelConfiguration(int inputs, int outputs, int channelsPerBus, int busStride)
{
    if (busStride <= 0)
        busStride = channelsPerBus;
    if (inputs < 0 || outputs < 0 || inputs > kMaxChannels || outputs > kMaxChannels || channelsPerBus < 1 ||
        busStride < channelsPerBus)
        throw ZException("Invalid channel configuration.");
    ZLockHolder hold(processingLock_, -1);
    inputChannels_ = inputs;
    outputChannels_ = outputs;
    channelsPerBus_ = channelsPerBus;
    busStride_ = busStride;
    if (prepared_)
        allocateBuffers();
}

void ZAudioPlugin::SetSampleRate(double sampleRate)
{
    ZLockHolder hold(processingLock_, -1);
    sampleRate_ = sampleRate;
    hostTime_.sampleRate = sampleRate;
}

void ZAudioPlugin::SetMaxBlockSize(int samples)
{
    setLocked(maxBlockSize_, samples);
}

int32_t ZAudioPlugin::GetTailSamples() { return latency_; }

std::unique_ptr<ZPluginEditor> ZAudioPlugin::CreateEditor(ZEditorHost& host)
{
    return Guarded("ZAudioEffectPluginToAudioPluginAdapter::CreateEditor", std::unique_ptr<ZPluginEditor>(),
                   [&] { return editorFactory_ ? editorFactory_(*this, host) : std::unique_ptr<ZPluginEditor>(); });
}
bool ZAudioPlugin::ReceivesMIDI() { return false; }
bool ZAudioPlugin::SendsMIDI() { return false; }
int32_t ZAudioPlugin::GetMIDIControllerParameter(int, int) { return -1; }

void ZAudioPlugin::SetNames(std::string productName, std::string vendorName)
{
    productName_ = std::move(productName);
    vendorName_ = std::move(vendorName);
}

void ZAudioPlugin::Serialize(const ZSerializationContext&) {}

int32_t ZAudioPlugin::GetProgramCount() { return 0; }
std::string ZAudioPlugin::GetProgramName(int32_t) { return {}; }
int32_t ZAudioPlugin::GetCurrentProgram() { return -1; }
bool ZAudioPlugin::LoadProgram(int32_t) { return false; }
void ZAudioPlugin::RequestProgram(int32_t) {}

void ZAudioPlugin::StateChanged()
{
    for (int index = 0; index < parameters().count(); ++index)
        parameters().markForHost(index);
}

bool ZAudioPlugin::IsUsableSampleRate(double rate)
{
    return rate > kLowestSampleRate && rate <= kHighestSampleRate;
}

void ZAudioPlugin::InitProcessing()
{
    ZLockHolder hold(processingLock_, -1);
    prepared_ = false;
    if (!(sampleRate_ > 0.0) || !std::isfinite(sampleRate_))
        SetSampleRate(kFallbackSampleRate);
    if (maxBlockSize_ <= 0)
        maxBlockSize_ = kFallbackBlockSize;
    // Changes the host made while processing was suspended start the next run at their
    // values instead of gliding there from the old ones.
    parameters().takeParked();
    preparedBlockSize_ = maxBlockSize_;
    allocateBuffers();
    updateLatency();
    prepared_ = true;
}

void ZAudioPlugin::allocateBuffers()
{
    const int block = maxBlockSize_;
    const int factor = std::max(oversampling_, 1);
    sizeBuffers(inputCopies_, inputChannels_, block);
    sizeBuffers(internalOutputs_, outputChannels_, block);
    sizeBuffers(modeBuffers_, outputChannels_, block * factor);
    sizeBuffers(oversampledIn_, factor > 1 ? outputChannels_ : 0, block * factor);
    sizeBuffers(oversampledOut_, factor > 1 ? outputChannels_ : 0, block * factor);
    silence_.assign(static_cast<size_t>(block * factor), 0.0f);
    discard_.assign(static_cast<size_t>(block * factor), 0.0f);

    oversamplers_.resize(factor > 1 ? static_cast<size_t>(outputChannels_) : 0);
    for (auto& oversampler : oversamplers_)
        oversampler.prepare(factor, block);

    bypassLines_.resize(static_cast<size_t>(std::max(inputChannels_, outputChannels_)));
    passThroughLines_.resize(static_cast<size_t>(outputChannels_));
    sizeDelayLines();
}

// Bypass runs at the host's rate and delays by the whole latency; the channels that a
// channel mode leads past the effect run beside it, at its rate, and delay by its latency.
void ZAudioPlugin::sizeDelayLines()
{
    const int block = std::max(maxBlockSize_, 1);
    for (auto& line : bypassLines_) {
        line.setDelay(latency_);
        line.reserve(latency_, block);
    }
    for (auto& line : passThroughLines_) {
        line.setDelay(effectLatency_);
        line.reserve(effectLatency_, block * std::max(oversampling_, 1));
    }
}

void ZAudioPlugin::SetLatency(int samples)
{
    ZLockHolder hold(processingLock_, -1);
    effectLatency_ = std::max(samples, 0);
    updateLatency();
}

void ZAudioPlugin::SetOversampling(int factor)
{
    ZLockHolder hold(processingLock_, -1);
    oversampling_ = std::clamp(factor, 1, ZOversampler::kMaxFactor);
    if (prepared_)
        allocateBuffers();
    updateLatency();
}

void ZAudioPlugin::updateLatency()
{
    const int oversamplerLatency = oversampling_ > 1 && !oversamplers_.empty() ? oversamplers_.front().latency() : 0;
    const int latency = effectLatency_ + oversamplerLatency;
    if (latency == latency_) {
        sizeDelayLines();
        return;
    }
    latency_ = latency;
    sizeDelayLines();
    if (hostAdapter() != nullptr)
        hostAdapter()->ReportLatency(latency_);
}

void ZAudioPlugin::SetBypass(bool bypass)
{
    ZLockHolder hold(processingLock_, -1);
    bypassValue_.setNormalized(bypass ? 1.0 : 0.0);
    followBypassSwitch();
}

void ZAudioPlugin::RegisterBypassParameter()
{
    parameters().add({"Bypass", "Bypass", "", ZParameterType::Switch, "", true}, &bypassValue_);
}

void ZAudioPlugin::followBypassSwitch()
{
    const bool bypass = bypassSwitch_ != 0;
    if (bypass && !bypass_)
        for (auto& line : bypassLines_)
            line.clear();
    bypass_ = bypass;
}

// Host changes parked during the previous block are taken over before anything else, so
// that the bypass switch among them decides this block. Continuous parameters glide
// across the run the effect is given (longer than the block when oversampling).
void ZAudioPlugin::takeParameterChanges(int n)
{
    const int effectLength = oversampling_ > 1 && GetInputBusCount() > 0 ? n * oversampling_ : n;
    const bool canGlide = automationSubBlock_ > 0 && automationSubBlock_ < effectLength;
    gliding_ = parameters().beginBlock(effectLength, canGlide);
    followBypassSwitch();
}

void ZAudioPlugin::SetChannelMode(ZChannelMode mode)
{
    const int index = static_cast<int>(mode);
    ZLockHolder hold(processingLock_, -1);
    channelMode_ = index >= 0 && index < kChannelModeCount ? mode : ZChannelMode::Stereo;
    for (auto& line : passThroughLines_)
        line.clear();
}

void ZAudioPlugin::SetSurroundChannelMask(uint32_t mask)
{
    setLocked(surroundMask_, mask);
}

void ZAudioPlugin::SetClearOutputsFirst(bool clear)
{
    setLocked(clearOutputsFirst_, clear);
}

void ZAudioPlugin::SetSeparateInputBuffers(bool separate)
{
    setLocked(separateInputBuffers_, separate);
}

void ZAudioPlugin::SetMetering(bool metering)
{
    setLocked(metering_, metering);
}

void ZAudioPlugin::SetMaxSubBlock(int samples)
{
    setLocked(maxSubBlock_, samples);
}

void ZAudioPlugin::SetAutomationSubBlock(int samples)
{
    setLocked(automationSubBlock_, samples);
}

// ---------------------------------------------------------------- hooks

double ZAudioPlugin::GetOutputClampLimit() { return -1.0; }
void ZAudioPlugin::PassThroughChannel(float*, int32_t, bool) {}
void ZAudioPlugin::ProcessSubBlock(float* const*, float* const*, int32_t) {}
void ZAudioPlugin::BeforeProcessing(float* const*, float* const*, int32_t, bool) {}
void ZAudioPlugin::AfterProcessing(float* const*, float* const*, int32_t, bool) {}
void ZAudioPlugin::PrepareForProcessingOnce(float* const*, float* const*, int32_t) {}

// ---------------------------------------------------------------- process entry

void ZAudioPlugin::gatherChannels(float* const* host, int busCount, int perBus, ChannelArray& into, float* substitute) const
{
    into.fill(substitute);
    if (host == nullptr)
        return;
    for (int bus = 0; bus < busCount; ++bus)
        for (int channel = 0; channel < perBus; ++channel) {
            float* pointer = host[bus * busStride_ + channel];
            if (pointer != nullptr)
                into[static_cast<size_t>(bus * perBus + channel)] = pointer;
        }
}

void ZAudioPlugin::ProcessBlock(float* const* inputs, float* const* outputs, int32_t n, bool replacing)
{
    ZLockHolder reentry(reentryLock_, 0);
    ZLockHolder processing(processingLock_, -1);
    if (outputs == nullptr || outputs[0] == nullptr || n <= 0)
        return;

    const int perBus = channelsPerBus_;
    const int inputBuses = GetInputBusCount();
    const int outputBuses = GetOutputBusCount();

    addDenormalOffset(inputs, inputBuses * perBus, n);

    if (!prepared_) {
        // Not yet resumed: nothing to process with, so the block stays silent.
        if (replacing)
            for (int bus = 0; bus < outputBuses; ++bus)
                for (int channel = 0; channel < perBus; ++channel)
                    kernels::Zero(outputs[bus * busStride_ + channel], n);
        return;
    }

    ChannelArray in{};
    ChannelArray out{};
    gatherChannels(inputs, inputBuses, perBus, in, silence_.data());
    gatherChannels(outputs, outputBuses, perBus, out, discard_.data());

    // Blocks longer than announced are taken in pieces that fit the prepared buffers.
    blockPrepared_ = false;
    for (int done = 0; done < n;) {
        const int length = std::min(n - done, preparedBlockSize_);
        ChannelArray pieceIn = in;
        ChannelArray pieceOut = out;
        for (int c = 0; c < kMaxChannels; ++c) {
            if (pieceIn[c] != silence_.data())
                pieceIn[c] += done;
            if (pieceOut[c] != discard_.data())
                pieceOut[c] += done;
        }
        processFrame(pieceIn, pieceOut, length, replacing);
        done += length;
    }
}

// Keeps denormal numbers out of everything downstream. A buffer the host hands over for
// more than one channel (a mono source feeding both sides) gets the offset once.
void ZAudioPlugin::addDenormalOffset(float* const* inputs, int channels, int n) const
{
    if (inputs == nullptr)
        return;
    const int perBus = channelsPerBus_;
    for (int c = 0; c < channels; ++c) {
        float* buffer = inputs[c / perBus * busStride_ + c % perBus];
        bool seen = false;
        for (int earlier = 0; earlier < c && !seen; ++earlier)
            seen = inputs[earlier / perBus * busStride_ + earlier % perBus] == buffer;
        if (!seen)
            kernels::AddConstant(buffer, kDenormalOffset, n);
    }
}

void ZAudioPlugin::processFrame(ChannelArray& inputs, ChannelArray& outputs, int n, bool replacing)
{
    currentInputs_ = ZBlockBuffers{inputs.data(), GetInputBusCount(), n, true};
    currentOutputs_ = ZBlockBuffers{outputs.data(), GetOutputBusCount(), n, false};
    takeParameterChanges(n);
    if (bypass_) {
        parameters().finishGlides();
        gliding_ = false;
        processBypass(inputs, outputs, n);
        return;
    }
    BeforeProcessing(inputs.data(), outputs.data(), n, replacing);
    const int outputCount = GetOutputBusCount() * channelsPerBus_;
    if (metering_) {
        if (GetInputBusCount() == 0) {
            inputLevel_.store(0.05, std::memory_order_relaxed);
            outputLevel_.store(1.0, std::memory_order_relaxed);
        } else {
            raiseLevel(inputLevel_, measurePeak(inputs, GetInputBusCount() * channelsPerBus_, n));
        }
    }
    if (oversampling_ < 2 || GetInputBusCount() == 0)
        processDirect(inputs, outputs, n, replacing);
    else
        processOversampled(inputs, outputs, n, replacing);
    if (metering_ && GetInputBusCount() > 0)
        raiseLevel(outputLevel_, measurePeak(outputs, outputCount, n));
    AfterProcessing(inputs.data(), outputs.data(), n, replacing);
}

void ZAudioPlugin::processDirect(ChannelArray& inputs, ChannelArray& outputs, int n, bool replacing)
{
    const int outputCount = GetOutputBusCount() * channelsPerBus_;
    if (!replacing) {
        if (clearOutputsFirst_) {
            innerProcess(inputs, outputs, n);
            return;
        }
        ChannelArray internal = outputs;
        for (int c = 0; c < outputCount; ++c)
            internal[static_cast<size_t>(c)] = internalOutputs_[static_cast<size_t>(c)].data();
        innerProcess(inputs, internal, n);
        for (int c = 0; c < outputCount; ++c)
            kernels::Add(internal[static_cast<size_t>(c)], outputs[static_cast<size_t>(c)], n);
        return;
    }
    const bool inPlace = inputs[0] == outputs[0];
    if ((separateInputBuffers_ || channelMode_ != ZChannelMode::Stereo) && inPlace) {
        const int inputCount = GetInputBusCount() * channelsPerBus_;
        for (int c = 0; c < inputCount; ++c) {
            float* copy = inputCopies_[static_cast<size_t>(c)].data();
            kernels::Copy(inputs[static_cast<size_t>(c)], copy, n);
            inputs[static_cast<size_t>(c)] = copy;
        }
    }
    if (clearOutputsFirst_)
        for (int c = 0; c < outputCount; ++c)
            kernels::Zero(outputs[static_cast<size_t>(c)], n);
    innerProcess(inputs, outputs, n);
}

void ZAudioPlugin::processOversampled(ChannelArray& inputs, ChannelArray& outputs, int n, bool replacing)
{
    const int factor = oversampling_;
    const int outputCount = GetOutputBusCount() * channelsPerBus_;
    const int inputCount = GetInputBusCount() * channelsPerBus_;
    ChannelArray highIn = inputs;
    ChannelArray highOut = outputs;
    for (int c = 0; c < outputCount; ++c) {
        const size_t i = static_cast<size_t>(c);
        highIn[i] = oversampledIn_[i].data();
        highOut[i] = oversampledOut_[i].data();
        oversamplers_[i].upsample(c < inputCount ? inputs[i] : silence_.data(), highIn[i], n);
        if (clearOutputsFirst_)
            kernels::Zero(highOut[i], n * factor);
    }
    innerProcess(highIn, highOut, n * factor);

    const double limit = GetOutputClampLimit();
    for (int c = 0; c < outputCount; ++c) {
        const size_t i = static_cast<size_t>(c);
        float* target = replacing ? outputs[i] : internalOutputs_[i].data();
        oversamplers_[i].downsample(highOut[i], target, n);
        if (limit >= 0.0) {
            const float bound = static_cast<float>(limit);
            for (int s = 0; s < n; ++s)
                target[s] = std::clamp(target[s], -bound, bound);
        }
        if (!replacing)
            kernels::Add(target, outputs[i], n);
    }
}

void ZAudioPlugin::processBypass(const ChannelArray& inputs, const ChannelArray& outputs, int n)
{
    const int perBus = channelsPerBus_;
    const int buses = std::min(GetInputBusCount(), GetOutputBusCount());
    for (int bus = 0; bus < buses; ++bus)
        for (int channel = 0; channel < perBus; ++channel) {
            const size_t c = static_cast<size_t>(bus * perBus + channel);
            if (latency_ == 0)
                kernels::Copy(inputs[c], outputs[c], n);
            else
                bypassLines_[c].process(inputs[c], outputs[c], n);
        }
    for (int c = buses * perBus; c < GetOutputBusCount() * perBus; ++c)
        kernels::Zero(outputs[static_cast<size_t>(c)], n);
}

// Only the audio thread raises a level, so a plain load and store cannot lose a peak to
// another writer; the editor's exchange may at worst miss one block's peak.
void ZAudioPlugin::raiseLevel(std::atomic<double>& level, double peak)
{
    if (peak > level.load(std::memory_order_relaxed))
        level.store(peak, std::memory_order_relaxed);
}

double ZAudioPlugin::measurePeak(const ChannelArray& channels, int count, int n) const
{
    float level = 0.0f;
    for (int c = 0; c < count; ++c) {
        float peak = 0.0f;
        kernels::Peak(channels[static_cast<size_t>(c)], n, peak);
        level = std::max(level, peak);
    }
    return level;
}

// ---------------------------------------------------------------- inner process

void ZAudioPlugin::innerProcess(const ChannelArray& inputs, const ChannelArray& outputs, int n)
{
    // Once per host block, however many chunks it is taken in.
    if (!blockPrepared_) {
        PrepareForProcessingOnce(inputs.data(), outputs.data(), n);
        blockPrepared_ = true;
    }
    ChannelArray effectIn = inputs;
    ChannelArray effectOut = outputs;
    applyModeBefore(effectIn, effectOut, n);
    runPieces(effectIn, effectOut, n);
    applyModeAfter(effectIn, outputs, n);
}

int ZAudioPlugin::pieceLength(int n) const
{
    int piece = maxSubBlock_ > 0 ? maxSubBlock_ : kDefaultSubBlock;
    if (gliding_ && automationSubBlock_ < n && automationSubBlock_ <= piece)
        piece = automationSubBlock_;
    return piece < 1 ? kDefaultSubBlock : piece;
}

// The musical position moves on by every piece at the rate the effect runs at, the last
// one included, so that the next chunk of an over-long host block starts where this one
// ended.
void ZAudioPlugin::runPieces(ChannelArray inputs, ChannelArray outputs, int n)
{
    const int piece = pieceLength(n);
    const double processingRate = hostTime_.sampleRate * std::max(oversampling_, 1);
    const bool advancing = hostTime_.positionValid && processingRate > 0.0;
    const double start = hostTime_.musicalPosition;
    for (int done = 0; done < n;) {
        const int length = std::min(n - done, piece);
        ProcessSubBlock(inputs.data(), outputs.data(), length);
        done += length;
        if (advancing)
            hostTime_.musicalPosition = start + done * hostTime_.tempo / (processingRate * 60.0);
        if (done == n)
            break;
        parameters().advanceGlides(length);
        for (auto* pointers : {&inputs, &outputs})
            for (float*& channel : *pointers)
                if (channel != silence_.data() && channel != discard_.data())
                    channel += length;
    }
    if (gliding_)
        parameters().finishGlides();
    gliding_ = false;
}

// ---------------------------------------------------------------- channel modes

bool ZAudioPlugin::modeApplies(const ChannelArray& inputs, const ChannelArray& outputs, int bus) const
{
    const size_t first = static_cast<size_t>(bus * 2);
    return channelsPerBus_ == 2 && bus < inputChannels_ / channelsPerBus_ && inputs[first] != inputs[first + 1] &&
           outputs[first] != outputs[first + 1];
}

// The surround mode acts per bus like Left or Right when one of the two channels is
// enabled, passes both dry when none is, and like Stereo when both are.
int ZAudioPlugin::effectiveMode(int bus) const
{
    const int mode = static_cast<int>(channelMode_);
    if (channelMode_ != ZChannelMode::Surround)
        return mode;
    const bool first = (surroundMask_ >> (bus * 2)) & 1u;
    const bool second = (surroundMask_ >> (bus * 2 + 1)) & 1u;
    if (first && second)
        return static_cast<int>(ZChannelMode::Stereo);
    if (first)
        return static_cast<int>(ZChannelMode::Left);
    if (second)
        return static_cast<int>(ZChannelMode::Right);
    return static_cast<int>(ZChannelMode::Surround);
}

void ZAudioPlugin::applyModeBefore(ChannelArray& inputs, ChannelArray& outputs, int n)
{
    if (channelMode_ == ZChannelMode::Stereo)
        return;
    for (int bus = 0; bus < GetOutputBusCount(); ++bus) {
        if (!modeApplies(inputs, outputs, bus))
            continue;
        const size_t a = static_cast<size_t>(bus * 2);
        const size_t b = a + 1;
        const auto mode = static_cast<ZChannelMode>(effectiveMode(bus));
        if (mode == ZChannelMode::MidSide || mode == ZChannelMode::Side || mode == ZChannelMode::Mid) {
            float* mid = modeBuffers_[a].data();
            float* side = modeBuffers_[b].data();
            for (int s = 0; s < n; ++s) {
                mid[s] = inputs[a][s];
                side[s] = inputs[b][s];
                ToMidSide(mid[s], side[s]);
            }
            inputs[a] = mid;
            inputs[b] = side;
        } else if (mode == ZChannelMode::InvertedRight) {
            float* inverted = modeBuffers_[b].data();
            kernels::Copy(inputs[b], inverted, n);
            kernels::Multiply(inverted, -1.0f, n);
            inputs[b] = inverted;
        }
        if (mode == ZChannelMode::Right || mode == ZChannelMode::Side) {
            std::swap(inputs[a], inputs[b]);
            std::swap(outputs[a], outputs[b]);
        }
    }
}

void ZAudioPlugin::applyModeAfter(const ChannelArray& effectInputs, const ChannelArray& outputs, int n)
{
    if (channelMode_ == ZChannelMode::Stereo)
        return;
    for (int bus = 0; bus < GetOutputBusCount(); ++bus) {
        if (!modeApplies(effectInputs, outputs, bus))
            continue;
        const size_t a = static_cast<size_t>(bus * 2);
        const size_t b = a + 1;
        const auto mode = static_cast<ZChannelMode>(effectiveMode(bus));
        // The channel that bypasses the effect, in the pair as the effect saw it.
        const bool swapped = mode == ZChannelMode::Right || mode == ZChannelMode::Side;
        float* dryOut = swapped ? outputs[a] : outputs[b];
        const bool oneDry = mode == ZChannelMode::Left || mode == ZChannelMode::Right || mode == ZChannelMode::Side ||
                            mode == ZChannelMode::Mid;
        if (oneDry) {
            passThroughLines_[swapped ? a : b].process(effectInputs[b], dryOut, n);
            PassThroughChannel(dryOut, n, true);
        } else if (mode == ZChannelMode::Surround) {
            passThroughLines_[a].process(effectInputs[a], outputs[a], n);
            passThroughLines_[b].process(effectInputs[b], outputs[b], n);
            PassThroughChannel(outputs[a], n, false);
            PassThroughChannel(outputs[b], n, true);
        }
        if (mode == ZChannelMode::MidSide || mode == ZChannelMode::Side || mode == ZChannelMode::Mid)
            for (int s = 0; s < n; ++s)
                FromMidSide(outputs[a][s], outputs[b][s]);
    }
}

} // namespace halvern
