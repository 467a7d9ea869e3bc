#include "state/automatic_gain_control.h"

#include <algorithm>
#include <cmath>

namespace halvern {
namespace {

// Keeps the level ratio finite when one side is silent.
constexpr double kEnergyFloor = 1e-20;

// Sum of squares per channel.
double energy(const float* const* channels, int channelCount, int n)
{
    if (channelCount <= 0)
        return 0.0;
    double sum = 0.0;
    for (int c = 0; c < channelCount; ++c)
        for (int s = 0; s < n; ++s)
            sum += static_cast<double>(channels[c][s]) * channels[c][s];
    return sum / channelCount;
}

} // namespace

void ZAutomaticGainControl::prepare(double sampleRate)
{
    sampleRate_ = sampleRate;
    segmentLength_ = std::max(1, static_cast<int>(std::lround(sampleRate * kWindowSeconds / kWindowSegments)));
    reset();
}

void ZAutomaticGainControl::reset()
{
    window_.fill(Segment{});
    segment_ = 0;
    pieceInputEnergy_ = 0.0;
    gainDb_ = 0.0;
    gain_ = 1.0;
}

void ZAutomaticGainControl::takeInput(const float* const* channels, int channelCount, int n)
{
    pieceInputEnergy_ = energy(channels, channelCount, n);
}

void ZAutomaticGainControl::process(float* const* channels, int channelCount, int n)
{
    if (n <= 0)
        return;
    const double from = gain_;
    follow(energy(channels, channelCount, n), n);
    // The gain glides from its last value across the piece, so it never steps.
    const double step = (gain_ - from) / n;
    for (int c = 0; c < channelCount; ++c)
        for (int s = 0; s < n; ++s)
            channels[c][s] = static_cast<float>(channels[c][s] * (from + step * (s + 1)));
}

// Law: the gain in dB lags 1 s behind the in/out energy ratio of a sliding 3 s window, within +-24 dB, frozen below -70 dBFS in.
void ZAutomaticGainControl::follow(double outputEnergy, int n)
{
    const double freezePower = std::pow(10.0, kFreezeBelowDb / 10.0);
    if (sampleRate_ <= 0.0 || pieceInputEnergy_ < freezePower * n)
        return;
    Segment& current = window_[static_cast<size_t>(segment_)];
    current.input += pieceInputEnergy_;
    current.output += outputEnergy;
    current.samples += n;
    if (current.samples >= segmentLength_) {
        segment_ = (segment_ + 1) % kWindowSegments;
        window_[static_cast<size_t>(segment_)] = Segment{};
    }
    gainDb_ += (1.0 - std::exp(-n / (kGainLagSeconds * sampleRate_))) * (targetDb() - gainDb_);
    gain_ = std::pow(10.0, gainDb_ / 20.0);
}

double ZAutomaticGainControl::targetDb() const
{
    double input = kEnergyFloor;
    double output = kEnergyFloor;
    for (const Segment& segment : window_) {
        input += segment.input;
        output += segment.output;
    }
    return std::clamp(10.0 * std::log10(input / output), -kMaxGainDb, kMaxGainDb);
}

} // namespace halvern
