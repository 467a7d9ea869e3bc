#include "modulation/random_modulator.h"

#include <gtest/gtest.h>

namespace halvern {
namespace {

ZRandomModulator makeRandom(double speed, double smoothness, uint32_t seed = 3)
{
    ZRandomModulator random;
    random.setSettings({speed, smoothness, seed});
    return random;
}

TEST(RandomModulator, SameSongSameSequenceOtherSeedOtherSequence)
{
    auto first = makeRandom(0.3, 0.4, 7);
    auto second = makeRandom(0.3, 0.4, 7);
    const auto other = makeRandom(0.3, 0.4, 8);
    int differing = 0;
    double sum = 0.0;
    for (int i = 0; i < 4000; ++i) {
        const double position = i * 0.37 - 10.0;
        const double value = first.process(position, 120.0, true, 256, 48000.0);
        EXPECT_EQ(value, second.process(position, 120.0, true, 256, 48000.0));
        EXPECT_TRUE(value >= 0.0 && value < 1.0) << value;
        differing += value != other.valueAt(position) ? 1 : 0;
        sum += value;
    }
    EXPECT_GT(differing, 3900);
    EXPECT_NEAR(sum / 4000.0, 0.5, 0.02); // uniform values average one half
}

TEST(RandomModulator, SpeedStepsAndGlides)
{
    // Smoothness 0: one value per beat, held for the whole beat.
    const auto steps = makeRandom(0.0, 0.0);
    EXPECT_EQ(steps.valueAt(3.1), steps.valueAt(3.9));
    EXPECT_NE(steps.valueAt(3.9), steps.valueAt(4.1));
    // Speed 25 % doubles the rate: position 0.6 falls in the step that 1.2 does at 0 %.
    EXPECT_EQ(makeRandom(0.25, 0.0).valueAt(0.6), steps.valueAt(1.2));
    EXPECT_DOUBLE_EQ(makeRandom(-1.0, 0.0).valuesPerBeat(), 1.0 / 16.0);

    // Smoothness 1 glides along a half cosine: the step's value at its start, the mean
    // of two neighbours halfway. Smoothness 0.5 holds the first half of each step.
    const auto smooth = makeRandom(0.0, 1.0);
    EXPECT_DOUBLE_EQ(smooth.valueAt(5.0), steps.valueAt(5.0));
    EXPECT_NEAR(smooth.valueAt(5.5), 0.5 * (steps.valueAt(5.0) + steps.valueAt(6.0)), 1e-12);
    EXPECT_DOUBLE_EQ(makeRandom(0.0, 0.5).valueAt(5.4), steps.valueAt(5.0));

    // Without a host position it runs on at the tempo: 24000 samples are one beat at
    // 120 BPM and 48 kHz.
    auto running = makeRandom(0.0, 0.0);
    for (int block = 0; block < 100; ++block)
        running.process(0.0, 120.0, false, 240, 48000.0);
    EXPECT_EQ(running.process(0.0, 120.0, false, 240, 48000.0), steps.valueAt(1.0));
}

} // namespace
} // namespace halvern
