#include "reverb/equalizer_processor.h"

#include "core/value_displays.h"
#include "core/z_format.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace halvern {

namespace {

constexpr double kLowestCut = 1.3010299956639813; // log10 of 20 Hz
constexpr double kHighestCut = 4.301029995663981; // log10 of 20 kHz
// A cut counts as at its end of the range (and is switched off) within this distance in
// log10 Hz, so that a value that went through text storage still bypasses exactly.
constexpr double kEndTolerance = 1e-9;
constexpr double kCutIncrement = 0.01;
// Butterworth: the cuts fall 3 dB at their frequency and 12 dB per octave beyond.
constexpr double kButterworthQ = 0.7071067811865476;
// The highest frequency a filter is designed for, as a fraction of the sample rate; a
// high cut above it has nothing left to cut and is switched off.
constexpr double kNyquistFraction = 0.4999;

void showAsFrequency(ZValueDouble& value)
{
    value.setFormatter(FormatLogFrequency);
    value.setParser(ParseLogFrequency);
}

ZBiquad::Type bandType(int band)
{
    constexpr ZBiquad::Type kTypes[] = {ZBiquad::Type::LowShelf, ZBiquad::Type::Peak, ZBiquad::Type::HighShelf};
    return kTypes[band];
}

} // namespace

ZEqualizerProcessorPlugin::ZEqualizerProcessorPlugin()
    : lowCut_(kLowestCut),
      highCut_(kHighestCut),
      lowCutValue_(&lowCut_, kLowestCut, kHighestCut, kLowestCut, kCutIncrement),
      highCutValue_(&highCut_, kLowestCut, kHighestCut, kHighestCut, kCutIncrement)
{
    showAsFrequency(lowCutValue_);
    showAsFrequency(highCutValue_);
    bands_ = DefaultBands();
}

ZEqualizerProcessorPlugin::Bands ZEqualizerProcessorPlugin::DefaultBands()
{
    Bands bands;
    bands[kLowShelf].frequency = 100.0;
    bands[kPeak].frequency = 1000.0;
    bands[kHighShelf].frequency = 8000.0;
    return bands;
}

ZEqualizerBand ZEqualizerProcessorPlugin::LimitBand(ZEqualizerBand band)
{
    band.frequency = std::clamp(band.frequency, 20.0, 20000.0);
    band.gainDb = std::clamp(band.gainDb, -24.0, 24.0);
    band.q = std::clamp(band.q, 0.1, 10.0);
    return band;
}

const char* ZEqualizerProcessorPlugin::lowCutHelp()
{
    return "<name>Low cut</name> removes the reverberation below this frequency, 12 dB per octave. "
           "At 20 Hz it is off.";
}

const char* ZEqualizerProcessorPlugin::highCutHelp()
{
    return "<name>High cut</name> removes the reverberation above this frequency, 12 dB per octave. "
           "At 20 kHz it is off.";
}

void ZEqualizerProcessorPlugin::prepare(double sampleRate)
{
    sampleRate_ = sampleRate;
    update();
    reset();
}

void ZEqualizerProcessorPlugin::update()
{
    if (sampleRate_ <= 0.0)
        return;
    updateCuts();
    updateBands();
    collectActiveStages();
}

void ZEqualizerProcessorPlugin::updateCuts()
{
    const double lowHertz = std::pow(10.0, lowCut_);
    const double highHertz = std::pow(10.0, highCut_);
    const bool lowActive = lowCut_ > kLowestCut + kEndTolerance;
    const bool highActive = highCut_ < kHighestCut - kEndTolerance && highHertz < kNyquistFraction * sampleRate_;
    setStage(kLowCutStage, lowActive, ZBiquad::design(ZBiquad::Type::HighPass, sampleRate_, lowHertz, kButterworthQ));
    setStage(kHighCutStage, highActive, ZBiquad::design(ZBiquad::Type::LowPass, sampleRate_, highHertz, kButterworthQ));
}

// A band at 0 dB changes nothing, so it is skipped like a disabled one.
void ZEqualizerProcessorPlugin::updateBands()
{
    for (int band = 0; band < kBandCount; ++band) {
        const ZEqualizerBand& b = bands_[static_cast<size_t>(band)];
        const bool active = b.enabled && b.gainDb != 0.0;
        // Kept below the Nyquist frequency at low sample rates.
        const double frequency = std::min(b.frequency, kNyquistFraction * sampleRate_);
        setStage(static_cast<StageIndex>(kFirstBandStage + band), active,
                 ZBiquad::design(bandType(band), sampleRate_, frequency, b.q, b.gainDb));
    }
}

// A stage that comes back into the chain starts from silence, not from stale state.
void ZEqualizerProcessorPlugin::setStage(StageIndex index, bool active, const ZBiquad::Coefficients& coefficients)
{
    Stage& stage = stages_[static_cast<size_t>(index)];
    if (active && !stage.active) {
        stage.left.reset();
        stage.right.reset();
    }
    stage.active = active;
    stage.left.setCoefficients(coefficients);
    stage.right.setCoefficients(coefficients);
}

void ZEqualizerProcessorPlugin::collectActiveStages()
{
    chainLength_ = 0;
    for (Stage& stage : stages_)
        if (stage.active)
            chain_[static_cast<size_t>(chainLength_++)] = &stage;
}

void ZEqualizerProcessorPlugin::reset()
{
    for (Stage& stage : stages_) {
        stage.left.reset();
        stage.right.reset();
    }
}

void ZEqualizerProcessorPlugin::process(float* left, float* right, int n)
{
    if (chainLength_ == 0)
        return;
    for (int i = 0; i < n; ++i) {
        double l = left[i];
        double r = right[i];
        for (int s = 0; s < chainLength_; ++s) {
            l = chain_[static_cast<size_t>(s)]->left.process(l);
            r = chain_[static_cast<size_t>(s)]->right.process(r);
        }
        left[i] = static_cast<float>(l);
        right[i] = static_cast<float>(r);
    }
}

} // namespace halvern
