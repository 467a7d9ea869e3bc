#include "core/biquad.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace halvern {

ZBiquad::Coefficients ZBiquad::design(Type type, double sampleRate, double frequency, double q, double gainDb)
{
    const double f = std::clamp(frequency, 1e-3, 0.4999 * sampleRate);
    const double w0 = 2.0 * std::numbers::pi * f / sampleRate;
    const double cosW = std::cos(w0);
    const double alpha = std::sin(w0) / (2.0 * std::max(q, 1e-3));
    const double a = std::pow(10.0, gainDb / 40.0);
    const double shelf = 2.0 * std::sqrt(a) * alpha;

    double b0 = 1.0, b1 = 0.0, b2 = 0.0, a0 = 1.0, a1 = 0.0, a2 = 0.0;
    switch (type) {
    case Type::LowPass:
        b0 = b2 = (1.0 - cosW) / 2.0;
        b1 = 1.0 - cosW;
        a0 = 1.0 + alpha, a1 = -2.0 * cosW, a2 = 1.0 - alpha;
        break;
    case Type::HighPass:
        b0 = b2 = (1.0 + cosW) / 2.0;
        b1 = -(1.0 + cosW);
        a0 = 1.0 + alpha, a1 = -2.0 * cosW, a2 = 1.0 - alpha;
        break;
    case Type::BandPass:
        b0 = alpha, b1 = 0.0, b2 = -alpha;
        a0 = 1.0 + alpha, a1 = -2.0 * cosW, a2 = 1.0 - alpha;
        break;
    case Type::Peak:
        b0 = 1.0 + alpha * a, b1 = -2.0 * cosW, b2 = 1.0 - alpha * a;
        a0 = 1.0 + alpha / a, a1 = -2.0 * cosW, a2 = 1.0 - alpha / a;
        break;
    case Type::LowShelf:
        b0 = a * ((a + 1.0) - (a - 1.0) * cosW + shelf);
        b1 = 2.0 * a * ((a - 1.0) - (a + 1.0) * cosW);
        b2 = a * ((a + 1.0) - (a - 1.0) * cosW - shelf);
        a0 = (a + 1.0) + (a - 1.0) * cosW + shelf;
        a1 = -2.0 * ((a - 1.0) + (a + 1.0) * cosW);
        a2 = (a + 1.0) + (a - 1.0) * cosW - shelf;
        break;
    case Type::HighShelf:
        b0 = a * ((a + 1.0) + (a - 1.0) * cosW + shelf);
        b1 = -2.0 * a * ((a - 1.0) + (a + 1.0) * cosW);
        b2 = a * ((a + 1.0) + (a - 1.0) * cosW - shelf);
        a0 = (a + 1.0) - (a - 1.0) * cosW + shelf;
        a1 = 2.0 * ((a - 1.0) - (a + 1.0) * cosW);
        a2 = (a + 1.0) - (a - 1.0) * cosW - shelf;
        break;
    case Type::AllPass:
        b0 = 1.0 - alpha, b1 = -2.0 * cosW, b2 = 1.0 + alpha;
        a0 = 1.0 + alpha, a1 = -2.0 * cosW, a2 = 1.0 - alpha;
        break;
    }
    return {b0 / a0, b1 / a0, b2 / a0, a1 / a0, a2 / a0};
}

double ZBiquad::magnitude(const Coefficients& c, double sampleRate, double frequency)
{
    // H(z) at z = e^{jw}: numerator and denominator as sums of cos and sin of w and 2w.
    const double w = 2.0 * std::numbers::pi * frequency / sampleRate;
    const double c1 = std::cos(w), s1 = std::sin(w), c2 = std::cos(2.0 * w), s2 = std::sin(2.0 * w);
    const double numRe = c.b0 + c.b1 * c1 + c.b2 * c2, numIm = -(c.b1 * s1 + c.b2 * s2);
    const double denRe = 1.0 + c.a1 * c1 + c.a2 * c2, denIm = -(c.a1 * s1 + c.a2 * s2);
    return std::sqrt((numRe * numRe + numIm * numIm) / (denRe * denRe + denIm * denIm));
}

} // namespace halvern
