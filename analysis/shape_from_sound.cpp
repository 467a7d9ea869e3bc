#include "analysis/shape_from_sound.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace halvern {
namespace {

constexpr double kOnsetFraction = 0.1;     // -20 dB
constexpr double kAudibleFraction = 0.01;  // -40 dB
constexpr double kWindowSeconds = 0.2;
constexpr double kLowestHz = 20.0;
constexpr double kShortestPeriod = 8.0;    // samples
constexpr double kKeyMaximumShare = 0.9;
constexpr double kLeastPeriodicity = 0.5;  // the highest correlation must reach this
constexpr int kMostCycles = 8;
constexpr int kPointsPerStep = 8;

std::vector<double> mixed(const ZAudioData& sound)
{
    std::vector<double> mono(sound.frames(), 0.0);
    for (const auto& channel : sound.channels)
        for (size_t n = 0; n < mono.size(); ++n)
            mono[n] += channel[n] / static_cast<double>(sound.channels.size());
    return mono;
}

double peakOf(const std::vector<double>& signal)
{
    double peak = 0.0;
    for (double x : signal)
        peak = std::max(peak, std::abs(x));
    if (peak == 0.0)
        throw ZShapeFromSoundError("the sound is silent");
    return peak;
}

size_t firstAbove(const std::vector<double>& signal, double level)
{
    return static_cast<size_t>(std::find_if(signal.begin(), signal.end(), [&](double x) { return std::abs(x) >= level; }) -
                               signal.begin());
}

// Linear interpolation at a fractional position inside the signal.
double at(const std::vector<double>& signal, double position)
{
    const auto index = static_cast<size_t>(position);
    const double fraction = position - static_cast<double>(index);
    return index + 1 < signal.size() ? signal[index] * (1.0 - fraction) + signal[index + 1] * fraction
                                     : signal.back();
}

// The normalised square difference function of the window for lags 0..maxLag: 1 where
// the window repeats itself exactly after that lag.
std::vector<double> periodicity(const std::vector<double>& window, size_t maxLag)
{
    std::vector<double> result(maxLag + 1, 0.0);
    for (size_t lag = 0; lag <= maxLag; ++lag) {
        double correlation = 0.0, energy = 0.0;
        for (size_t n = 0; n + lag < window.size(); ++n) {
            correlation += window[n] * window[n + lag];
            energy += window[n] * window[n] + window[n + lag] * window[n + lag];
        }
        result[lag] = energy > 0.0 ? 2.0 * correlation / energy : 0.0;
    }
    return result;
}

// The first key maximum (the highest point of a positive stretch) that reaches 90 % of
// the highest, refined by a parabola through it and its neighbours.
double periodFrom(const std::vector<double>& nsdf, size_t minLag)
{
    std::vector<size_t> keys;
    size_t lag = minLag;
    while (lag < nsdf.size() && nsdf[lag] > 0.0) // past the stretch around lag 0
        ++lag;
    for (; lag < nsdf.size(); ++lag) {
        if (nsdf[lag] <= 0.0)
            continue;
        size_t best = lag;
        for (; lag < nsdf.size() && nsdf[lag] > 0.0; ++lag)
            best = nsdf[lag] > nsdf[best] ? lag : best;
        if (lag < nsdf.size()) // a stretch cut off by the window's end may not have peaked
            keys.push_back(best);
    }
    double highest = 0.0;
    for (size_t key : keys)
        highest = std::max(highest, nsdf[key]);
    if (keys.empty() || highest < kLeastPeriodicity)
        throw ZShapeFromSoundError("nothing in the sound repeats (it is noise, or too short for two cycles)");
    const size_t key = *std::find_if(keys.begin(), keys.end(), [&](size_t k) { return nsdf[k] >= kKeyMaximumShare * highest; });
    const double left = nsdf[key - 1], middle = nsdf[key], right = nsdf[key + 1];
    const double curvature = left - 2.0 * middle + right;
    return static_cast<double>(key) + (curvature < 0.0 ? 0.5 * (left - right) / curvature : 0.0);
}

// The first upward zero crossing at or after `from`, at a fractional position.
double upwardCrossing(const std::vector<double>& signal, size_t from, size_t until)
{
    for (size_t n = std::max<size_t>(from, 1); n < until; ++n)
        if (signal[n - 1] < 0.0 && signal[n] >= 0.0)
            return static_cast<double>(n - 1) + signal[n - 1] / (signal[n - 1] - signal[n]);
    return static_cast<double>(from);
}

std::vector<double> scaledToPeak(std::vector<double> values)
{
    double peak = 0.0;
    for (double v : values)
        peak = std::max(peak, std::abs(v));
    for (double& v : values)
        v = peak > 0.0 ? v / peak : 0.0;
    return values;
}

std::vector<double> cycleSteps(const std::vector<double>& signal, double rate, int count)
{
    const size_t onset = firstAbove(signal, kOnsetFraction * peakOf(signal));
    const size_t length = std::min(signal.size() - onset, static_cast<size_t>(kWindowSeconds * rate));
    std::vector<double> window(signal.begin() + static_cast<std::ptrdiff_t>(onset),
                               signal.begin() + static_cast<std::ptrdiff_t>(onset + length));
    const double mean = std::accumulate(window.begin(), window.end(), 0.0) / static_cast<double>(window.size());
    for (double& x : window)
        x -= mean;
    const size_t maxLag = std::min(window.size() / 2, static_cast<size_t>(rate / kLowestHz));
    if (maxLag <= static_cast<size_t>(kShortestPeriod))
        throw ZShapeFromSoundError("nothing in the sound repeats (it is noise, or too short for two cycles)");
    const double period = periodFrom(periodicity(window, maxLag), static_cast<size_t>(kShortestPeriod));

    const double start = upwardCrossing(window, 0, static_cast<size_t>(period) + 1);
    const int cycles = std::clamp(static_cast<int>((static_cast<double>(window.size() - 1) - start) / period), 1, kMostCycles);
    std::vector<double> steps(static_cast<size_t>(count), 0.0);
    for (int cycle = 0; cycle < cycles; ++cycle)
        for (int step = 0; step < count; ++step)
            for (int point = 0; point < kPointsPerStep; ++point) {
                const double phase = (step + (point + 0.5) / kPointsPerStep) / count;
                steps[static_cast<size_t>(step)] += at(window, start + (cycle + phase) * period);
            }
    return scaledToPeak(steps);
}

std::vector<double> envelopeSteps(const std::vector<double>& signal, int count)
{
    const double audible = kAudibleFraction * peakOf(signal);
    const size_t first = firstAbove(signal, audible);
    const size_t last = signal.size() - static_cast<size_t>(std::find_if(signal.rbegin(), signal.rend(), [&](double x) {
                                            return std::abs(x) >= audible;
                                        }) - signal.rbegin());
    const double stretch = static_cast<double>(last - first) / count;
    std::vector<double> levels(static_cast<size_t>(count), 0.0);
    for (int step = 0; step < count; ++step) {
        const auto from = first + static_cast<size_t>(stretch * step);
        const auto to = std::max(from + 1, first + static_cast<size_t>(stretch * (step + 1)));
        double energy = 0.0;
        for (size_t n = from; n < to && n < signal.size(); ++n)
            energy += signal[n] * signal[n];
        levels[static_cast<size_t>(step)] = std::sqrt(energy / static_cast<double>(to - from));
    }
    std::vector<double> steps = scaledToPeak(levels);
    for (double& v : steps)
        v = 2.0 * v - 1.0;
    return steps;
}

} // namespace

std::vector<double> StepsFromSound(const ZAudioData& sound, ZShapeSource source, int count)
{
    const std::vector<double> signal = mixed(sound);
    if (signal.empty())
        throw ZShapeFromSoundError("the sound is silent");
    return source == ZShapeSource::Cycle ? cycleSteps(signal, sound.sampleRate, count) : envelopeSteps(signal, count);
}

} // namespace halvern
