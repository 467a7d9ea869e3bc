#include "modulation/envelope_generator.h"

#include "modulation/detector_math.h"

#include <algorithm>

namespace halvern {
namespace {

// The change per sample of a straight segment covering `span` in `seconds`; a zero time
// jumps in one sample.
double slope(double span, double seconds, double sampleRate)
{
    return span / std::max(seconds * sampleRate, 1.0);
}

} // namespace

void ZEnvelopeGenerator::setSettings(const Settings& settings)
{
    settings_ = settings;
    settings_.attack = std::clamp(settings.attack, 0.0, 60.0);
    settings_.decay = std::clamp(settings.decay, 0.0, 60.0);
    settings_.release = std::clamp(settings.release, 0.0, 60.0);
    settings_.rmsLength = std::clamp(settings.rmsLength, 0.0, 10.0);
    settings_.thresholdOn = std::clamp(settings.thresholdOn, -120.0, 24.0);
    settings_.thresholdOff = std::clamp(settings.thresholdOff, -120.0, 24.0);
    settings_.sustain = std::clamp(settings_.sustain, 0.0, 1.0);
    settings_.thresholdOff = std::min(settings_.thresholdOff, settings_.thresholdOn);
    updateCoefficients();
}

void ZEnvelopeGenerator::prepare(double sampleRate, int /*maxBlockSize*/)
{
    sampleRate_ = sampleRate;
    updateCoefficients();
    reset();
}

void ZEnvelopeGenerator::reset()
{
    stage_ = Stage::Idle;
    level_ = 0.0;
    releaseStep_ = 0.0;
    heldNotes_ = 0;
    meanSquare_ = 0.0;
    gateOpen_ = false;
}

void ZEnvelopeGenerator::updateCoefficients()
{
    rmsWeight_ = onePoleWeight(settings_.rmsLength, 1.0, sampleRate_);
    const double on = decibelsToAmplitude(settings_.thresholdOn);
    const double off = decibelsToAmplitude(settings_.thresholdOff);
    onPower_ = on * on;
    offPower_ = off * off;
}

void ZEnvelopeGenerator::noteOn()
{
    if (++heldNotes_ == 1 && settings_.mode == ZLFOEnvelopeMode::Midi)
        start();
}

void ZEnvelopeGenerator::noteOff()
{
    if (heldNotes_ == 0)
        return;
    if (--heldNotes_ == 0 && settings_.mode == ZLFOEnvelopeMode::Midi)
        release();
}

// The release runs straight from wherever the envelope is, reaching 0 in the release time.
void ZEnvelopeGenerator::release()
{
    if (stage_ == Stage::Idle)
        return;
    stage_ = Stage::Release;
    releaseStep_ = slope(level_, settings_.release, sampleRate_);
}

double ZEnvelopeGenerator::process(const float* const* channels, int channelCount, int n)
{
    const bool audio = settings_.mode == ZLFOEnvelopeMode::Audio;
    for (int i = 0; i < n; ++i) {
        if (audio)
            followInput(channels, channelCount, i);
        step();
    }
    return level_;
}

// The gate opens when the RMS reaches Threshold On and closes below Threshold Off; the
// gap between them keeps a level hovering near one threshold from retriggering.
void ZEnvelopeGenerator::followInput(const float* const* channels, int channelCount, int i)
{
    double power = 0.0;
    for (int c = 0; c < channelCount; ++c)
        power = std::max(power, static_cast<double>(channels[c][i]) * channels[c][i]);
    meanSquare_ += rmsWeight_ * (power + kAntiDenormal - meanSquare_);
    if (!gateOpen_ && meanSquare_ >= onPower_) {
        gateOpen_ = true;
        start();
    } else if (gateOpen_ && meanSquare_ < offPower_) {
        gateOpen_ = false;
        release();
    }
}

// Straight segments: a restart climbs from the current level, so it never jumps.
void ZEnvelopeGenerator::step()
{
    switch (stage_) {
    case Stage::Attack:
        level_ += slope(1.0, settings_.attack, sampleRate_);
        if (level_ >= 1.0) {
            level_ = 1.0;
            stage_ = Stage::Decay;
        }
        break;
    case Stage::Decay:
        level_ -= slope(1.0 - settings_.sustain, settings_.decay, sampleRate_);
        if (level_ <= settings_.sustain) {
            level_ = settings_.sustain;
            stage_ = Stage::Sustain;
        }
        break;
    case Stage::Release:
        level_ -= releaseStep_;
        if (level_ <= 0.0) {
            level_ = 0.0;
            stage_ = Stage::Idle;
        }
        break;
    case Stage::Idle:
    case Stage::Sustain:
        break;
    }
}

} // namespace halvern
