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
// The rate a response is drawn at before the equalizer is prepared.
constexpr double kUnpreparedRate = 48000.0;
// A response's floor (-300 dB): the gain of a cut far beyond its frequency stays finite.
constexpr double kSilentGain = 1e-15;

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
    const Design wanted = design(sampleRate_);
    for (int stage = 0; stage < kStageCount; ++stage)
        setStage(static_cast<StageIndex>(stage), wanted.active[static_cast<size_t>(stage)],
                 wanted.coefficients[static_cast<size_t>(stage)]);
    collectActiveStages();
}

// A band at 0 dB changes nothing, so it is skipped like a disabled one.
ZEqualizerProcessorPlugin::Design ZEqualizerProcessorPlugin::design(double sampleRate) const
{
    Design d;
    const double lowHertz = std::pow(10.0, lowCut_);
    const double highHertz = std::pow(10.0, highCut_);
    d.active[kLowCutStage] = lowCut_ > kLowestCut + kEndTolerance;
    d.active[kHighCutStage] = highCut_ < kHighestCut - kEndTolerance && highHertz < kNyquistFraction * sampleRate;
    d.coefficients[kLowCutStage] = ZBiquad::design(ZBiquad::Type::HighPass, sampleRate, lowHertz, kButterworthQ);
    d.coefficients[kHighCutStage] = ZBiquad::design(ZBiquad::Type::LowPass, sampleRate, highHertz, kButterworthQ);
    for (int band = 0; band < kBandCount; ++band) {
        const ZEqualizerBand& b = bands_[static_cast<size_t>(band)];
        const auto stage = static_cast<size_t>(kFirstBandStage + band);
        d.active[stage] = b.enabled && b.gainDb != 0.0;
        // Kept below the Nyquist frequency at low sample rates.
        const double frequency = std::min(b.frequency, kNyquistFraction * sampleRate);
        d.coefficients[stage] = ZBiquad::design(bandType(band), sampleRate, frequency, b.q, b.gainDb);
    }
    return d;
}

ZEqualizerResponse ZEqualizerProcessorPlugin::response() const
{
    static_assert(ZEqualizerResponse::kMaxSections == kStageCount);
    ZEqualizerResponse r;
    if (sampleRate_ > 0.0) {
        r.sampleRate_ = sampleRate_;
        for (int s = 0; s < chainLength_; ++s)
            r.sections_[static_cast<size_t>(r.count_++)] = chain_[static_cast<size_t>(s)]->left.coefficients();
        return r;
    }
    r.sampleRate_ = kUnpreparedRate;
    const Design d = design(kUnpreparedRate);
    for (size_t stage = 0; stage < d.active.size(); ++stage)
        if (d.active[stage])
            r.sections_[static_cast<size_t>(r.count_++)] = d.coefficients[stage];
    return r;
}

double ZEqualizerResponse::gainDb(double frequency) const
{
    double db = 0.0;
    for (int s = 0; s < count_; ++s)
        db += 20.0 * std::log10(std::max(ZBiquad::magnitude(sections_[static_cast<size_t>(s)], sampleRate_, frequency),
                                         kSilentGain));
    return db;
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
