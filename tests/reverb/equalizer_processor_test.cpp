#include "reverb/equalizer_processor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

namespace halvern {
namespace {

// Steady-state gain for a sine at 48 kHz: the RMS of the second of two seconds against the input's.
double gainAt(ZEqualizerProcessorPlugin& eq, double probe)
{
    eq.reset();
    std::vector<float> left(96000), right(96000);
    for (size_t n = 0; n < left.size(); ++n)
        left[n] = right[n] = static_cast<float>(0.5 * std::sin(2.0 * std::numbers::pi * probe * n / 48000.0));
    eq.process(left.data(), right.data(), 96000);
    double sum = 0.0;
    for (size_t n = 48000; n < left.size(); ++n)
        sum += left[n] * left[n] + right[n] * right[n];
    return std::sqrt(sum / 48000.0) / 0.5;
}

double decibels(double gain) { return 20.0 * std::log10(gain); }

TEST(Equalizer, CutsAtTheirEndsAndFlatBandsAreBitExact)
{
    ZEqualizerProcessorPlugin eq;
    eq.prepare(48000.0);
    EXPECT_EQ(eq.lowCutValue().getDisplayText() + eq.highCutValue().getDisplayText(), "20.0 Hz20.0 kHz");
    ASSERT_TRUE(eq.lowCutValue().setFromDisplayText("1000"));
    eq.update();
    ASSERT_TRUE(eq.lowCutValue().setFromDisplayText("20")); // back to the end: off again
    eq.bands()[ZEqualizerProcessorPlugin::kPeak].enabled = true; // at 0 dB
    eq.update();

    std::mt19937 random(7);
    std::uniform_real_distribution<float> sample(-2.0f, 2.0f);
    std::vector<float> left(4096), right(4096);
    for (size_t n = 0; n < left.size(); ++n)
        left[n] = sample(random), right[n] = sample(random) * 1e-30f;
    const std::vector<float> inLeft = left, inRight = right;
    eq.process(left.data(), right.data(), 4096);
    EXPECT_EQ(left, inLeft);
    EXPECT_EQ(right, inRight);
}

TEST(Equalizer, CutsFallThreeDecibelsAtTheirFrequencyAndTwelvePerOctave)
{
    ZEqualizerProcessorPlugin eq;
    eq.prepare(48000.0);
    ASSERT_TRUE(eq.lowCutValue().setFromDisplayText("1000"));
    EXPECT_FALSE(eq.lowCutValue().setFromDisplayText("0")); // not a frequency: ignored
    eq.update();
    EXPECT_NEAR(decibels(gainAt(eq, 1000.0)), -3.0103, 0.01);
    EXPECT_NEAR(decibels(gainAt(eq, 62.5) / gainAt(eq, 125.0)), -12.0, 0.05);

    ASSERT_TRUE(eq.lowCutValue().setFromDisplayText("20"));
    ASSERT_TRUE(eq.highCutValue().setFromDisplayText("500"));
    eq.update();
    EXPECT_NEAR(decibels(gainAt(eq, 500.0)), -3.0103, 0.01);
}

} // namespace
} // namespace halvern
