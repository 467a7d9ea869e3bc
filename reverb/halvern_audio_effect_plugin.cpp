#include "reverb/halvern_audio_effect_plugin.h"

#include "core/z_format.h"
#include "state/serialization_context.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace halvern {
namespace {

constexpr double kSaturationFloor = 1e-5;
// The reported ringing is the time to fall this far below the response's peak, and
// never more than the longest (a loop held exactly at unity would ring for ever).
constexpr double kRingingFallDb = 120.0;
constexpr double kLongestRingingSeconds = 600.0;
// The early-reflection work buffers hold at most this many samples; longer runs are
// processed in parts.
constexpr int kMaxWorkLength = 4096;

// Input samples are limited to +100 dBFS, far above any real signal, so that no gain
// inside the reverb (widening, equalizer boosts, the late network's sum) can carry a
// wet sample past the float range and poison a filter's state; non-finite ones are
// silence.
constexpr float kInputLimit = 1e5f;
// The analyser's ring holds this long a stretch of the reverberation (and two blocks at least).
constexpr double kWetRingSeconds = 0.5;

float boundedInput(float x)
{
    return std::isfinite(x) ? std::clamp(x, -kInputLimit, kInputLimit) : 0.0f;
}

double readPosition(const ZMLElement& element, const char* name, double fallback)
{
    double value = fallback;
    const std::string* text = element.findAttribute(name);
    if (text != nullptr && ZParseNumber(*text, value))
        return std::clamp(value, 0.0, 1.0);
    return fallback;
}

} // namespace

// ---------------------------------------------------------------- position automation

HalvernAudioEffectPlugin::ReverbPosAutomationAdapterType::ReverbPosAutomationAdapterType(HalvernAudioEffectPlugin& plugin)
    : plugin_(plugin),
      x_(&plugin.positions_.sourceX, 0.0, 1.0, 0.5, 0.01, "{0;.6}"),
      y_(&plugin.positions_.sourceY, 0.0, 1.0, 0.5, 0.01, "{0;.6}")
{
}

double HalvernAudioEffectPlugin::ReverbPosAutomationAdapterType::GetValue(int index) const
{
    return index == 0 ? plugin_.positions_.sourceX : plugin_.positions_.sourceY;
}

void HalvernAudioEffectPlugin::ReverbPosAutomationAdapterType::SetValue(int index, double value, bool suppressNotification)
{
    (index == 0 ? x_ : y_).setNormalized(value);
    if (suppressNotification)
        return;
    plugin_.Update();
    SendAutomationValue(index);
}

std::string HalvernAudioEffectPlugin::ReverbPosAutomationAdapterType::GetValueText(int index) const
{
    return (index == 0 ? x_ : y_).getDisplayText();
}

void HalvernAudioEffectPlugin::ReverbPosAutomationAdapterType::RegisterWith(ZAudioPlugin& core)
{
    // The positions are stored in the effect's "Position" element, not as parameters.
    Register(core, {{{"PositionX", ValueName(0), "", ZParameterType::Float, "", true, false}, &x_},
                    {{"PositionY", ValueName(1), "", ZParameterType::Float, "", true, false}, &y_}});
}

bool HalvernAudioEffectPlugin::ReverbPosAutomationAdapterType::takeChanges()
{
    const bool changed = x_.isChanged() || y_.isChanged();
    x_.clearChanged();
    y_.clearChanged();
    return changed;
}

// ---------------------------------------------------------------- the effect

HalvernAudioEffectPlugin::HalvernAudioEffectPlugin() : parameters_(equalizer_), positionAutomation_(*this) {}

HalvernAudioEffectPlugin::~HalvernAudioEffectPlugin() = default;

void HalvernAudioEffectPlugin::RegisterParameters(ZAudioPlugin& core)
{
    parameters_.registerWith(core.parameters());
    positionAutomation_.RegisterWith(core);
}

bool HalvernAudioEffectPlugin::TakeParameterChanges()
{
    const bool parameters = parameters_.takeChanges();
    const bool positions = positionAutomation_.takeChanges();
    return parameters || positions;
}

int32_t HalvernAudioEffectPlugin::GetProcessingFlags()
{
    // The dry input is added at the end of the block, so it must survive the reverb.
    return kFlagNeedsSeparateInputs;
}

