#pragma once

// Feeds a sine block by block into one of the LFO's detectors.

#include <cmath>
#include <numbers>
#include <vector>

namespace halvern::testing {

constexpr double kRate = 48000.0;

inline double decibels(double db)
{
    return std::pow(10.0, db / 20.0);
}

// The sine runs on across calls, so consecutive bursts join without a jump.
class ToneFeeder {
public:
    explicit ToneFeeder(int blockSize) : block_(static_cast<size_t>(blockSize)) {}

    // Feeds `seconds` of a sine (amplitude 0 is silence); returns the detector's
    // answer after each block.
    template <class Detector>
    std::vector<double> feed(Detector& detector, double amplitude, double frequency, double seconds)
    {
        std::vector<double> answers;
        const float* channels[] = {block_.data()};
        for (long b = std::lround(seconds * kRate / static_cast<double>(block_.size())); b > 0; --b) {
            for (float& x : block_)
                x = static_cast<float>(amplitude * std::sin(2.0 * std::numbers::pi * frequency * sample_++ / kRate));
            answers.push_back(detector.process(channels, 1, static_cast<int>(block_.size())));
        }
        return answers;
    }

private:
    std::vector<float> block_;
    long long sample_ = 0;
};

} // namespace halvern::testing
