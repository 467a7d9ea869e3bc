#include "reverb/late_reverb_network.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>
#include <vector>

namespace halvern {
namespace {

using Settings = ZLateReverbNetwork::Settings;

struct Network {
    ZPrimeTable primes;
    ZLateReverbNetwork net;
    explicit Network(const Settings& s)
    {
        net.prepare(s.sampleRate);
        net.update(s, primes);
        net.reset();
    }
    std::vector<double> run(int samples, double left, double right, bool impulse = true)
    {
        std::vector<double> energy;
        for (int i = 0; i < samples; ++i) {
            double l = 0.0, r = 0.0;
            net.process(i == 0 || !impulse ? left : 0.0, i == 0 || !impulse ? right : 0.0, l, r);
            energy.push_back(l * l + r * r);
        }
        return energy;
    }
};

Settings quiet()
{
    Settings s;
    s.lowDamp = s.highDamp = s.modulation = 0.0;
    return s;
}

double sum(const std::vector<double>& x, double from, double to, double rate = 48000.0)
{
    double total = 0.0;
    for (auto i = size_t(from * rate); i < size_t(to * rate); ++i)
        total += x[i];
    return total;
}

TEST(LateReverbNetwork, LineLengths)
{
    // Size 0.04 s, Width 1 at 48 kHz: τ = 0.06 s, base 2880, step 0.24 × 2880; offset 2240/3 and
    // the primes the room model's diffusers took, as it takes them.
    ZPrimeTable primes;
    for (int wanted : {2240, 746, 1244, 2737, 3086, 1592, 1836, 3330})
        primes.take(wanted);
    Settings s;
    s.stereoOffset = 2240.0 / 3.0;
    ZLateReverbNetwork net;
    net.prepare(s.sampleRate);
    net.update(s, primes);
    EXPECT_DOUBLE_EQ(net.loopTime(), 0.06);
    // Wanted 3626, 2133, 2824, 4317, 4801, 3308 (3313: 3331 is the room's), 3647, 5140.
    EXPECT_EQ(net.lineLengths(), (std::array<int, 8>{3631, 2137, 2833, 4327, 4801, 3313, 3659, 5147}));
    for (double rate : {22050.0, 192000.0})
        for (double size = 0.00333; size <= 0.15; size += 0.01)
            for (double width : {0.0, 0.5, 1.0}) {
                s.size = size, s.width = width, s.sampleRate = rate, s.stereoOffset = 0.02 * rate * width;
                const Network n(s);
                const std::set<int> distinct(n.net.lineLengths().begin(), n.net.lineLengths().end());
                EXPECT_TRUE(distinct.size() == 8 || *distinct.rbegin() > 9973);
                EXPECT_LE(*distinct.rbegin(), n.net.lineCapacity());
            }
}

TEST(LateReverbNetwork, ModeMatrices)
{
    const double d = 0.1; // 0.2 D at D = 0.5
    const std::array<ZMatrix4, 4> half{{
        {{{-0.5, 1, 0, -d}, {1, 0.5, d, 0}, {0, d, -0.5, 1}, {-d, 0, 1, 0.5}}},
        {{{1, 0.5, d, 0}, {-0.5, 1, 0, -d}, {-d, 0, 1, 0.5}, {0, d, -0.5, 1}}},
        {{{-0.5, 1, -d, -d}, {-d, -d, 1, 0.5}, {d, d, -0.5, 1}, {1, 0.5, d, d}}},
        {{{1, 0.5, 0.5, 0.5}, {0.5, -1, 0.5, -0.5}, {0.5, 0.5, -1, -0.5}, {0.5, -0.5, -0.5, 1}}},
    }};
    const std::array<double, 4> halfNormaliser{1 / 1.6, 1 / 1.6, 1 / 1.7, 1 / 2.5};
    const std::array<double, 4> fullNormaliser{1 / 2.2, 1 / 2.2, 1 / 2.4, 1 / 4.0};
    Settings s;
    for (size_t mode = 0; mode < 4; ++mode) {
        s.mode = int32_t(mode), s.reverbDiffusion = 0.5;
        const Network n(s);
        EXPECT_EQ(n.net.baseMatrix(), half[mode]);
        EXPECT_DOUBLE_EQ(n.net.normaliser(), std::sqrt(halfNormaliser[mode]));
        s.reverbDiffusion = 1.0;
        EXPECT_DOUBLE_EQ(Network(s).net.normaliser(), std::sqrt(fullNormaliser[mode]));
    }
    // D = 0: Mode 4 becomes diag(1, −1, −1, 1) with n = 1.
    s.reverbDiffusion = 0.0;
    const Network plain(s);
    EXPECT_EQ(plain.net.baseMatrix(), (ZMatrix4{{{1, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, -1, 0}, {0, 0, 0, 1}}}));
    EXPECT_EQ(plain.net.normaliser(), 1.0);
    // Size 0.15, Width 1, T 30 s: τ = 0.0875 s, 10^(−0.00875) = 0.98005399 per pass, and
    // Mode 3 at D = 1 has n = sqrt(1/2.4) = 0.64549722: every entry × 0.63262213.
    s.size = 0.15, s.reverbTime = 30.0, s.mode = 2, s.reverbDiffusion = 1.0;
    const Network large(s);
    EXPECT_DOUBLE_EQ(large.net.loopTime(), 0.0875);
    for (size_t k = 0; k < 4; ++k)
        for (size_t j = 0; j < 4; ++j)
            EXPECT_NEAR(large.net.decayMatrix()[k][j], large.net.baseMatrix()[k][j] * 0.6326221287, 1e-10);
}

TEST(LateReverbNetwork, InputWeightsFollowThePan)
{
    // p = 0: v = 0.2, −0.4, 0.4, −0.2 in single precision (0.2f = 0.2000000030).
    const Network centre(Settings{});
    using Rows = std::array<std::array<double, 2>, 8>;
    EXPECT_EQ(centre.net.inputWeights(), (Rows{{{0.4000000059604645, 0.0}, {0.10000000149011612, 0.5},
                                                {0.5, 0.20000000298023224}, {0.0, 0.30000001192092896},
                                                {0.30000001192092896, 0.0}, {0.20000000298023224, 0.5},
                                                {0.5, 0.10000000149011612}, {0.0, 0.4000000059604645}}}));
    // p = −1: pair 1 has v = −0.9 and leans left.
    Settings s;
    s.pan = -1.0;
    const Network left(s);
    EXPECT_EQ(left.net.inputWeights()[2][0], 0.5);
    EXPECT_NEAR(left.net.inputWeights()[2][1], 0.45, 1e-7);
    EXPECT_NEAR(left.net.inputWeights()[3][1], 0.05, 1e-7);
}

TEST(LateReverbNetwork, ImpulseLeavesEachLineAfterExactlyItsLength)
{
    // Read before the line filters: each line's input weight, undamped, after its length.
    Settings s = quiet();
    s.lowDamp = 6.0, s.highDamp = 12.0, s.stereoOffset = 2240.0 / 3.0;
    Network n(s);
    const auto e = n.run(4000, 1.0, 0.0);
    const auto first = std::find_if(e.begin(), e.end(), [](double x) { return x > 1e-18; });
    EXPECT_EQ(first - e.begin(), 2137); // B0 on the right, weight 0.1000000015
    EXPECT_NEAR(e[2137], 0.01, 1e-8);
    EXPECT_NEAR(e[2833], 0.25, 1e-12);
    EXPECT_NEAR(e[3631], 0.16, 1e-8);
}

TEST(LateReverbNetwork, DecayFollowsReverbTimeAndDampening)
{
    // Mode 4 at D = 0 is diagonal: each line recirculates alone at ±g = 10^(−3τ/T) per pass.
    // An impulse into both inputs puts energy 2.2 into the lines: the tail holds 2.2 / (1 − g²).
    Settings s = quiet();
    s.size = 0.15, s.mode = 3, s.reverbDiffusion = 0.0, s.stereoOffset = 960.0, s.reverbTime = 1.0;
    const double still = sum(Network(s).run(144000, 1.0, 1.0), 0.0, 3.0);
    EXPECT_NEAR(still, 2.2 / (1.0 - std::pow(10.0, -0.525)), 1e-5);
    // Modulation neither pumps nor drains the tail beyond the interpolator's treble loss.
    s.modulation = 1.0;
    EXPECT_NEAR(sum(Network(s).run(144000, 1.0, 1.0), 0.0, 3.0) / still, 1.0, 0.1);
    // Equal low and high shelves at one frequency: 3 dB per 100 ms is 30 dB more in a second.
    s.modulation = 0.0, s.mode = 2, s.reverbDiffusion = 1.0;
    const auto undamped = Network(s).run(96000, 1.0, 1.0);
    s.lowDamp = s.highDamp = 3.0, s.lowFrequency = s.highFrequency = 3.0;
    const auto damped = Network(s).run(96000, 1.0, 1.0);
    const double loss = 10.0 * std::log10(sum(damped, 1.4, 1.6) / sum(damped, 0.4, 0.6) /
                                          (sum(undamped, 1.4, 1.6) / sum(undamped, 0.4, 0.6)));
    EXPECT_NEAR(loss, -30.0, 0.5);
    // At T = 0.5 s two seconds take the default room far below −120 dB.
    const auto e = Network(quiet()).run(96000 + 9600, 1.0, 1.0);
    EXPECT_LT(sum(e, 2.0, 2.2), 1e-12 * sum(e, 0.0, 0.2));
}

TEST(LateReverbNetwork, ModulationRecomputesEverySixtyFourSamples)
{
    Settings s;
    s.modulation = 1.0, s.modulationFrequency = 0.0; // phase steps of 64/48000 rad
    Network n(s);
    const auto offset = [&](size_t k, size_t j) { return n.net.matrix()[k][j] - n.net.decayMatrix()[k][j]; };
    EXPECT_NEAR(offset(1, 2), 0.01 * std::sin(3.0), 1e-15); // phases start at 0
    n.run(63, 0.1, -0.1, false);
    EXPECT_EQ(offset(0, 0), 0.0);
    n.run(1, 0.1, -0.1, false);
    EXPECT_NEAR(offset(0, 0), 1.3333329382716402e-05, 1e-15); // 0.01 sin(64/48000)
    EXPECT_NEAR(offset(0, 3), 0.001397959322952949, 1e-15);   // 0.01 sin(3 + 1.003 × 64/48000)
    // The cubic Hermite read reproduces a ramp exactly, at any fraction.
    for (double f : {0.0, 0.25, 0.5, 0.9})
        EXPECT_NEAR(HermiteInterpolate(10.0, 9.0, 8.0, 7.0, f), 9.0 - f, 1e-12);
}

TEST(LateReverbNetwork, OnlyAGrowingMatrixIsScaledDown)
{
    // [[1, 1], [0, 1]] has σ = (sqrt 5 + 1) / 2; the bound is at most 0.07 % high.
    const ZMatrix4 shear{{{1, 1, 0, 0}, {0, 1, 0, 0}, {0, 0, 0.5, 0}, {0, 0, 0, -0.5}}};
    const double golden = (std::sqrt(5.0) + 1.0) / 2.0;
    EXPECT_GE(LargestSingularValue(shear), golden);
    EXPECT_LE(LargestSingularValue(shear), golden * 1.0007);
    EXPECT_NEAR(LargestSingularValue({{{0.3, 0, 0, 0}, {0, -2, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}}), 2.0, 1e-9);
    // Smallest room at T = 30 s: 0.9886 per pass; Mode 3 at D = 1 grows to 1.0065, Mode 4 does not.
    Settings s = quiet();
    s.size = 0.00333, s.reverbTime = 30.0, s.mode = 2;
    const Network growing(s);
    EXPECT_GT(LargestSingularValue(growing.net.decayMatrix()), 1.005);
    EXPECT_LE(LargestSingularValue(growing.net.matrix()), 1.0);
    EXPECT_GT(LargestSingularValue(growing.net.matrix()), 0.999);
    s.mode = 3;
    const Network orthogonal(s);
    EXPECT_EQ(orthogonal.net.matrix(), orthogonal.net.decayMatrix());
}

TEST(LateReverbNetwork, StaysBoundedForAMinuteOfNoiseAtTheLongestReverb)
{
    Settings s = quiet();
    s.sampleRate = 8000.0, s.size = 0.00333, s.stereoOffset = 13.0, s.reverbTime = 30.0, s.modulationFrequency = 0.0;
    for (int mode = 0; mode < 4; ++mode)
        for (double diffusion : {0.0, 0.5, 1.0})
            for (double modulation : {0.0, 1.0}) {
                s.mode = mode, s.reverbDiffusion = diffusion, s.modulation = modulation;
                Network n(s);
                std::mt19937 generator(11);
                std::uniform_real_distribution<float> noise(-1.0f, 1.0f);
                std::vector<double> e;
                for (int i = 0; i < 60 * 8000; ++i) {
                    double l = 0.0, r = 0.0;
                    n.net.process(noise(generator), noise(generator), l, r);
                    e.push_back(l * l + r * r);
                }
                const double peak = *std::max_element(e.begin(), e.end());
                EXPECT_TRUE(std::isfinite(peak) && peak < 1e6) << mode << " " << diffusion << " " << modulation;
                EXPECT_LT(sum(e, 50, 60, 8000), 1.5 * sum(e, 20, 30, 8000)) << mode << " " << diffusion << " " << modulation;
            }
}

} // namespace
} // namespace halvern
