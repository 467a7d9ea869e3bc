#include "core/oversampler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

namespace halvern {
namespace {

constexpr double kRate = 48000.0;
constexpr double kAmplitude = 0.5;
constexpr double kTenthOfDb = 0.0114; // relative amplitude change of 0.1 dB
constexpr double kRejection = 1e-4;   // 80 dB

std::vector<float> sine(int count, double cyclesPerSample)
{
    std::vector<float> x(static_cast<size_t>(count));
    for (int n = 0; n < count; ++n)
        x[static_cast<size_t>(n)] = static_cast<float>(kAmplitude * std::sin(2.0 * std::numbers::pi * cyclesPerSample * n));
    return x;
}

std::vector<float> noise(int count)
{
    std::mt19937 generator(7);
    std::vector<float> x(static_cast<size_t>(count));
    std::generate(x.begin(), x.end(), [&] { return std::uniform_real_distribution<float>(-1.0f, 1.0f)(generator); });
    return x;
}

// Amplitude of one frequency in x from begin on; exact over whole periods of every tone.
double amplitudeAt(const std::vector<float>& x, int begin, double cyclesPerSample)
{
    double sineSum = 0.0;
    double cosineSum = 0.0;
    for (size_t n = static_cast<size_t>(begin); n < x.size(); ++n) {
        sineSum += x[n] * std::sin(2.0 * std::numbers::pi * cyclesPerSample * static_cast<double>(n));
        cosineSum += x[n] * std::cos(2.0 * std::numbers::pi * cyclesPerSample * static_cast<double>(n));
    }
    return 2.0 * std::hypot(sineSum, cosineSum) / static_cast<double>(x.size() - static_cast<size_t>(begin));
}

std::vector<float> up(ZOversampler& oversampler, const std::vector<float>& in)
{
    std::vector<float> out(in.size() * static_cast<size_t>(oversampler.factor()));
    oversampler.upsample(in.data(), out.data(), static_cast<int>(in.size()));
    return out;
}

std::vector<float> down(ZOversampler& oversampler, const std::vector<float>& in)
{
    std::vector<float> out(in.size() / static_cast<size_t>(oversampler.factor()));
    oversampler.downsample(in.data(), out.data(), static_cast<int>(out.size()));
    return out;
}

ZOversampler prepared(int factor, int maxBaseBlock = 4096)
{
    ZOversampler oversampler;
    oversampler.prepare(factor, maxBaseBlock);
    return oversampler;
}

class OversamplerFactor : public ::testing::TestWithParam<int> {};

TEST_P(OversamplerFactor, RoundTripKeepsPassbandTonesAndDelaysThemByLatency)
{
    // 4800 samples after settling hold whole periods of 1 kHz and of 19.2 kHz (0.4 x rate).
    for (const double hz : {1000.0, 19200.0}) {
        ZOversampler oversampler = prepared(GetParam());
        const std::vector<float> in = sine(480 + 4800, hz / kRate);
        const std::vector<float> out = down(oversampler, up(oversampler, in));
        EXPECT_NEAR(amplitudeAt(out, 480, hz / kRate), kAmplitude, kAmplitude * kTenthOfDb) << hz;
        double worst = 0.0;
        for (size_t n = 480; n < out.size(); ++n)
            worst = std::max(worst, std::abs(static_cast<double>(out[n]) - in[n - static_cast<size_t>(oversampler.latency())]));
        EXPECT_LT(worst, 1e-4) << hz; // a delay one sample off leaves 0.065 at 1 kHz
    }
}

TEST_P(OversamplerFactor, UpsamplingKeepsTheToneAndRejectsItsImages)
{
    // The 20 ms after settling hold whole periods of every multiple of 1 kHz.
    const int factor = GetParam();
    const double highRate = kRate * factor;
    for (const double hz : {1000.0, 18000.0}) {
        ZOversampler oversampler = prepared(factor);
        const std::vector<float> out = up(oversampler, sine(200 + 960, hz / kRate));
        const int settled = 200 * factor;
        EXPECT_NEAR(amplitudeAt(out, settled, hz / highRate), kAmplitude, kAmplitude * kTenthOfDb) << hz;
        for (double multiple = kRate; multiple - hz < highRate / 2; multiple += kRate)
            for (const double image : {multiple - hz, multiple + hz})
                if (image < highRate / 2) {
                    EXPECT_LT(amplitudeAt(out, settled, image / highRate), kAmplitude * kRejection) << hz << " at " << image;
                }
    }
}

TEST_P(OversamplerFactor, DownsamplingRejectsEveryToneAboveBaseNyquist)
{
    const int factor = GetParam();
    for (int step = 0; step < 100; ++step) {
        const double cyclesPerHighSample = (0.5 + step * (factor - 1) / 200.0) / factor;
        ZOversampler oversampler = prepared(factor);
        const std::vector<float> out = down(oversampler, sine(600 * factor, cyclesPerHighSample));
        const auto louder = [](float a, float b) { return std::abs(a) < std::abs(b); };
        EXPECT_LT(std::abs(*std::max_element(out.begin() + 200, out.end(), louder)), kAmplitude * kRejection)
            << cyclesPerHighSample * factor << " x base rate";
    }
}

TEST_P(OversamplerFactor, OutputDoesNotDependOnBlockSizeAndResetForgetsEarlierInput)
{
    const int factor = GetParam();
    const std::vector<float> baseIn = noise(3000);
    const std::vector<float> highIn = noise(3000 * factor);
    ZOversampler whole = prepared(factor, 3000);
    const std::vector<float> upReference = up(whole, baseIn);
    const std::vector<float> downReference = down(whole, highIn);
    // 3000 exceeds the prepared 512, so a single call is split inside.
    ZOversampler oversampler = prepared(factor, 512);
    for (const int block : {1, 7, 512, 3000}) {
        oversampler.reset(); // after the first pass, the earlier passes' input must be forgotten
        std::vector<float> upOut(upReference.size());
        std::vector<float> downOut(downReference.size());
        for (int start = 0; start < 3000; start += block) {
            const int count = std::min(block, 3000 - start);
            oversampler.upsample(&baseIn[static_cast<size_t>(start)], &upOut[static_cast<size_t>(start * factor)], count);
            oversampler.downsample(&highIn[static_cast<size_t>(start * factor)], &downOut[static_cast<size_t>(start)], count);
        }
        EXPECT_EQ(upOut, upReference) << block;
        EXPECT_EQ(downOut, downReference) << block;
    }
}

INSTANTIATE_TEST_SUITE_P(OversamplerFactors, OversamplerFactor,
                         ::testing::Range(ZOversampler::kMinFactor, ZOversampler::kMaxFactor + 1));

} // namespace
} // namespace halvern
