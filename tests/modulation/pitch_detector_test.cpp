#include "modulation/pitch_detector.h"

#include "tests/modulation/detector_signals.h"

#include <gtest/gtest.h>

namespace halvern {
namespace {

// d over 55 Hz to 1760 Hz, five octaves, after a shift of `octaves`, `semitones`, `cents`.
double toD(double frequency, double previous = -1.0, double octaves = 0.0, double semitones = 0.0, double cents = 0.0)
{
    return PitchToDetectorValue(frequency, octaves, semitones, cents, 55.0, 1760.0, previous);
}

TEST(PitchDetector, MappingPlacesPitchOnALogScale)
{
    EXPECT_NEAR(toD(220.0), 0.4, 1e-12); // two octaves up
    EXPECT_NEAR(toD(880.0), 0.8, 1e-12);
    EXPECT_EQ(toD(5000.0), 1.0);
    EXPECT_EQ(toD(19.9, 0.3), 0.3); // under 20 Hz the previous value stays
    EXPECT_NEAR(toD(220.0, 0.0, 1.0), 0.6, 1e-12);
    EXPECT_NEAR(toD(220.0, 0.0, 0.0, 12.0), 0.6, 1e-12);
    EXPECT_NEAR(toD(220.0, 0.0, 0.0, 0.0, 1200.0), 0.6, 1e-12);
    // An empty range means 20 Hz to 20 kHz, whose geometric middle is sqrt(20 * 20000).
    EXPECT_NEAR(PitchToDetectorValue(std::sqrt(20.0 * 20000.0), 0, 0, 0, 440.0, 440.0, 0.0), 0.5, 1e-12);
}

TEST(PitchDetector, DetectsTonesAndHoldsInSilence)
{
    ZPitchDetector detector;
    detector.prepare(testing::kRate, 256);
    testing::ToneFeeder feeder(256);
    double d = 0.0;
    const auto detect = [&](double amplitude, double frequency) {
        for (double f : feeder.feed(detector, amplitude, frequency, 0.5))
            d = toD(f, d);
        return d;
    };
    EXPECT_NEAR(detect(0.5, 220.0), 0.4, 0.01);
    EXPECT_NEAR(detect(0.5, 880.0), 0.8, 0.01);
    EXPECT_NEAR(detect(0.0, 0.0), 0.8, 0.01);
    EXPECT_EQ(detector.process(nullptr, 0, 0), 0.0); // silence reports no pitch
    // Below the level threshold (-50 dB) nothing is detected either.
    detector.reset();
    d = 0.25;
    EXPECT_EQ(detect(0.001, 440.0), 0.25);
}

TEST(AutoTune, PullsTowardsTheNearestSemitone)
{
    ZAutoTune tune;
    tune.setSettings({1.0, 1.0});
    EXPECT_NEAR(tune.process(452.0, 256, 48000.0), 440.0, 1e-9);
    tune.setSettings({1.0, 0.5}); // half way in pitch: the geometric mean
    EXPECT_NEAR(tune.process(452.0, 256, 48000.0), std::sqrt(440.0 * 452.0), 1e-9);
    EXPECT_EQ(tune.process(0.0, 256, 48000.0), 0.0);

    // Speed 0.5 glides, 63 % in 0.25 s: partly corrected after one block, fully later.
    tune.reset();
    tune.setSettings({0.5, 1.0});
    const double first = tune.process(452.0, 256, 48000.0);
    EXPECT_GT(first, 441.0);
    EXPECT_LT(first, 452.0);
    for (int block = 0; block < 1000; ++block)
        tune.process(452.0, 256, 48000.0);
    EXPECT_NEAR(tune.process(452.0, 256, 48000.0), 440.0, 1e-3);
}

} // namespace
} // namespace halvern
