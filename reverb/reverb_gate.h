#pragma once

// The gate of the reverberation: a smoothed stereo power, followed by an attack/release
// level follower, drives a transfer curve that closes below a floor level B, passes
// the level unchanged above a threshold A and opens linearly in between. Both channels
// get the same gain.

#include "modulation/envelope_computer.h"

namespace halvern {

class ZReverbGate {
public:
    // The per-sample factor below which the smoothed power never falls: the slowest
    // the gate can release.
    static constexpr double kHold = 0.9999;

    struct Coefficients {
        double smoother = 0.0; // c of the power smoother
        double attack = 0.0;
        double release = 0.0;
        double threshold = 1.0; // A, the level from which the gate is fully open
        double floor = 1.0;     // B, the level below which it is closed
    };

    // thresholdDb and sizeDb give A = 10^(threshold / 20) and B = 10^((threshold - size) / 20);
    // attack and release are the follower's time constants in seconds.
    void configure(double sampleRate, double thresholdDb, double sizeDb, double attackSeconds, double releaseSeconds);
    void reset();
    // Multiplies both channels in place by the gate's gain.
    void process(float* left, float* right, int n);

    const Coefficients& coefficients() const { return c_; }
    // The follower's level, the input of the transfer curve.
    double followerLevel() const { return follower_; }

private:
    double gainAt(double level) const;

    Coefficients c_;
    ZEnvelopeComputer curve_; // input level -> output level, straight segments
    double power_ = 0.0;
    double follower_ = 0.0;
};

} // namespace halvern
