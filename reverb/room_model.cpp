#include "reverb/room_model.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace halvern {
namespace {

constexpr double kZero = 1e-50;

// The two predelays: automatic from the side-wall paths, or the manual value with the
// path difference kept, so that line 1 = Predelay + 2 diff and line 2 = Predelay.
void placePredelays(const ZRoomInputs& in, ZRoomGeometry& g, double dx, double Y)
{
    const double W = g.roomWidth;
    const double pathA = std::sqrt(((1.0 - dx) * W) * ((1.0 - dx) * W) + Y * Y);
    const double pathB = std::sqrt(((1.0 + dx) * W) * ((1.0 + dx) * W) + Y * Y);
    g.centre = (pathA + pathB) / 2.0;
    g.difference = pathA - pathB;
    const double least = 0.01 * in.width;
    if (std::fabs(g.difference) < least)
        g.difference = g.difference >= 0.0 ? least : -least;
    double left = g.centre + g.difference;
    double right = g.centre - g.difference;
    if (!IsAutomaticPredelay(in.predelay)) {
        // centre = Predelay + diff; written out so that line 2 is the Predelay exactly.
        g.centre = in.predelay + g.difference;
        left = in.predelay + 2.0 * g.difference;
        right = in.predelay;
    }
    g.predelayLeft = std::max(1, static_cast<int>(std::max(0.01, left) * in.sampleRate));
    g.predelayRight = std::max(1, static_cast<int>(std::max(0.01, right) * in.sampleRate));
}

void placeDiffusers(const ZRoomInputs& in, ZRoomGeometry& g, ZPrimeTable& primes)
{
    const double t = (std::clamp(in.size, 0.015, 0.06) - 0.015) / 0.045;
    double base = (1.0 - 0.4 * t) * g.roomWidth * in.sampleRate;
    double step = (0.5 - 0.3 * t) * base;
    double offset = std::min(0.02 * in.sampleRate * in.width, 0.5 * base);
    g.stereoOffset = offset;
    g.diffuserGain = 0.4 * in.diffusion + 0.2;
    g.earlyGainLeft = g.earlyGainRight = 1.0 - 0.3 * in.diffusion;
    for (size_t k = 0; k < 4; ++k) {
        g.diffusersLeft[k] = primes.take(static_cast<int>(base + offset));
        g.diffusersRight[k] = primes.take(static_cast<int>(base - offset));
        base += step;
        step *= 0.7;
        offset = -offset;
    }
}

} // namespace

bool IsAutomaticPredelay(double predelay)
{
    return std::fabs(predelay - kAutomaticPredelay) < kZero;
}

ZRoomGeometry ComputeRoomGeometry(const ZRoomInputs& in, ZPrimeTable& primes)
{
    ZRoomGeometry g;
    const double L = in.size;
    g.roomWidth = L * (0.9 * in.width + 0.1);
    const double dx = in.microphoneX - in.sourceX;
    double dy = in.microphoneY - in.sourceY;
    if (std::fabs(dx) < kZero && std::fabs(dy) < kZero)
        dy = 0.001; // source and microphone at one point: keep a direction
    const double X = g.roomWidth * dx;
    const double Y = L * dy;
    g.angle = std::atan2(Y, X);
    g.distance = std::sqrt(X * X + Y * Y);
    g.pan = (g.angle - std::numbers::pi / 2.0) * 2.0 / std::numbers::pi;
    placePredelays(in, g, dx, Y);
    placeDiffusers(in, g, primes);
    return g;
}

double EarlyRingingSeconds(const ZRoomGeometry& g, double sampleRate, double fallDb)
{
    if (sampleRate <= 0.0)
        return 0.0;
    const int predelay = std::max(g.predelayLeft, g.predelayRight);
    const int longest = std::max(*std::max_element(g.diffusersLeft.begin(), g.diffusersLeft.end()),
                                 *std::max_element(g.diffusersRight.begin(), g.diffusersRight.end()));
    const double lossDb = -20.0 * std::log10(g.diffuserGain);
    const double passes = lossDb > 0.0 ? fallDb / lossDb : 0.0;
    return (predelay + passes * longest) / sampleRate;
}

} // namespace halvern
