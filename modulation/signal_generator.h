#pragma once

// The LFO's waveform: shape(x) for a phase x in cycles, returning a value in [-1, 1].
// A family picks the basic curve (sine, triangle, saws, square, a step sequence or a sum
// of harmonics); a phase offset moves it and a smoothing amount rounds the jumps of the
// square, saws and steps. Fixed-size storage, so copying and evaluating never allocate.

#include <array>
#include <cstddef>
#include <span>

namespace halvern {

class ZSignalGenerator {
public:
    enum class Family { Sine, Triangle, SawUp, SawDown, Square, Steps, Harmonics };

    static constexpr int kMaxSteps = 32;
    static constexpr int kMaxHarmonics = 16;

    // A sine; the steps default to eight samples of a sine, the harmonics to the
    // fundamental alone.
    ZSignalGenerator();

    // The value at phase x (any real number; one cycle is 1).
    double shape(double x) const;

    void setFamily(Family family) { family_ = family; }
    // Phase offset in cycles, added to x before evaluation.
    void setPhaseOffset(double cycles);
    // 0 keeps every jump sharp; 1 stretches each jump's transition over a whole segment.
    void setSmoothing(double amount);
    // 1 to kMaxSteps values, each limited to [-1, 1]; extra values are ignored and an
    // empty list keeps the current steps.
    void setSteps(std::span<const double> values);
    // Amplitudes of harmonics 1, 2, ... (up to kMaxHarmonics); the sum is scaled so that
    // its peak is 1, found by scanning a few thousand points of the curve, so call it on
    // a change rather than per block. An empty list keeps the current harmonics.
    void setHarmonics(std::span<const double> amplitudes);

    Family family() const { return family_; }
    double phaseOffset() const { return phaseOffset_; }
    double smoothing() const { return smoothing_; }
    std::span<const double> steps() const { return {steps_.data(), static_cast<std::size_t>(stepCount_)}; }
    std::span<const double> harmonics() const { return {harmonics_.data(), static_cast<std::size_t>(harmonicCount_)}; }

private:
    double triangle(double t) const;
    double harmonicSum(double t) const;
    double unscaledHarmonicSum(double t) const;
    // Square, saws and steps: piecewise curves with jumps at the segment boundaries.
    double segmented(double t) const;
    int segmentCount() const;
    // The curve inside one segment, u in [0, 1] across it.
    double segmentValue(int segment, double u) const;
    double findHarmonicPeak() const;

    Family family_ = Family::Sine;
    double phaseOffset_ = 0.0;
    double smoothing_ = 0.0;
    std::array<double, kMaxSteps> steps_{};
    int stepCount_ = 0;
    std::array<double, kMaxHarmonics> harmonics_{};
    int harmonicCount_ = 0;
    double harmonicScale_ = 1.0;
};

} // namespace halvern