// Whole seconds of reverb time (0.5 s gives none) times the rounded rate, plus 4096.
int32_t HalvernAudioEffectPlugin::GetTailLength()
{
    const double seconds = std::trunc(settings().reverbTime);
    const double rate = std::floor(sampleRate() + 0.5);
    return static_cast<int32_t>(seconds * rate) + 4096;
}

// Derived from the last update's coefficients when a host asks, so that updates on the
// audio thread (a modulator moving a parameter every piece) never pay for it.
int32_t HalvernAudioEffectPlugin::GetRingingLength()
{
    ZLockHolder hold(pluginMutex(), -1);
    const double rate = sampleRate();
    if (!prepared_ || rate <= 0.0)
        return 0;
    // The early reflections feed the late network, so their ringing times add. The post
    // chain only shapes or shortens the tail; the equalizer's filters ring for milliseconds.
    const double seconds = EarlyRingingSeconds(geometry_, rate, kRingingFallDb) + late_.ringingSeconds(kRingingFallDb);
    return static_cast<int32_t>(std::min(seconds, kLongestRingingSeconds) * rate);
}

void HalvernAudioEffectPlugin::SetMicrophonePosition(double x, double y)
{
    ZLockHolder hold(pluginMutex(), -1);
    positions_.microphoneX = std::clamp(x, 0.0, 1.0);
    positions_.microphoneY = std::clamp(y, 0.0, 1.0);
    updateUnlocked();
}

std::vector<ZRoomOutline::Point> HalvernAudioEffectPlugin::RoomOutline()
{
    ZLockHolder hold(pluginMutex(), -1);
    return ZRoomOutline::Read(positionGraph_.get());
}

void HalvernAudioEffectPlugin::SetRoomOutline(const std::vector<ZRoomOutline::Point>& points)
{
    auto graph = std::make_unique<ZMLElement>("graph");
    ZRoomOutline::Write(points, *graph);
    ZLockHolder hold(pluginMutex(), -1);
    positionGraph_ = std::move(graph);
}

void HalvernAudioEffectPlugin::Prepare(double sampleRate, int32_t maxBlockSize)
{
    ZLockHolder hold(pluginMutex(), -1);
    ZAudioEffectPlugin::Prepare(sampleRate, maxBlockSize);
    early_.prepare(sampleRate);
    late_.prepare(sampleRate);
    const size_t workLength = static_cast<size_t>(std::clamp(maxBlockSize, 1, kMaxWorkLength));
    earlyLeft_.assign(workLength, 0.0);
    earlyRight_.assign(workLength, 0.0);
    equalizer_.prepare(sampleRate);
    {
        ZLockHolder reader(wetReader_, -1);
        wetSamples_.resize(static_cast<size_t>(std::max(kWetRingSeconds * sampleRate, 2.0 * maxBlockSize)));
    }
    prepared_ = sampleRate > 0.0;
    updateUnlocked();
    Reset();
}

void HalvernAudioEffectPlugin::Reset()
{
    ZLockHolder hold(pluginMutex(), -1);
    early_.reset();
    late_.reset();
    equalizer_.reset();
    gate_.reset();
}

void HalvernAudioEffectPlugin::Update()
{
    ZLockHolder hold(pluginMutex(), -1);
    updateUnlocked();
}

void HalvernAudioEffectPlugin::updateUnlocked()
{
    const double rate = sampleRate();
    if (!prepared_ || rate <= 0.0)
        return;
    const ZReverbSettings& s = settings();
    primes_.clearUsed();

    ZRoomInputs room;
    room.size = s.size;
    room.width = s.width;
    room.predelay = s.predelay;
    room.diffusion = s.diffusion;
    room.sourceX = positions_.sourceX;
    room.sourceY = positions_.sourceY;
    room.microphoneX = positions_.microphoneX;
    room.microphoneY = positions_.microphoneY;
    room.sampleRate = rate;
    geometry_ = ComputeRoomGeometry(room, primes_);
    early_.configure(geometry_, {s.lowDamp, s.lowFreq, s.highDamp, s.highFreq}, rate);

    ZLateReverbNetwork::Settings late;
    late.size = s.size;
    late.width = s.width;
    late.reverbTime = s.reverbTime;
    late.reverbDiffusion = s.reverbDiffusion;
    late.mode = s.reverbMode;
    late.lowDamp = s.lowDamp;
    late.lowFrequency = s.lowFreq;
    late.highDamp = s.highDamp;
    late.highFrequency = s.highFreq;
    late.modulation = s.modulation;
    late.modulationFrequency = s.modulationFrequency;
    late.pan = geometry_.pan;
    late.stereoOffset = geometry_.stereoOffset;
    late.sampleRate = rate;
    late_.update(late, primes_);

    mix_ = ComputeReverbMix(s.dryWet, s.earlyLate, s.widening, geometry_.pan);
    equalizer_.update();
    saturation_.setMode(s.saturationMode);
    gateActive_ = s.gateEnabled != 0;
    gate_.configure(rate, s.threshold, s.gateSize, s.attack, s.release);
}

