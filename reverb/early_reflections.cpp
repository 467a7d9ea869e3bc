#include "reverb/early_reflections.h"

#include <cmath>

namespace halvern {
namespace {

// The longest predelay: a manual 0.25 s plus twice the largest side-wall difference,
// 2 W = 0.3 s each, so 0.85 s.
constexpr double kLongestPredelay = 1.0;
// The longest diffuser: base W fs plus the stereo offset and three growing steps, at
// most 0.1494 s (the largest room at full width), and the next free prime above it.
constexpr double kLongestDiffuser = 0.16;

} // namespace

void ZEarlyReflections::prepare(double sampleRate)
{
    for (Ear* ear : {&left_, &right_}) {
        ear->predelay.allocate(static_cast<int>(kLongestPredelay * sampleRate) + 1);
        for (auto& line : ear->diffusers)
            line.allocate(static_cast<int>(kLongestDiffuser * sampleRate) + 1);
    }
}

void ZEarlyReflections::configure(const ZRoomGeometry& geometry, const ZColourSettings& colour, double sampleRate)
{
    left_.predelay.setLength(geometry.predelayLeft);
    right_.predelay.setLength(geometry.predelayRight);
    for (size_t k = 0; k < 4; ++k) {
        left_.diffusers[k].setLength(geometry.diffusersLeft[k]);
        right_.diffusers[k].setLength(geometry.diffusersRight[k]);
    }
    diffuserGain_ = geometry.diffuserGain;
    gainLeft_ = geometry.earlyGainLeft;
    gainRight_ = geometry.earlyGainRight;
    // A farther source sounds duller: 9 dB more high cut per 0.1 s of travel.
    const auto low = ZBiquad::design(ZBiquad::Type::LowShelf, sampleRate, std::pow(10.0, colour.lowFreq), 0.5, -colour.lowDamp);
    const auto high = ZBiquad::design(ZBiquad::Type::HighShelf, sampleRate, std::pow(10.0, colour.highFreq), 0.5,
                                      -colour.highDamp - 90.0 * geometry.distance);
    for (Ear* ear : {&left_, &right_}) {
        ear->lowShelf.setCoefficients(low);
        ear->highShelf.setCoefficients(high);
    }
}

void ZEarlyReflections::reset()
{
    for (Ear* ear : {&left_, &right_}) {
        ear->predelay.clear();
        ear->lowShelf.reset();
        ear->highShelf.reset();
        for (auto& line : ear->diffusers)
            line.clear();
    }
}

} // namespace halvern
