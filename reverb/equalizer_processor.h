#pragma once

// The reverb equalizer, acting on the reverberation only: a 12 dB/octave low cut and
// high cut, each a host parameter, and three parametric bands (low shelf, peak, high
// shelf) kept with the state. At their extreme ends the cuts are switched off and with
// every band disabled the equalizer leaves the signal untouched, bit for bit.

#include "core/biquad.h"
#include "core/z_value_number.h"

#include <array>

namespace halvern {

struct ZEqualizerBand {
    double frequency = 1000.0; // Hz
    double gainDb = 0.0;
    double q = 0.7071;
    bool enabled = false;
    bool operator==(const ZEqualizerBand&) const = default;
};

// The equalizer's filters as they were set at one moment: the sections that run, in
// signal order, at their sample rate. Cheap to copy, so the editor takes one under the
// lock and draws from it at leisure.
class ZEqualizerResponse {
public:
    static constexpr int kMaxSections = 5;

    // The gain of the whole chain at a frequency, in dB.
    double gainDb(double frequency) const;
    double sampleRate() const { return sampleRate_; }
    bool operator==(const ZEqualizerResponse&) const = default;

private:
    friend class ZEqualizerProcessorPlugin;
    double sampleRate_ = 0.0;
    std::array<ZBiquad::Coefficients, kMaxSections> sections_{};
    int count_ = 0;
};

class ZEqualizerProcessorPlugin {
public:
    // The bands in their fixed order and kinds.
    enum BandIndex { kLowShelf, kPeak, kHighShelf, kBandCount };
    using Bands = std::array<ZEqualizerBand, kBandCount>;

    ZEqualizerProcessorPlugin();
    ZEqualizerProcessorPlugin(const ZEqualizerProcessorPlugin&) = delete;
    ZEqualizerProcessorPlugin& operator=(const ZEqualizerProcessorPlugin&) = delete;

    // The cut frequencies as log10 Hz, shown in Hz; typed input is in Hz.
    ZValueDouble& lowCutValue() { return lowCutValue_; }
    ZValueDouble& highCutValue() { return highCutValue_; }
    static const char* lowCutHelp();
    static const char* highCutHelp();

    // Low shelf at 100 Hz, peak at 1 kHz, high shelf at 8 kHz, all off.
    static Bands DefaultBands();
    // A band brought into 20 Hz..20 kHz, -24..+24 dB and Q 0.1..10.
    static ZEqualizerBand LimitBand(ZEqualizerBand band);

    Bands& bands() { return bands_; }
    const Bands& bands() const { return bands_; }

    // The response of the filters as they run; before the first preparation, as they
    // would run at 48 kHz.
    ZEqualizerResponse response() const;

    void prepare(double sampleRate);
    // Recomputes the filters from the cut values and the bands.
    void update();
    void reset();
    // Filters both channels in place.
    void process(float* left, float* right, int n);

private:
    struct Stage {
        ZBiquad left;
        ZBiquad right;
        bool active = false;
    };
    enum StageIndex { kLowCutStage, kHighCutStage, kFirstBandStage, kStageCount = kFirstBandStage + kBandCount };

    struct Design {
        std::array<ZBiquad::Coefficients, kStageCount> coefficients;
        std::array<bool, kStageCount> active{};
    };

    // The filters the cut values and the bands ask for at a sample rate.
    Design design(double sampleRate) const;
    void setStage(StageIndex index, bool active, const ZBiquad::Coefficients& coefficients);
    void collectActiveStages();

    double lowCut_;
    double highCut_;
    ZValueDouble lowCutValue_;
    ZValueDouble highCutValue_;
    Bands bands_;
    double sampleRate_ = 0.0;
    std::array<Stage, kStageCount> stages_;
    std::array<Stage*, kStageCount> chain_{}; // the active stages in signal order
    int chainLength_ = 0;
};

} // namespace halvern