void HalvernAudioEffectPlugin::Process(const ZHostTimeInfo*, float* const* inputs, float* const* outputs, int32_t n)
{
    ZLockHolder hold(pluginMutex(), -1);
    if (!prepared_ || n <= 0 || outputs == nullptr || outputs[0] == nullptr || outputs[1] == nullptr)
        return;
    const float* inLeft = inputs != nullptr && inputs[0] != nullptr ? inputs[0] : nullptr;
    const float* inRight = inputs != nullptr && inputs[1] != nullptr ? inputs[1] : inLeft;
    float* outLeft = outputs[0];
    float* outRight = outputs[1];
    if (inLeft == nullptr) {
        std::fill(outLeft, outLeft + n, 0.0f);
        std::fill(outRight, outRight + n, 0.0f);
        return;
    }
    // Runs longer than the work buffers are taken in parts.
    const int capacity = static_cast<int>(earlyLeft_.size());
    for (int done = 0; done < n; done += capacity) {
        const int length = std::min(n - done, capacity);
        renderReverb(inLeft + done, inRight + done, outLeft + done, outRight + done, length);
    }
    equalizer_.process(outLeft, outRight, n);
    const double s = settings().saturation;
    if (s > kSaturationFloor)
        saturation_.process(outLeft, outRight, n, s);
    if (gateActive_)
        gate_.process(outLeft, outRight, n);
    if (wetAnalysis_.load(std::memory_order_relaxed))
        wetSamples_.write(n, [outLeft, outRight](int i) { return 0.5f * (outLeft[i] + outRight[i]); });
    addDry(inLeft, inRight, outLeft, outRight, n);
}

// Early reflections into the work buffers first, then the late network reading them,
// summed with their gains and widened. Two passes keep each stage's state in registers.
void HalvernAudioEffectPlugin::renderReverb(const float* inLeft, const float* inRight, float* outLeft, float* outRight, int n)
{
    double* earlyLeft = earlyLeft_.data();
    double* earlyRight = earlyRight_.data();
    for (int i = 0; i < n; ++i)
        early_.process(boundedInput(inLeft[i]), boundedInput(inRight[i]), earlyLeft[i], earlyRight[i]);
    for (int i = 0; i < n; ++i) {
        double lateLeft = 0.0, lateRight = 0.0;
        late_.process(earlyLeft[i], earlyRight[i], lateLeft, lateRight);
        const double left = mix_.late * lateLeft + mix_.early * earlyLeft[i];
        const double right = mix_.late * lateRight + mix_.early * earlyRight[i];
        outLeft[i] = static_cast<float>(mix_.direct * left + mix_.cross * right);
        outRight[i] = static_cast<float>(mix_.direct * right + mix_.cross * left);
    }
}

// The dry input, panned by the source position: a source left of the microphone leans
// the dry signal to the left.
void HalvernAudioEffectPlugin::addDry(const float* inLeft, const float* inRight, float* outLeft, float* outRight, int n) const
{
    const double p = mix_.pan;
    const double g = mix_.dry;
    if (std::isnan(p))
        return;
    for (int i = 0; i < n; ++i) {
        const double left = boundedInput(inLeft[i]);
        const double right = boundedInput(inRight[i]);
        if (p < 0.0) {
            outLeft[i] = static_cast<float>(outLeft[i] + g * left + (-p) * g * right);
            outRight[i] = static_cast<float>(outRight[i] + (1.0 + p) * g * right);
        } else {
            outLeft[i] = static_cast<float>(outLeft[i] + (1.0 - p) * g * left);
            outRight[i] = static_cast<float>(outRight[i] + p * g * left + g * right);
        }
    }
}

