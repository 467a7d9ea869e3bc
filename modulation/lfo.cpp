#include "modulation/lfo.h"

#include "core/audio_plugin.h"
#include "core/value_displays.h"
#include "core/z_format.h"

#include <algorithm>
#include <cmath>

namespace halvern {
namespace {

double wrapPhase(double phase)
{
    return phase - std::floor(phase);
}

} // namespace

ZLFO::ZLFO(ZLock& processingLock, ZModulatorTarget firstTarget, int number)
    : number_(number),
      enabledValue_(&settings_.enabled, 0, 1, 0, 1),
      frequencyValue_(&settings_.frequency, kMinFrequency, kMaxFrequency, 1.0, 0.01),
      frequencyTaper_(frequencyValue_),
      amountValue_(&settings_.lfoAmount, 0.0, 1.0, 0.0, 0.01),
      targets_(processingLock, firstTarget),
      processingLock_(processingLock)
{
    enabledValue_.setFormatter(FormatOnOff);
    frequencyValue_.setFormatter([](double hz) { return FormatFrequency(hz); });
    amountValue_.setFormatter([](double fraction) { return FormatPercent(fraction); });
    amountValue_.setParser([](std::string_view text, double& fraction) { return ParsePercent(text, fraction); });
    // Each LFO has its own random sequence.
    ZRandomModulator::Settings randomSettings = random_.settings();
    randomSettings.seed = static_cast<uint32_t>(number);
    random_.setSettings(randomSettings);
}

void ZLFO::setShape(const ZSignalGenerator& shape)
{
    ZLockHolder hold(processingLock_, -1);
    shape_ = shape;
}

void ZLFO::setSettings(const ZLFOSettings& settings)
{
    const ZLFOSettings limited = limit(settings);
    ZLockHolder hold(processingLock_, -1);
    if (settings_.enabled != 0 && limited.enabled == 0)
        manualStop_ = true;
    settings_ = limited;
}

// A load is no stop: the backup of the values before it belongs to the replaced state,
// so it is dropped, and a loaded LFO that runs backs up the loaded values afresh.
void ZLFO::loadSettings(const ZLFOSettings& settings)
{
    const ZLFOSettings limited = limit(settings);
    ZLockHolder hold(processingLock_, -1);
    settings_ = limited;
    running_ = false;
    manualStop_ = false;
}

ZLFOSettings ZLFO::limit(const ZLFOSettings& settings)
{
    ZLFOSettings limited = settings;
    limited.enabled = settings.enabled != 0 ? 1 : 0;
    limited.mode = std::clamp(settings.mode, 0, static_cast<int32_t>(ZLFOMode::Pitch));
    limited.frequency = std::isfinite(settings.frequency) ? std::clamp(settings.frequency, kMinFrequency, kMaxFrequency) : 1.0;
    limited.phase = std::isfinite(settings.phase) ? wrapPhase(settings.phase) : 0.0;
    limited.lfoAmount = std::isfinite(settings.lfoAmount) ? std::clamp(settings.lfoAmount, 0.0, 1.0) : 0.0;
    limited.syncGroup = std::clamp(settings.syncGroup, 0, kSyncGroups);
    limited.projectPhase = std::isfinite(settings.projectPhase) ? wrapPhase(settings.projectPhase) : 0.75;
    limited.projectInterval = std::isfinite(settings.projectInterval) ? std::clamp(settings.projectInterval, -4.0, 4.0) : 1.0;
    limited.minFrequency = std::isfinite(settings.minFrequency) ? std::clamp(settings.minFrequency, 1.0, 100000.0) : 55.0;
    limited.maxFrequency = std::isfinite(settings.maxFrequency) ? std::clamp(settings.maxFrequency, 1.0, 100000.0) : 1760.0;
    limited.octaves = std::isfinite(settings.octaves) ? std::clamp(settings.octaves, -10.0, 10.0) : 0.0;
    limited.semitones = std::isfinite(settings.semitones) ? std::clamp(settings.semitones, -12.0, 12.0) : 0.0;
    limited.cents = std::isfinite(settings.cents) ? std::clamp(settings.cents, -100.0, 100.0) : 0.0;
    return limited;
}

void ZLFO::setEnabledByUser(bool enabled)
{
    ZLFOSettings next = settings_;
    next.enabled = enabled ? 1 : 0;
    setSettings(next);
}

void ZLFO::prepare(double sampleRate, int maxBlock)
{
    ZLockHolder hold(processingLock_, -1);
    follower_.prepare(sampleRate, maxBlock);
    envelope_.prepare(sampleRate, maxBlock);
    pitch_.prepare(sampleRate, maxBlock);
    reset();
}

void ZLFO::reset()
{
    phase_ = wrapPhase(settings_.phase);
    detector_ = 0.0;
    output_ = 0.0;
    follower_.reset();
    envelope_.reset();
    pitch_.reset();
    autoTune_.reset();
}

void ZLFO::followEnableSwitch(ZParameterRegistry& registry)
{
    const bool on = enabled();
    if (on && !running_) {
        targets_.backupValues(registry);
        running_ = true;
    } else if (!on && running_) {
        if (manualStop_ || settings_.restoreWhenDisabled)
            targets_.restoreValues(registry);
        running_ = false;
    }
    manualStop_ = false;
}

// With "Sync" the phase follows the song: the position in quarter notes, at the LFO's
// rate measured at the current tempo, plus "Phase" as the offset.
void ZLFO::syncToHost(const ZLFOInput& input, double rate)
{
    const ZHostTimeInfo& time = *input.time;
    if (time.tempo > 0.0)
        phase_ = wrapPhase(time.musicalPosition * rate * 60.0 / time.tempo + settings_.phase);
}

double ZLFO::process(const ZLFOInput& input)
{
    const double output = computeOutput(input);
    shownPhase_.store(phase_, std::memory_order_relaxed);
    shownOutput_.store(output, std::memory_order_relaxed);
    return output;
}

double ZLFO::computeOutput(const ZLFOInput& input)
{
    const double rate = settings_.frequency * (settings_.highSpeed ? 10.0 : 1.0);
    if (settings_.sync && input.time != nullptr && input.time->positionValid)
        syncToHost(input, rate);
    const double lfo = shape_.shape(phase_);
    if (input.sampleRate > 0.0)
        phase_ = wrapPhase(phase_ + input.sampleCount * rate / input.sampleRate);

    const auto mode = static_cast<ZLFOMode>(settings_.mode);
    if (mode == ZLFOMode::Normal) {
        output_ = lfo;
        return output_;
    }
    detector_ = detect(input);
    const double y = mode == ZLFOMode::Pitch ? 2.0 * detector_ - 1.0 : fromDetector(detector_);
    const double a = settings_.lfoAmount;
    output_ = y * (1.0 - a) + a * lfo;
    return output_;
}

double ZLFO::detect(const ZLFOInput& input)
{
    const auto mode = static_cast<ZLFOMode>(settings_.mode);
    switch (mode) {
    case ZLFOMode::Envelope:
        return follower_.process(input.channels, input.channelCount, input.sampleCount);
    case ZLFOMode::MidiEnvelope:
        return envelope_.process(input.channels, input.channelCount, input.sampleCount);
    case ZLFOMode::Random: {
        static const ZHostTimeInfo noTime;
        const ZHostTimeInfo& time = input.time != nullptr ? *input.time : noTime;
        return random_.process(time.musicalPosition, time.tempo, time.positionValid, input.sampleCount, input.sampleRate);
    }
    case ZLFOMode::Pitch: {
        double frequency = pitch_.process(input.channels, input.channelCount, input.sampleCount);
        if (settings_.autoTune && frequency > 0.0)
            frequency = autoTune_.process(frequency, input.sampleCount, input.sampleRate);
        return PitchToDetectorValue(frequency, settings_.octaves, settings_.semitones, settings_.cents,
                                    settings_.minFrequency, settings_.maxFrequency, detector_);
    }
    case ZLFOMode::Normal:
        break;
    }
    return detector_;
}

// Projection reads the shape at d * Interval + Phase (the default 75 % is where sine
// and triangle are lowest, so a rising d climbs towards the peak); otherwise y = 2d - 1,
// limited to [-1, 1], and in Random mode only at its upper end.
double ZLFO::fromDetector(double d) const
{
    if (settings_.project)
        return shape_.shape(d * settings_.projectInterval + settings_.projectPhase);
    const double y = 2.0 * d - 1.0;
    if (static_cast<ZLFOMode>(settings_.mode) == ZLFOMode::Random)
        return std::min(y, 1.0);
    return std::clamp(y, -1.0, 1.0);
}

} // namespace halvern
