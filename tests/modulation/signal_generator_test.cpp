#include "modulation/signal_generator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace halvern {
namespace {

using Family = ZSignalGenerator::Family;

ZSignalGenerator generator(Family family, double smoothing = 0.0, const std::vector<double>& steps = {})
{
    ZSignalGenerator g;
    g.setFamily(family);
    g.setSmoothing(smoothing);
    g.setSteps(steps);
    return g;
}

TEST(SignalGenerator, FamiliesAtTheirCornersAndPhasesWrap)
{
    struct Corner {
        Family family;
        double x;
        double expected;
    };
    for (const Corner& c : {Corner{Family::Sine, 0.25, 1.0}, {Family::Sine, -0.25, -1.0}, {Family::Sine, 3.25, 1.0},
                            {Family::Triangle, 0.125, 0.5}, {Family::Triangle, 0.25, 1.0}, {Family::Triangle, 0.75, -1.0},
                            {Family::SawUp, 0.0, -1.0}, {Family::SawUp, 0.75, 0.5}, {Family::SawDown, 0.75, -0.5},
                            {Family::Square, 0.1, 1.0}, {Family::Square, 0.6, -1.0}})
        EXPECT_NEAR(generator(c.family).shape(c.x), c.expected, 1e-12) << static_cast<int>(c.family) << " at " << c.x;

    const auto steps = generator(Family::Steps, 0.0, {-1.0, 0.5, 2.0});
    EXPECT_DOUBLE_EQ(steps.shape(0.1), -1.0);
    EXPECT_DOUBLE_EQ(steps.shape(0.4), 0.5);
    EXPECT_DOUBLE_EQ(steps.shape(0.9), 1.0); // limited to [-1, 1]

    auto shifted = generator(Family::Sine);
    shifted.setPhaseOffset(1.25);
    EXPECT_DOUBLE_EQ(shifted.phaseOffset(), 0.25);
    EXPECT_NEAR(shifted.shape(0.0), 1.0, 1e-12);
}

TEST(SignalGenerator, HarmonicsAreScaledToAFullScalePeak)
{
    auto g = generator(Family::Harmonics);
    g.setHarmonics(std::vector<double>{0.0, 0.5});
    EXPECT_NEAR(g.shape(0.125), 1.0, 1e-9); // sin(4 pi t) alone, scaled up to 1

    // sin + sin 2x peaks near 1.76 before scaling; afterwards at 1.
    g.setHarmonics(std::vector<double>{1.0, 1.0});
    double peak = 0.0;
    for (int i = 0; i < 100000; ++i)
        peak = std::max(peak, std::abs(g.shape(i / 100000.0)));
    EXPECT_LE(peak, 1.0);
    EXPECT_GT(peak, 0.9999);
}

TEST(SignalGenerator, SmoothingJoinsTheJumps)
{
    // A fully smoothed square is a sine: raised-cosine edges half a cycle wide.
    const auto square = generator(Family::Square, 1.0);
    for (double x = 0.0; x < 1.0; x += 0.01)
        EXPECT_NEAR(square.shape(x), std::sin(2.0 * std::numbers::pi * x), 1e-12) << x;

    // Half smoothing: the edge passes 0 at its centre, the plateau keeps its value.
    const auto half = generator(Family::Square, 0.5);
    EXPECT_NEAR(half.shape(0.5), 0.0, 1e-12);
    EXPECT_DOUBLE_EQ(half.shape(0.3), 1.0);

    // The saw's jump at the cycle's end becomes continuous, crossing 0.
    const auto saw = generator(Family::SawUp, 0.2);
    EXPECT_NEAR(saw.shape(-1e-9), 0.0, 1e-6);
    EXPECT_NEAR(saw.shape(1e-9), 0.0, 1e-6);

    // Fully smoothed steps meet halfway between their values at each boundary.
    const auto steps = generator(Family::Steps, 1.0, {-1.0, 0.5});
    EXPECT_NEAR(steps.shape(0.25), -1.0, 1e-12);
    EXPECT_NEAR(steps.shape(0.5), -0.25, 1e-12);
    EXPECT_NEAR(steps.shape(0.0), -0.25, 1e-12);
}

} // namespace
} // namespace halvern
