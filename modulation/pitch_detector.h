#pragma once

// The LFO's "Pitch" mode: a pitch detector for the input, an auto-tuner that pulls a
// detected pitch towards the equal-tempered scale, and the mapping of a pitch onto d.

#include "core/biquad.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace halvern {

// Finds the pitch of the input with the YIN method (cumulative mean normalised
// difference, absolute threshold, parabolic refinement) on a decimated copy of the
// input. It analyses at most once per block and only after half an analysis window of
// new input, so its cost stays small and nearly independent of the block size.
class ZPitchDetector {
public:
    static constexpr double kLowestFrequency = 20.0;

    struct Settings {
        double minFrequency = 50.0;   // Hz, lowest pitch searched
        double maxFrequency = 2000.0; // Hz, highest pitch searched
        // 0..1: the median of 1, 3, 5 or 7 successive estimates is reported, which
        // removes isolated octave errors and dropouts at the cost of some delay.
        double stabilization = 0.5;
        // 0..1: the reported pitch glides to a new one in 0.5 s * (1 - speed).
        double speed = 0.8;
        // 0..1: the analysis window spans 1 to 3 periods of the lowest pitch; longer is
        // steadier and finer, shorter answers sooner.
        double accuracy = 0.5;
        double threshold = -50.0; // dB RMS of the analysed input below which nothing is detected
    };

    void setSettings(const Settings& settings);
    const Settings& settings() const { return settings_; }

    // Allocates the analysis buffers for the largest window any settings can ask for.
    void prepare(double sampleRate, int maxBlockSize);
    void reset();

    // Reads the block (the mean of its channels) and returns the reported pitch in Hz,
    // or 0 when none is detected.
    double process(const float* const* channels, int channelCount, int n);

private:
    static constexpr int kMaxHistory = 7;

    void updateAnalysis();
    void clearInput();
    int frameLength() const { return window_ + maxLag_ + 1; }
    void push(double sample);
    double analyse();
    bool loudEnough() const;
    void computeDifferences();
    int pickLag() const;
    double refineLag(int lag) const;
    double stabilised(double estimate);
    void glideTo(double target, int n);

    Settings settings_;
    double sampleRate_ = 48000.0;
    int decimation_ = 1;
    double analysisRate_ = 48000.0;
    int minLag_ = 2;
    int maxLag_ = 4;
    int window_ = 4;
    int historySize_ = 1;
    std::array<ZBiquad, 2> antiAlias_;
    double thresholdPower_ = 0.0;

    std::vector<float> ring_;
    std::vector<double> frame_;
    std::vector<double> difference_;
    std::vector<double> normalised_;
    std::size_t writeIndex_ = 0;
    int filled_ = 0;
    int decimationPhase_ = 0;
    int sinceAnalysis_ = 0;
    std::array<double, kMaxHistory> history_{};
    int historyCount_ = 0;
    double target_ = 0.0; // the stabilised estimate the reported pitch glides to
    double reported_ = 0.0;
};

// Pulls a pitch towards the nearest equal-tempered semitone (A4 = 440 Hz): depth 0
// leaves it, 1 puts it on the semitone; the correction glides to a new note in
// 0.5 s * (1 - speed).
class ZAutoTune {
public:
    struct Settings {
        double speed = 1.0;
        double depth = 1.0;
    };

    void setSettings(const Settings& settings)
    {
        settings_.speed = std::clamp(settings.speed, 0.0, 1.0);
        settings_.depth = std::clamp(settings.depth, 0.0, 1.0);
    }
    const Settings& settings() const { return settings_; }
    void reset() { correction_ = 0.0; }

    // The corrected pitch for a block of n samples; 0 Hz (nothing detected) passes as is.
    double process(double frequency, int n, double sampleRate);

private:
    Settings settings_;
    double correction_ = 0.0; // semitones
};

// The detector value d in [0, 1] for a detected pitch: the pitch shifted by octaves,
// semitones and cents, placed on a logarithmic scale from minFrequency to maxFrequency
// (20 Hz to 20 kHz when that range is empty). Pitches under 20 Hz keep `previous`.
double PitchToDetectorValue(double frequency, double octaves, double semitones, double cents, double minFrequency,
                            double maxFrequency, double previous);

} // namespace halvern
