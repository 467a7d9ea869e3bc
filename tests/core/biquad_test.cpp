#include "core/biquad.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace halvern {
namespace {

// Steady-state gain for a sine at 48 kHz: the output's RMS over one second (whole
// periods of every probe below) after a second of settling, relative to the input's.
double gainAt(ZBiquad::Type type, double frequency, double q, double gainDb, double probe)
{
    ZBiquad filter;
    filter.set(type, 48000.0, frequency, q, gainDb);
    double sum = 0.0;
    for (int n = 0; n < 96000; ++n) {
        const double y = filter.process(std::sin(2.0 * std::numbers::pi * probe * n / 48000.0));
        sum += n >= 48000 ? y * y : 0.0;
    }
    return std::sqrt(2.0 * sum / 48000.0);
}

TEST(Biquad, CookbookResponsesAtTheirDefiningFrequencies)
{
    using Type = ZBiquad::Type;
    const double q = std::sqrt(0.5);
    // Low- and high-pass pass through the corner with gain Q; the band-pass is 1 there
    // and a decade below (0.1 / Q) / sqrt((1 - 0.1^2)^2 + (0.1 / Q)^2) = 0.0504.
    EXPECT_NEAR(gainAt(Type::LowPass, 1000, q, 0, 1000), q, 1e-3);
    EXPECT_NEAR(gainAt(Type::LowPass, 1000, q, 0, 20), 1.0, 1e-3);
    EXPECT_NEAR(gainAt(Type::HighPass, 1000, q, 0, 1000), q, 1e-3);
    EXPECT_NEAR(gainAt(Type::BandPass, 2000, 2.0, 0, 2000), 1.0, 1e-3);
    EXPECT_NEAR(gainAt(Type::BandPass, 2000, 2.0, 0, 200), 0.0504, 1e-3);

    // +6 dB is an amplitude of 10^(6/20) = 1.9953 at a peak's centre and a shelf's far
    // side; -12 dB is 0.2512.
    EXPECT_NEAR(gainAt(Type::Peak, 1000, 1.0, 6, 1000), 1.9953, 2e-3);
    EXPECT_NEAR(gainAt(Type::LowShelf, 1000, q, 6, 20), 1.9953, 1e-2);
    EXPECT_NEAR(gainAt(Type::LowShelf, 1000, q, 6, 20000), 1.0, 1e-2);
    EXPECT_NEAR(gainAt(Type::HighShelf, 1000, q, -12, 20000), 0.2512, 3e-3);
    EXPECT_NEAR(gainAt(Type::HighShelf, 1000, q, -12, 20), 1.0, 1e-2);
    for (double probe : {100.0, 1000.0, 10000.0})
        EXPECT_NEAR(gainAt(Type::AllPass, 1000, q, 0, probe), 1.0, 1e-3) << probe;
}

} // namespace
} // namespace halvern
