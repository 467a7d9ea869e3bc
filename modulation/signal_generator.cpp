#include "modulation/signal_generator.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace halvern {
namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;

double wrap(double x)
{
    const double t = x - std::floor(x);
    return t < 1.0 ? t : 0.0; // a tiny negative x rounds up to 1
}

} // namespace

ZSignalGenerator::ZSignalGenerator()
{
    std::array<double, 8> sineSteps{};
    for (size_t i = 0; i < sineSteps.size(); ++i)
        sineSteps[i] = std::sin(kTwoPi * (static_cast<double>(i) + 0.5) / static_cast<double>(sineSteps.size()));
    setSteps(sineSteps);
    const double fundamental = 1.0;
    setHarmonics({&fundamental, 1});
}

void ZSignalGenerator::setPhaseOffset(double cycles)
{
    phaseOffset_ = wrap(cycles);
}

void ZSignalGenerator::setSmoothing(double amount)
{
    smoothing_ = std::clamp(amount, 0.0, 1.0);
}

void ZSignalGenerator::setSteps(std::span<const double> values)
{
    if (values.empty())
        return;
    stepCount_ = static_cast<int>(std::min<size_t>(values.size(), kMaxSteps));
    for (int i = 0; i < stepCount_; ++i)
        steps_[static_cast<size_t>(i)] = std::clamp(values[static_cast<size_t>(i)], -1.0, 1.0);
}

void ZSignalGenerator::setHarmonics(std::span<const double> amplitudes)
{
    if (amplitudes.empty())
        return;
    harmonicCount_ = static_cast<int>(std::min<size_t>(amplitudes.size(), kMaxHarmonics));
    std::copy_n(amplitudes.begin(), harmonicCount_, harmonics_.begin());
    const double peak = findHarmonicPeak();
    harmonicScale_ = peak > 0.0 ? 1.0 / peak : 0.0;
}

double ZSignalGenerator::shape(double x) const
{
    const double t = wrap(x + phaseOffset_);
    switch (family_) {
    case Family::Sine:
        return std::sin(kTwoPi * t);
    case Family::Triangle:
        return triangle(t);
    case Family::Harmonics:
        return harmonicSum(t);
    case Family::SawUp:
    case Family::SawDown:
    case Family::Square:
    case Family::Steps:
        break;
    }
    return segmented(t);
}

// In phase with the sine: 0 at t = 0, peak at 0.25, trough at 0.75.
double ZSignalGenerator::triangle(double t) const
{
    if (t < 0.25)
        return 4.0 * t;
    if (t < 0.75)
        return 2.0 - 4.0 * t;
    return 4.0 * t - 4.0;
}

double ZSignalGenerator::unscaledHarmonicSum(double t) const
{
    double sum = 0.0;
    for (int k = 0; k < harmonicCount_; ++k)
        sum += harmonics_[static_cast<size_t>(k)] * std::sin(kTwoPi * (k + 1) * t);
    return sum;
}

double ZSignalGenerator::harmonicSum(double t) const
{
    return std::clamp(unscaledHarmonicSum(t) * harmonicScale_, -1.0, 1.0);
}

// Dense enough that the peak between two grid points is missed by far less than 0.1 %
// for sixteen harmonics; the clamp in harmonicSum catches that remainder.
double ZSignalGenerator::findHarmonicPeak() const
{
    constexpr int kGrid = 4096;
    double peak = 0.0;
    for (int i = 0; i < kGrid; ++i)
        peak = std::max(peak, std::abs(unscaledHarmonicSum(static_cast<double>(i) / kGrid)));
    return peak;
}

int ZSignalGenerator::segmentCount() const
{
    switch (family_) {
    case Family::Square:
        return 2;
    case Family::Steps:
        return stepCount_;
    default:
        return 1;
    }
}

double ZSignalGenerator::segmentValue(int segment, double u) const
{
    switch (family_) {
    case Family::SawUp:
        return 2.0 * u - 1.0;
    case Family::SawDown:
        return 1.0 - 2.0 * u;
    case Family::Square:
        return segment == 0 ? 1.0 : -1.0;
    default:
        return steps_[static_cast<size_t>(segment)];
    }
}

// Smoothing replaces the jump at each segment boundary by a raised-cosine transition
// centred on it, smoothing_ segments wide, while the curve keeps its own slope
// underneath. At full smoothing a square becomes a sine and steps are joined by cosine
// interpolation between their centres.
double ZSignalGenerator::segmented(double t) const
{
    const int count = segmentCount();
    const double position = t * count;
    const int segment = std::min(static_cast<int>(position), count - 1);
    double value = segmentValue(segment, position - segment);

    const int boundary = static_cast<int>(std::lround(position));
    const double distance = position - boundary; // in segments, within [-0.5, 0.5]
    const double halfWidth = 0.5 * smoothing_;
    if (std::abs(distance) < halfWidth) {
        const double jump = segmentValue(boundary % count, 0.0) - segmentValue((boundary + count - 1) % count, 1.0);
        const double blend = 0.5 - 0.5 * std::cos(std::numbers::pi * (distance + halfWidth) / (2.0 * halfWidth));
        const double sharp = distance >= 0.0 ? 1.0 : 0.0;
        value += jump * (blend - sharp);
    }
    return value;
}

} // namespace halvern
