#include "modulation/level_follower.h"

#include "modulation/detector_math.h"

#include <algorithm>
#include <cmath>

namespace halvern {
namespace {

// With Maximize the loudest level sinks back at this rate, so a single loud moment does
// not squash the range for the rest of the song.
constexpr double kCeilingFallDbPerSecond = 3.0;
// The smallest range Maximize maps, so a level just above the threshold is not all-or-nothing.
constexpr double kMinimumMaximizeRangeDb = 1.0;

} // namespace

void ZLevelFollower::setSettings(const Settings& settings)
{
    // Times up to a minute, the band inside the audible range, levels from -120 to +24 dB.
    settings_ = settings;
    settings_.attack = std::clamp(settings.attack, 0.0, 60.0);
    settings_.release = std::clamp(settings.release, 0.0, 60.0);
    settings_.hold = std::clamp(settings.hold, 0.0, 60.0);
    settings_.rmsLength = std::clamp(settings.rmsLength, 0.0, 10.0);
    settings_.bandMinimum = std::clamp(settings.bandMinimum, 10.0, 20000.0);
    settings_.bandMaximum = std::clamp(settings.bandMaximum, 10.0, 20000.0);
    settings_.bandQ = std::clamp(settings.bandQ, 0.1, 20.0);
    settings_.levelMin = std::clamp(settings.levelMin, -120.0, 24.0);
    settings_.levelMax = std::clamp(settings.levelMax, -120.0, 24.0);
    settings_.threshold = std::clamp(settings.threshold, -120.0, 24.0);
    settings_.mode = static_cast<ZLFOFollowerMode>(std::clamp(static_cast<int>(settings.mode), 0, 3));
    updateCoefficients();
}

void ZLevelFollower::prepare(double sampleRate, int /*maxBlockSize*/)
{
    sampleRate_ = sampleRate;
    updateCoefficients();
    reset();
}

void ZLevelFollower::reset()
{
    for (int c = 0; c < kMaxChannels; ++c) {
        highPass_[static_cast<size_t>(c)].reset();
        lowPass_[static_cast<size_t>(c)].reset();
    }
    meanSquare_ = 0.0;
    peak_ = 0.0;
    holdLeft_ = 0;
    envelope_ = 0.0;
    ceiling_ = 0.0;
}

void ZLevelFollower::updateCoefficients()
{
    attackWeight_ = onePoleWeight(settings_.attack, 1.0, sampleRate_);
    releaseWeight_ = onePoleWeight(settings_.release, 1.0, sampleRate_);
    rmsWeight_ = onePoleWeight(settings_.rmsLength, 1.0, sampleRate_);
    holdSamples_ = static_cast<int>(std::lround(std::max(settings_.hold, 0.0) * sampleRate_));
    const auto highPass = ZBiquad::design(ZBiquad::Type::HighPass, sampleRate_, settings_.bandMinimum, settings_.bandQ);
    const auto lowPass = ZBiquad::design(ZBiquad::Type::LowPass, sampleRate_, settings_.bandMaximum, settings_.bandQ);
    for (int c = 0; c < kMaxChannels; ++c) {
        highPass_[static_cast<size_t>(c)].setCoefficients(highPass);
        lowPass_[static_cast<size_t>(c)].setCoefficients(lowPass);
    }
}

double ZLevelFollower::process(const float* const* channels, int channelCount, int n)
{
    const int count = std::min(channelCount, kMaxChannels);
    for (int i = 0; i < n; ++i) {
        const double power = loudestPower(channels, count, i);
        meanSquare_ += rmsWeight_ * (power + kAntiDenormal - meanSquare_);
        const double peak = followPeak(std::sqrt(meanSquare_));
        envelope_ = peak < envelope_ ? peak : envelope_ + attackWeight_ * (peak - envelope_);
    }
    const double fall = decibelsToAmplitude(-kCeilingFallDbPerSecond * n / sampleRate_);
    ceiling_ = std::max(envelope_, ceiling_ * fall);
    return toDetectorValue(envelope_);
}

double ZLevelFollower::loudestPower(const float* const* channels, int channelCount, int i)
{
    double power = 0.0;
    for (int c = 0; c < channelCount; ++c) {
        double x = channels[c][i];
        if (settings_.bandPass)
            x = lowPass_[static_cast<size_t>(c)].process(highPass_[static_cast<size_t>(c)].process(x));
        power = std::max(power, x * x);
    }
    return power;
}

// A new peak is taken at once and kept for the hold time, then sinks at the release
// rate, never below the present level. Between a waveform's peaks it barely sinks, so
// the attack smoothing after it sees the tone's level rather than its ripple, and the
// set attack and release times hold for tones as for steps.
double ZLevelFollower::followPeak(double amplitude)
{
    if (amplitude >= peak_) {
        peak_ = amplitude;
        holdLeft_ = holdSamples_;
    } else if (holdLeft_ > 0) {
        --holdLeft_;
    } else {
        peak_ = std::max(amplitude, peak_ * (1.0 - releaseWeight_));
    }
    return peak_;
}

double ZLevelFollower::toDetectorValue(double amplitude) const
{
    if (settings_.mode == ZLFOFollowerMode::Direct)
        return std::clamp(amplitude, 0.0, 1.0);
    double lowDb = settings_.levelMin;
    double highDb = settings_.levelMax;
    if (settings_.maximize) {
        lowDb = settings_.threshold;
        highDb = std::max(amplitudeToDecibels(ceiling_), lowDb + kMinimumMaximizeRangeDb);
    }
    const double low = decibelsToAmplitude(lowDb);
    const double high = decibelsToAmplitude(highDb);
    switch (settings_.mode) {
    case ZLFOFollowerMode::Linear:
        return normalisedInRange(amplitude, low, high);
    case ZLFOFollowerMode::Squared:
        return normalisedInRange(amplitude * amplitude, low * low, high * high);
    case ZLFOFollowerMode::Logarithmic:
    case ZLFOFollowerMode::Direct:
        break;
    }
    return normalisedInRange(amplitudeToDecibels(amplitude), lowDb, highDb);
}

} // namespace halvern
