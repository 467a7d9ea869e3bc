#include "modulation/random_modulator.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace halvern {
namespace {

// A 64-bit finaliser (splitmix64): every input bit affects every output bit.
uint64_t mix(uint64_t x)
{
    x += 0x9e3779b97f4a7c15ULL;
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ULL;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebULL;
    return x ^ (x >> 31);
}

} // namespace

void ZRandomModulator::setSettings(const Settings& settings)
{
    settings_ = settings;
    settings_.speed = std::clamp(settings_.speed, -1.0, 1.0);
    settings_.smoothness = std::clamp(settings_.smoothness, 0.0, 1.0);
    valuesPerBeat_ = std::exp2(std::round(kOctavesAtFullSpeed * settings_.speed));
}

double ZRandomModulator::valueOfStep(int64_t step) const
{
    const uint64_t hash = mix(static_cast<uint64_t>(step) ^ mix(settings_.seed));
    return static_cast<double>(hash >> 11) * 0x1.0p-53; // the top 53 bits as [0, 1)
}

// Each step holds its value and, over its last `smoothness` part, glides to the next
// one along a half cosine, which leaves and arrives without a kink.
double ZRandomModulator::valueAt(double quarterNotes) const
{
    const double position = quarterNotes * valuesPerBeat_;
    const double floorPosition = std::floor(position);
    const auto step = static_cast<int64_t>(floorPosition);
    const double within = position - floorPosition;
    const double current = valueOfStep(step);
    const double glideStart = 1.0 - settings_.smoothness;
    if (within <= glideStart)
        return current;
    const double t = (within - glideStart) / settings_.smoothness;
    const double blend = 0.5 - 0.5 * std::cos(std::numbers::pi * t);
    return current + (valueOfStep(step + 1) - current) * blend;
}

double ZRandomModulator::process(double quarterNotes, double tempo, bool positionValid, int n, double sampleRate)
{
    if (positionValid)
        position_ = quarterNotes;
    const double value = valueAt(position_);
    const double beatsPerSecond = (tempo > 0.0 ? tempo : kDefaultTempo) / 60.0;
    if (sampleRate > 0.0)
        position_ += n * beatsPerSecond / sampleRate;
    return value;
}

} // namespace halvern