// ---------------------------------------------------------------- equalizer and analysis

ZEqualizerProcessorPlugin::Bands HalvernAudioEffectPlugin::EqualizerBands()
{
    ZLockHolder hold(pluginMutex(), -1);
    return equalizer_.bands();
}

void HalvernAudioEffectPlugin::SetEqualizerBand(int index, const ZEqualizerBand& band)
{
    if (index < 0 || index >= ZEqualizerProcessorPlugin::kBandCount)
        return;
    ZLockHolder hold(pluginMutex(), -1);
    equalizer_.bands()[static_cast<size_t>(index)] = ZEqualizerProcessorPlugin::LimitBand(band);
    equalizer_.update();
}

ZEqualizerResponse HalvernAudioEffectPlugin::EqualizerResponse()
{
    ZLockHolder hold(pluginMutex(), -1);
    return equalizer_.response();
}

size_t HalvernAudioEffectPlugin::ReadWetSamples(float* out, size_t maxCount)
{
    ZLockHolder hold(wetReader_, -1);
    return wetSamples_.read(out, maxCount);
}

// ---------------------------------------------------------------- state

void HalvernAudioEffectPlugin::SerializeAdditionalState(const ZSerializationContext& context)
{
    ZLockHolder hold(pluginMutex(), -1);
    if (context.storing()) {
        serializePositions(context);
        if (positionGraph_)
            context.element().addCopy(*positionGraph_);
        else
            context.element().addChild("graph");
        serializeEqualizerBands(context);
        return;
    }
    serializePositions(context);
    const ZMLElement* graph = context.element().findChild("graph");
    positionGraph_ = graph != nullptr ? graph->clone() : nullptr;
    serializeEqualizerBands(context);
    updateUnlocked();
}

// Positions are written with six decimals, always, so the editor's placement reads the
// same in every document; a read position is limited to the floor plan.
void HalvernAudioEffectPlugin::serializePositions(const ZSerializationContext& context)
{
    static constexpr std::array<const char*, 4> kNames = {"SourceX", "SourceY", "MicrophoneX", "MicrophoneY"};
    const Positions defaults;
    const std::array<double*, 4> fields = {&positions_.sourceX, &positions_.sourceY, &positions_.microphoneX,
                                           &positions_.microphoneY};
    const std::array<double, 4> fallbacks = {defaults.sourceX, defaults.sourceY, defaults.microphoneX,
                                             defaults.microphoneY};
    ZMLElement* position = context.child("Position");
    for (size_t i = 0; i < kNames.size(); ++i) {
        if (context.storing())
            position->setAttribute(kNames[i], ZFormatFixed(*fields[i], 6));
        else
            *fields[i] = position != nullptr ? readPosition(*position, kNames[i], fallbacks[i]) : fallbacks[i];
    }
}

void HalvernAudioEffectPlugin::serializeEqualizerBands(const ZSerializationContext& context)
{
    static constexpr std::array<const char*, ZEqualizerProcessorPlugin::kBandCount> kNames = {"LowShelf", "Peak",
                                                                                            "HighShelf"};
    const ZEqualizerProcessorPlugin::Bands defaults = ZEqualizerProcessorPlugin::DefaultBands();
    ZEqualizerProcessorPlugin::Bands& bands = equalizer_.bands();
    context.section("Equalizer", [&](const ZSerializationContext& equalizer) {
        for (size_t i = 0; i < bands.size(); ++i)
            equalizer.section(kNames[i], [&](const ZSerializationContext& band) {
                band.item("Enabled", bands[i].enabled, defaults[i].enabled);
                band.item("Frequency", bands[i].frequency, defaults[i].frequency);
                band.item("Gain", bands[i].gainDb, defaults[i].gainDb);
                band.item("Q", bands[i].q, defaults[i].q);
                if (band.reading())
                    bands[i] = ZEqualizerProcessorPlugin::LimitBand(bands[i]);
            });
    });
}

} // namespace halvern
