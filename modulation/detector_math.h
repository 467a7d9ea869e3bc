#pragma once

// Small helpers shared by the LFO's detectors: level conversions and the weight of a
// one-pole smoother.

#include <algorithm>
#include <cmath>

namespace halvern {

// Added to the inputs of recursive filters and smoothers so that their states never
// decay into denormal numbers.
constexpr double kAntiDenormal = 1e-15;

inline double decibelsToAmplitude(double decibels)
{
    return std::pow(10.0, decibels / 20.0);
}

// Levels below -300 dB read as -300 dB, so silence gives a finite value.
inline double amplitudeToDecibels(double amplitude)
{
    return 20.0 * std::log10(std::max(amplitude, 1e-15));
}

// The weight w of one step of y += w * (x - y) when a step spans `samples` samples, for a
// smoother that covers 1 - 1/e (63 %) of a jump in `seconds`; 0 seconds follows at once.
inline double onePoleWeight(double seconds, double samples, double sampleRate)
{
    if (seconds <= 0.0 || sampleRate <= 0.0)
        return 1.0;
    return 1.0 - std::exp(-samples / (seconds * sampleRate));
}

// (value - low) / (high - low) limited to [0, 1]; an empty range is a threshold at low.
inline double normalisedInRange(double value, double low, double high)
{
    if (high <= low)
        return value >= low ? 1.0 : 0.0;
    return std::clamp((value - low) / (high - low), 0.0, 1.0);
}

} // namespace halvern
