#pragma once

// The LFO's "Envelope" mode: follows the level of its input and turns it into d in
// [0, 1]. Per sample: an optional band (high-pass at Minimum, low-pass at Maximum), the
// loudest channel's peak or its RMS over RMSLength, a peak stage that holds and then
// releases, and attack smoothing; once per block the followed level is mapped onto d by
// the follower curve.

#include "core/modulation_enums.h"
#include "core/biquad.h"

#include <array>

namespace halvern {

class ZLevelFollower {
public:
    // Channels beyond this many are not followed.
    static constexpr int kMaxChannels = 8;

    struct Settings {
        double attack = 0.01;      // seconds for 63 % of a rise
        double release = 0.1;      // seconds for 63 % of a fall
        double hold = 0.0;         // seconds a peak is held before the release starts
        double rmsLength = 0.0;    // seconds of the RMS average; 0 follows the peak
        bool bandPass = false;
        double bandMinimum = 100.0; // Hz
        double bandMaximum = 5000.0; // Hz
        double bandQ = 0.707;
        double levelMin = -60.0;   // dB: d = 0 here
        double levelMax = 0.0;     // dB: d = 1 here
        // Linear maps the amplitude, Squared the power and Logarithmic the dB level
        // linearly from levelMin..levelMax onto 0..1; Direct gives the amplitude itself.
        ZLFOFollowerMode mode = ZLFOFollowerMode::Linear;
        // Maximize: the range runs from threshold up to the loudest level lately
        // followed, so any input uses all of 0..1; quieter than threshold reads as 0.
        bool maximize = false;
        double threshold = -40.0;  // dB
    };

    void setSettings(const Settings& settings);
    const Settings& settings() const { return settings_; }

    // Blocks of any length are followed sample by sample, so the block size needs no
    // storage.
    void prepare(double sampleRate, int maxBlockSize);
    void reset();

    // Follows the block and returns d for its end.
    double process(const float* const* channels, int channelCount, int n);

    // The followed amplitude (1 = full scale) after the last block.
    double level() const { return envelope_; }

private:
    void updateCoefficients();
    double loudestPower(const float* const* channels, int channelCount, int i);
    double followPeak(double amplitude);
    double toDetectorValue(double amplitude) const;

    Settings settings_;
    double sampleRate_ = 48000.0;
    double attackWeight_ = 1.0;
    double releaseWeight_ = 1.0;
    double rmsWeight_ = 1.0;
    int holdSamples_ = 0;
    std::array<ZBiquad, kMaxChannels> highPass_;
    std::array<ZBiquad, kMaxChannels> lowPass_;

    double meanSquare_ = 0.0;
    double peak_ = 0.0;
    int holdLeft_ = 0;
    double envelope_ = 0.0;
    double ceiling_ = 0.0;
};

} // namespace halvern
