#include "reverb/reverb_gate.h"

#include <algorithm>
#include <cmath>

namespace halvern {

namespace {

// 1e-15 in single precision, added to the recursive states every sample so that they
// never decay into denormal numbers.
constexpr double kDenormalOffset = 1.0000000036274937e-15;

// The power smoother's time constant in seconds.
constexpr double kPowerTime = 0.0001;

constexpr float kPowerLimit = 100.0f;

// The one-pole coefficient for a time constant of `samples` samples; 0 (no smoothing)
// when the time constant vanishes.
double onePole(double samples)
{
    return std::fabs(samples) < 1e-50 ? 0.0 : std::exp(-1.0 / samples);
}

} // namespace

void ZReverbGate::configure(double sampleRate, double thresholdDb, double sizeDb, double attackSeconds,
                            double releaseSeconds)
{
    c_.smoother = onePole(kPowerTime * sampleRate);
    c_.attack = onePole(attackSeconds * sampleRate);
    c_.release = onePole(releaseSeconds * sampleRate);
    c_.threshold = std::pow(10.0, thresholdDb * 0.05);
    c_.floor = std::pow(10.0, (thresholdDb - sizeDb) * 0.05);

    const ZEnvelopeComputer::Segment straight{ZEnvelopeComputer::ItemLinear};
    curve_.clear();
    curve_.addPoint({0.0, 0.0, straight});
    curve_.addPoint({c_.floor, 0.0, straight});
    curve_.addPoint({c_.threshold, c_.threshold, straight});
    curve_.addPoint({1.0, 1.0, straight});
}

void ZReverbGate::reset()
{
    power_ = 0.0;
    follower_ = 0.0;
}

void ZReverbGate::process(float* left, float* right, int n)
{
    const double smoother = c_.smoother;
    const double input = 1.0 - smoother;
    for (int i = 0; i < n; ++i) {
        const float l = left[i];
        const float r = right[i];
        const float q = std::clamp((l * l + r * r) * 0.5f, -kPowerLimit, kPowerLimit);
        power_ = std::max(smoother * power_ + input * q, power_ * kHold) + kDenormalOffset;
        const double level = std::sqrt(power_);
        const double k = level <= follower_ ? c_.release : c_.attack;
        follower_ = k * follower_ + (1.0 - k) * level + kDenormalOffset;
        const double gain = gainAt(follower_);
        left[i] = static_cast<float>(l * gain);
        right[i] = static_cast<float>(r * gain);
    }
}

double ZReverbGate::gainAt(double level) const
{
    // From A up the gate is open: the curve's last point is (1, 1) and it continues flat,
    // so dividing by the level would turn down anything louder than full scale.
    if (level >= c_.threshold)
        return 1.0;
    return level - 1e-20 > 0.0 ? curve_.evaluate(level) / level : 0.0;
}

} // namespace halvern
