#include "reverb/saturation_shaper.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace halvern {

namespace {

// The weight of the squared difference (y - x)^2, the even-order part of the sound.
constexpr double kEvenTermWeight = 1.0;

// The drive of the arctangent curve ("Soft 4").
constexpr double kArctangentDrive = 1.75;

// The clippers: where the linear part ends and how wide the quadratic knee that bends it
// to the flat top is. Knee + width / 2 is 0.6 for all three, so they share the gain 1 / 0.6
// and differ only in the hardness of the knee; "Clip 3" has none and clips outright.
struct ClipKnee {
    double knee;
    double width;
};
constexpr ClipKnee kClipKnees[] = {{0.2, 0.8}, {0.4, 0.4}, {0.6, 0.0}};

bool isClipper(ZSaturationMode mode)
{
    return mode >= ZSaturationMode::Clip1;
}

} // namespace

void ZSaturationShaper::setMode(int32_t mode)
{
    mode_ = static_cast<ZSaturationMode>(std::clamp<int32_t>(mode, 0, static_cast<int32_t>(ZSaturationMode::Clip3)));
    knee_ = 0.0;
    kneeWidth_ = 0.0;
    if (isClipper(mode_)) {
        const ClipKnee& clip = kClipKnees[static_cast<int>(mode_) - static_cast<int>(ZSaturationMode::Clip1)];
        knee_ = clip.knee;
        kneeWidth_ = clip.width;
    }
    // The gain makes every curve arrive at exactly 1 where it hands over to the hard
    // limit at |x| = 1, so no mode jumps there.
    gain_ = 1.0 / (knee_ + shapeAboveKnee(1.0 - knee_));
}

// The rounded curves all leave the knee with slope 1 (so the curve is smooth there) and
// grow in drive: tanh, the cubic u - u^3 / 3, a quarter sine and a driven arctangent.
double ZSaturationShaper::shapeAboveKnee(double u) const
{
    switch (mode_) {
    case ZSaturationMode::Soft1:
        return std::tanh(u);
    case ZSaturationMode::Soft2:
        return u - u * u * u / 3.0;
    case ZSaturationMode::Soft3:
        return std::sin(0.5 * std::numbers::pi * u) * 2.0 / std::numbers::pi;
    case ZSaturationMode::Soft4:
        return std::atan(kArctangentDrive * u) / kArctangentDrive;
    case ZSaturationMode::Clip1:
    case ZSaturationMode::Clip2:
    case ZSaturationMode::Clip3:
        break;
    }
    // Quadratic knee: slope 1 at the knee falling linearly to 0 at the flat top.
    return u < kneeWidth_ ? u - u * u / (2.0 * kneeWidth_) : 0.5 * kneeWidth_;
}

double ZSaturationShaper::shape(double x) const
{
    const double magnitude = std::fabs(x);
    const double sign = x < 0.0 ? -1.0 : 1.0;
    if (magnitude < knee_)
        return gain_ * x;
    if (magnitude < 1.0)
        return sign * (shapeAboveKnee(magnitude - knee_) + knee_) * gain_;
    return sign;
}

void ZSaturationShaper::process(float* left, float* right, int n, double s) const
{
    processChannel(left, n, s);
    processChannel(right, n, s);
}

void ZSaturationShaper::processChannel(float* samples, int n, double s) const
{
    const double dry = 1.0 - s;
    for (int i = 0; i < n; ++i) {
        const double x = samples[i];
        const double y = shape(x);
        const double difference = y - x;
        samples[i] = static_cast<float>((difference * difference * kEvenTermWeight + y) * s + dry * x);
    }
}

} // namespace halvern
