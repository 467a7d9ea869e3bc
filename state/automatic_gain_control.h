#pragma once

// The "AGC": a slow gain on the plug-in's output that keeps its loudness close to the
// input's, so that slots and presets can be compared at equal loudness. Per piece the
// input is measured before the effect runs and the gain applied to what it put out.
// Real-time safe: the window is a fixed ring, nothing allocates or locks.

#include <array>

namespace halvern {

class ZAutomaticGainControl {
public:
    static constexpr double kWindowSeconds = 3.0;
    static constexpr int kWindowSegments = 30;
    static constexpr double kGainLagSeconds = 1.0;
    static constexpr double kMaxGainDb = 24.0;
    static constexpr double kFreezeBelowDb = -70.0;

    // The rate the pieces run at; starts again from 0 dB with an empty window.
    void prepare(double sampleRate);
    void reset();

    // The piece's input, before the effect runs.
    void takeInput(const float* const* channels, int channelCount, int sampleCount);
    // Measures the effect's output of the same piece and applies the gain to it in place.
    void process(float* const* channels, int channelCount, int sampleCount);

    double gainDb() const { return gainDb_; }

private:
    // Energy per channel of input and output over one segment of the window.
    struct Segment {
        double input = 0.0;
        double output = 0.0;
        int samples = 0;
    };

    // Moves the window and the gain on by one piece of n samples.
    void follow(double outputEnergy, int n);
    double targetDb() const;

    double sampleRate_ = 0.0;
    int segmentLength_ = 1;
    std::array<Segment, kWindowSegments> window_{};
    int segment_ = 0;
    double pieceInputEnergy_ = 0.0;
    double gainDb_ = 0.0;
    double gain_ = 1.0;
};

} // namespace halvern
