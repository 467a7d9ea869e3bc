#include "analysis/shape_from_sound.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>
#include <random>

namespace halvern {
namespace {

constexpr int kSteps = 32;

// Stereo, silent for 10 ms, then the signal for `seconds`.
ZAudioData sound(double rate, double seconds, const std::function<double(double)>& signal)
{
    const size_t silence = static_cast<size_t>(0.01 * rate);
    std::vector<float> samples(silence + static_cast<size_t>(seconds * rate), 0.0f);
    for (size_t n = silence; n < samples.size(); ++n)
        samples[n] = static_cast<float>(signal(static_cast<double>(n - silence) / rate));
    return {rate, {samples, samples}};
}

double fraction(double x) { return x - std::floor(x); }

TEST(ShapeFromSound, OneCycleOfASineAndOfASaw)
{
    // A sine's cycle from its upward zero crossing: the sine sampled at the steps'
    // centres, scaled so the largest is 1.
    const std::vector<double> sine =
        StepsFromSound(sound(44100.0, 0.5, [](double t) { return 0.3 * std::sin(2.0 * std::numbers::pi * 441.0 * t); }),
                       ZShapeSource::Cycle, kSteps);
    ASSERT_EQ(sine.size(), static_cast<size_t>(kSteps));
    const double largest = std::sin(2.0 * std::numbers::pi * 7.5 / kSteps);
    for (int i = 0; i < kSteps; ++i)
        EXPECT_NEAR(sine[static_cast<size_t>(i)], std::sin(2.0 * std::numbers::pi * (i + 0.5) / kSteps) / largest, 0.01) << i;

    // A rising saw crosses zero upwards in the middle of its ramp: the cycle rises from 0
    // to 1, falls to -1 halfway and rises back to 0. The one step holding the fall
    // (between two samples) is softened; every other step is the ramp's mean.
    const std::vector<double> saw =
        StepsFromSound(sound(48000.0, 0.3, [](double t) { return 0.8 * (2.0 * fraction(150.0 * t) - 1.0); }),
                       ZShapeSource::Cycle, kSteps);
    const double top = 2.0 * fraction(15.5 / kSteps + 0.5) - 1.0;
    double error = 0.0;
    for (int i = 0; i < kSteps; ++i) {
        const double expected = (2.0 * fraction((i + 0.5) / kSteps + 0.5) - 1.0) / top;
        EXPECT_NEAR(saw[static_cast<size_t>(i)], expected, i == 15 ? 0.12 : 0.02) << i;
        error += std::abs(saw[static_cast<size_t>(i)] - expected) / kSteps;
    }
    EXPECT_LT(error, 0.01);
}

TEST(ShapeFromSound, EnvelopeOfADecayAndSoundsWithoutAShape)
{
    // A 1 kHz tone dying away with a 0.2 s time constant is audible (within 40 dB of its
    // peak) for 0.92 s; its RMS per step falls as the exponential does, scaled to 1 .. -1.
    const double tau = 0.2, audible = tau * std::log(100.0);
    const std::vector<double> envelope = StepsFromSound(
        sound(48000.0, 1.2, [&](double t) { return std::exp(-t / tau) * std::sin(2.0 * std::numbers::pi * 1000.0 * t); }),
        ZShapeSource::Envelope, kSteps);
    const double step = audible / kSteps;
    for (int i = 0; i < kSteps; ++i)
        EXPECT_NEAR(envelope[static_cast<size_t>(i)], 2.0 * std::exp(-i * step / tau) - 1.0, 0.03) << i;

    EXPECT_THROW(StepsFromSound(sound(48000.0, 0.5, [](double) { return 0.0; }), ZShapeSource::Envelope, kSteps),
                 ZShapeFromSoundError);
    std::mt19937 random(7);
    std::normal_distribution<double> noise(0.0, 0.2);
    EXPECT_THROW(StepsFromSound(sound(48000.0, 0.5, [&](double) { return noise(random); }), ZShapeSource::Cycle, kSteps),
                 ZShapeFromSoundError);
}

} // namespace
} // namespace halvern
