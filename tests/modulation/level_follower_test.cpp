#include "modulation/level_follower.h"

#include "tests/modulation/detector_signals.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace halvern {
namespace {

using testing::decibels;
using testing::kRate;
using testing::ToneFeeder;

constexpr int kBlock = 16;

ZLevelFollower makeFollower(const ZLevelFollower::Settings& settings)
{
    ZLevelFollower follower;
    follower.prepare(kRate, kBlock);
    follower.setSettings(settings);
    return follower;
}

// The answer after half a second of a tone.
double steadyAnswer(const ZLevelFollower::Settings& settings, double amplitude, double frequency = 1000.0)
{
    auto follower = makeFollower(settings);
    return ToneFeeder(kBlock).feed(follower, amplitude, frequency, 0.5).back();
}

TEST(LevelFollower, ToneBurstRisesAndFallsInTheSetTimes)
{
    auto follower = makeFollower({.attack = 0.02, .release = 0.08, .hold = 0.002, .mode = ZLFOFollowerMode::Direct});
    ToneFeeder feeder(kBlock);
    // Seconds until the answers first pass a level.
    const auto timeTo = [](const std::vector<double>& answers, auto passed) {
        return static_cast<double>(std::find_if(answers.begin(), answers.end(), passed) - answers.begin() + 1) * kBlock / kRate;
    };

    const auto rise = feeder.feed(follower, 0.5, 1000.0, 0.3);
    EXPECT_NEAR(rise.back(), 0.5, 1e-3);
    EXPECT_NEAR(timeTo(rise, [](double d) { return d >= 0.632 * 0.5; }), 0.02, 0.002);
    // The fall starts once the hold has passed.
    const auto fall = feeder.feed(follower, 0.0, 1000.0, 0.5);
    EXPECT_NEAR(timeTo(fall, [](double d) { return d <= 0.368 * 0.5; }) - 0.002, 0.08, 0.008);
    EXPECT_LT(fall.back(), 1e-3);
}

TEST(LevelFollower, CurvesMapTheLevelRange)
{
    // A -20 dB tone (amplitude 0.1) between -60 dB and 0 dB.
    const auto answer = [](ZLFOFollowerMode mode, double rmsLength) {
        return steadyAnswer({.attack = 0.001, .release = 1.0, .rmsLength = rmsLength, .mode = mode}, 0.1);
    };
    EXPECT_NEAR(answer(ZLFOFollowerMode::Logarithmic, 0.0), 40.0 / 60.0, 2e-3);
    EXPECT_NEAR(answer(ZLFOFollowerMode::Linear, 0.0), (0.1 - 0.001) / (1.0 - 0.001), 1e-3);
    EXPECT_NEAR(answer(ZLFOFollowerMode::Squared, 0.0), (0.01 - 1e-6) / (1.0 - 1e-6), 2e-4);
    // The RMS of a sine is 3.01 dB under its peak: -23.01 dB.
    EXPECT_NEAR(answer(ZLFOFollowerMode::Logarithmic, 0.05), (60.0 - 23.01) / 60.0, 2e-3);
}

TEST(LevelFollower, BandPassAndMaximize)
{
    ZLevelFollower::Settings settings{.bandPass = true, .bandMinimum = 100.0, .bandMaximum = 1000.0,
                                      .mode = ZLFOFollowerMode::Logarithmic};
    // Inside the band a full-scale tone reads about 0 dB; a decade above the low-pass
    // corner it is at least 40 dB down.
    EXPECT_GT(steadyAnswer(settings, 1.0, 300.0), 0.99);
    EXPECT_LT(steadyAnswer(settings, 1.0, 10000.0), 20.0 / 60.0);

    // A steady -30 dB tone sits mid-range; with Maximize it fills the range up to 1.
    settings.bandPass = false;
    EXPECT_NEAR(steadyAnswer(settings, decibels(-30.0)), 0.5, 5e-3);
    settings.maximize = true;
    settings.threshold = -60.0;
    EXPECT_GT(steadyAnswer(settings, decibels(-30.0)), 0.98);
    EXPECT_EQ(steadyAnswer(settings, decibels(-70.0)), 0.0);
}

} // namespace
} // namespace halvern
