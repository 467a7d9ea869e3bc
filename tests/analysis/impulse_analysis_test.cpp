#include "analysis/impulse_analysis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <numeric>
#include <random>

namespace halvern {
namespace {

constexpr double kRate = 48000.0;

// Gaussian noise whose level falls by 60 dB every `decaySeconds`, plus stationary noise
// `floorDb` below the decay's starting level.
std::vector<float> decayingNoise(double seconds, double decaySeconds, unsigned seed, double floorDb = -300.0)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> gauss;
    const double floor = std::pow(10.0, floorDb / 20.0);
    std::vector<float> samples(static_cast<size_t>(seconds * kRate));
    for (size_t n = 0; n < samples.size(); ++n)
        samples[n] = static_cast<float>(gauss(random) * std::pow(10.0, -3.0 * (n / kRate) / decaySeconds) +
                                        floor * gauss(random));
    return samples;
}

// The steady-state gain, in dB, of a sine through the 1 kHz octave filter (the second
// of two seconds).
double octaveGainDb(double probeHz)
{
    std::vector<float> sine(96000);
    for (size_t n = 0; n < sine.size(); ++n)
        sine[n] = static_cast<float>(std::sin(2.0 * std::numbers::pi * probeHz * n / kRate));
    const std::vector<double> out = ZOctaveBandFilter(kRate, 1000.0).apply(sine);
    const double power = std::inner_product(out.begin() + 48000, out.end(), out.begin() + 48000, 0.0) / 48000.0;
    return 10.0 * std::log10(2.0 * power);
}

TEST(ImpulseAnalysisFilter, SixthOrderButterworthOctave)
{
    // 0 dB in the middle, -3.01 dB at the edges. Two octaves off, the prototype sees
    // x = |f/fc - fc/f| / (sqrt2 - 1/sqrt2) = 5.30: -10 log10(1 + x^6) = -43.5 dB (a little
    // more above the centre, where the bilinear transform compresses frequencies).
    EXPECT_NEAR(octaveGainDb(1000.0), 0.0, 0.05);
    EXPECT_NEAR(octaveGainDb(1000.0 / std::numbers::sqrt2), -3.01, 0.05);
    EXPECT_NEAR(octaveGainDb(1000.0 * std::numbers::sqrt2), -3.01, 0.05);
    EXPECT_NEAR(octaveGainDb(250.0), -43.5, 0.5);
    EXPECT_NEAR(octaveGainDb(4000.0), -43.5, 1.0);
}

TEST(ImpulseAnalysis, ExponentialNoiseDecayInEveryBand)
{
    // One noise realisation's decay time scatters by 8 % (one standard deviation) in the
    // 125 Hz band; the mean of eight stereo responses (sixteen realisations) by 2 %.
    for (double decay : {0.5, 2.0}) {
        std::vector<double> mean(kOctaveBandCentres.size() + 1, 0.0); // the bands, then broadband
        for (unsigned seed = 0; seed < 16; seed += 2) {
            const ZImpulseReport report = AnalyseImpulseResponse(
                {kRate, {decayingNoise(1.5 * decay, decay, seed), decayingNoise(1.5 * decay, decay, seed + 1)}});
            for (size_t b = 0; b < mean.size(); ++b)
                mean[b] += (b < report.bands.size() ? report.bands[b] : report.broadband).decay.seconds / 8.0;
        }
        for (size_t b = 0; b < mean.size(); ++b)
            EXPECT_NEAR(mean[b], decay, 0.05 * decay) << b;
    }
}

TEST(ImpulseAnalysis, LowAndHighDecaysLandInTheirBands)
{
    // Noise low-passed at 250 Hz dying in 2 s plus noise high-passed at 4 kHz dying in
    // 0.5 s: the bands up to 500 Hz decay in 2 s, those from 4 kHz in 0.5 s, and the two
    // between, which both reach, fall in order.
    std::vector<std::vector<float>> channels;
    for (unsigned seed : {10, 20}) {
        ZBiquad low, high;
        low.set(ZBiquad::Type::LowPass, kRate, 250.0, std::sqrt(0.5));
        high.set(ZBiquad::Type::HighPass, kRate, 4000.0, std::sqrt(0.5));
        const std::vector<float> slow = decayingNoise(3.0, 2.0, seed), fast = decayingNoise(3.0, 0.5, seed + 1);
        channels.emplace_back(slow.size());
        for (size_t n = 0; n < slow.size(); ++n)
            channels.back()[n] = static_cast<float>(low.process(slow[n]) + high.process(fast[n]));
    }
    const std::vector<ZBandAnalysis> bands = AnalyseImpulseResponse({kRate, channels}).bands;
    for (size_t b : {0, 1, 2})
        EXPECT_NEAR(bands[b].decay.seconds, 2.0, 0.2) << bands[b].centreHz;
    for (size_t b : {5, 6})
        EXPECT_NEAR(bands[b].decay.seconds, 0.5, 0.05) << bands[b].centreHz;
    for (size_t b : {3, 4})
        EXPECT_GT(bands[b].decay.seconds, bands[b + 1].decay.seconds) << bands[b].centreHz;
}

TEST(ImpulseAnalysis, EarlyToLateRatioOfAKnownSplit)
{
    // A unit impulse after `predelay` and, `gap` later, an alternating-sign tail of energy
    // (1 - r) r^n, r = 10^(-6 / (T fs)), 1 in all. The window ends 80 ms after the impulse:
    //   gap 100 ms: early 1, late 1                                       ->  0.00 dB
    //   gap 40 ms, T 0.5 s: late 10^(-6 * 0.04 / 0.5) = 0.331, early 1.669 -> +7.02 dB
    struct Case { double predelay, gap, decay, expectedDb; };
    for (const Case c : {Case{0.0, 0.1, 1.0, 0.0}, Case{0.02, 0.04, 0.5, 7.02}}) {
        const double r = std::pow(10.0, -6.0 / (c.decay * kRate));
        std::vector<float> samples(static_cast<size_t>(3.0 * kRate), 0.0f);
        const size_t impulse = static_cast<size_t>(c.predelay * kRate);
        const size_t tail = impulse + static_cast<size_t>(c.gap * kRate);
        samples[impulse] = 1.0f;
        for (size_t n = tail; n < samples.size(); ++n)
            samples[n] = static_cast<float>((n % 2 ? 1.0 : -1.0) * std::sqrt((1.0 - r) * std::pow(r, n - tail)));
        const std::optional<double> ratio = AnalyseImpulseResponse({kRate, {samples}}).broadband.earlyToLateDb;
        ASSERT_TRUE(ratio);
        EXPECT_NEAR(*ratio, c.expectedDb, 0.02) << c.gap;
    }
}

TEST(ImpulseAnalysis, DynamicRangeDecidesTheMethod)
{
    // A 1 s decay over 3 s with a noise floor: T30 needs the decay 45 dB above the noise,
    // T20 35 dB. Cut off while still decaying, without noise: T30 needs the cut below
    // -35 dB, T20 below -25 dB. Broadband decay times scatter by 0.5 %, so the tolerances
    // show noise left in the integral (+1.5 to +2.5 %) or a cut-off tail taken for noise.
    struct Case { double seconds, floorDb; ZDecayMethod method; double tolerance; };
    for (const Case c : {Case{3.0, -50.0, ZDecayMethod::T30, 0.01}, Case{3.0, -40.0, ZDecayMethod::T20, 0.015},
                         Case{3.0, -28.0, ZDecayMethod::NotMeasurable, 0.0},
                         Case{0.7, -300.0, ZDecayMethod::T30, 0.01}, Case{0.5, -300.0, ZDecayMethod::T20, 0.015}}) {
        const ZAudioData noisy{kRate, {decayingNoise(c.seconds, 1.0, 6, c.floorDb)}};
        const ZDecayTime decay = AnalyseImpulseResponse(noisy).broadband.decay;
        EXPECT_EQ(decay.method, c.method) << c.seconds << " s, floor " << c.floorDb;
        EXPECT_NEAR(decay.seconds, c.method == ZDecayMethod::NotMeasurable ? 0.0 : 1.0, c.tolerance) << c.seconds;
    }
}

TEST(ImpulseAnalysis, SilenceAndBandsPastNyquistInTheTable)
{
    // At 22.05 kHz the 8 kHz band's upper edge (11.3 kHz) is past 0.45 fs; silence has
    // nothing to measure in any band.
    const ZImpulseReport report = AnalyseImpulseResponse({22050.0, {std::vector<float>(22050, 0.0f)}});
    for (const ZBandAnalysis& band : report.bands) {
        EXPECT_EQ(band.available, band.centreHz < 8000.0) << band.centreHz;
        EXPECT_EQ(band.decay.method, ZDecayMethod::NotMeasurable) << band.centreHz;
    }
    const std::string text = FormatImpulseReport(report);
    EXPECT_NE(text.find("\n8 kHz      unavailable\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\nBroadband           -  -                     -\n"), std::string::npos) << text;
}

} // namespace
} // namespace halvern
