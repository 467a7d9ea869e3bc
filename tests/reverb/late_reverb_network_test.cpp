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
};

Settings quiet(Settings s = {})
{
    s.lowDamp = s.highDamp = 0.0;
    s.modulation = 0.0;
    return s;
}

// Energy of the late output over [from, to) seconds after an impulse into both inputs.
std::vector<double> impulseEnergies(const Settings& s, double seconds, double window)
{
    Network n(s);
    const int perWindow = static_cast<int>(window * s.sampleRate);
    std::vector<double> energies;
    double sum = 0.0;
    const int total = static_cast<int>(seconds * s.sampleRate);
    for (int i = 0; i < total; ++i) {
        double left = 0.0, right = 0.0;
        n.net.process(i == 0 ? 1.0 : 0.0, i == 0 ? 1.0 : 0.0, left, right);
        sum += left * left + right * right;
        if ((i + 1) % perWindow == 0) {
            energies.push_back(sum);
            sum = 0.0;
        }
    }
    return energies;
}

double decibels(double ratio) { return 10.0 * std::log10(ratio); }

TEST(LateReverbNetwork, LineLengthsForTheDefaultRoom)
{
    // Size 0.04 s, Width 1 at 48 kHz: W = 0.04, τ = 0.06 s, base = 2880, step = 0.24 × 2880.
    // The room model's t = 5/9 gives base 7/9 × 1920 and offset min(960, 746.67) = 2240/3;
    // its diffusers took the primes for 2240, 746, 1244, 2737, 3086, 1592, 1836, 3330.
    ZPrimeTable primes;
    for (int wanted : {2240, 746, 1244, 2737, 3086, 1592, 1836, 3330})
        primes.take(wanted);
    Settings s;
    s.stereoOffset = 2240.0 / 3.0;
    ZLateReverbNetwork net;
    net.prepare(s.sampleRate);
    net.update(s, primes);
    EXPECT_DOUBLE_EQ(net.loopTime(), 0.06);
    // Wanted 3626, 2133, 2824, 4317, 4801, 3308 (3331 is the room's), 3647 (3631 is A0's), 5140.
    EXPECT_EQ(net.lineLengths(), (std::array<int, 8>{3631, 2137, 2833, 4327, 4801, 3313, 3659, 5147}));
}

TEST(LateReverbNetwork, LengthsAreDistinctAndFitTheLinesForEveryRoom)
{
    for (double rate : {22050.0, 48000.0, 192000.0})
        for (double size = 0.00333; size <= 0.15; size += 0.01)
            for (double width = 0.0; width <= 1.0; width += 0.25) {
                Settings s;
                s.size = size, s.width = width, s.sampleRate = rate;
                s.stereoOffset = 0.02 * rate * width;
                Network n(s);
                const auto& lengths = n.net.lineLengths();
                std::set<int> distinct(lengths.begin(), lengths.end());
                if (*distinct.rbegin() < 10000) {
                    EXPECT_EQ(distinct.size(), 8u);
                }
                EXPECT_LE(*distinct.rbegin(), n.net.lineCapacity()) << size << " " << width << " " << rate;
            }
}

TEST(LateReverbNetwork, ModeMatricesAndNormalisers)
{
    const double d = 0.1; // 0.2 × D at D = 0.5
    const std::array<ZMatrix4, 4> expected{{
        {{{-0.5, 1, 0, -d}, {1, 0.5, d, 0}, {0, d, -0.5, 1}, {-d, 0, 1, 0.5}}},
        {{{1, 0.5, d, 0}, {-0.5, 1, 0, -d}, {-d, 0, 1, 0.5}, {0, d, -0.5, 1}}},
        {{{-0.5, 1, -d, -d}, {-d, -d, 1, 0.5}, {d, d, -0.5, 1}, {1, 0.5, d, d}}},
        {{{1, 0.5, 0.5, 0.5}, {0.5, -1, 0.5, -0.5}, {0.5, 0.5, -1, -0.5}, {0.5, -0.5, -0.5, 1}}},
    }};
    const std::array<double, 4> halfNormaliser{std::sqrt(1 / 1.6), std::sqrt(1 / 1.6), std::sqrt(1 / 1.7), std::sqrt(1 / 2.5)};
    const std::array<double, 4> fullNormaliser{std::sqrt(1 / 2.2), std::sqrt(1 / 2.2), std::sqrt(1 / 2.4), 0.5};
    for (int mode = 0; mode < 4; ++mode) {
        Settings s;
        s.mode = mode;
        s.reverbDiffusion = 0.5;
        const Network half(s);
        for (size_t k = 0; k < 4; ++k)
            for (size_t j = 0; j < 4; ++j)
                EXPECT_DOUBLE_EQ(half.net.baseMatrix()[k][j], expected[size_t(mode)][k][j]) << mode << k << j;
        EXPECT_DOUBLE_EQ(half.net.normaliser(), halfNormaliser[size_t(mode)]);

        s.reverbDiffusion = 1.0;
        EXPECT_DOUBLE_EQ(Network(s).net.normaliser(), fullNormaliser[size_t(mode)]);

        // Diffusion 0: one ±1 per row and column, no normalisation.
        s.reverbDiffusion = 0.0;
        const Network plain(s);
        EXPECT_EQ(plain.net.normaliser(), 1.0);
        for (size_t k = 0; k < 4; ++k) {
            double rowSum = 0.0, columnSum = 0.0;
            for (size_t j = 0; j < 4; ++j) {
                rowSum += std::fabs(plain.net.baseMatrix()[k][j]);
                columnSum += std::fabs(plain.net.baseMatrix()[j][k]);
            }
            EXPECT_EQ(rowSum, 1.0);
            EXPECT_EQ(columnSum, 1.0);
            if (mode == 3) {
                EXPECT_EQ(std::fabs(plain.net.baseMatrix()[k][k]), 1.0);
            }
        }
    }
}

TEST(LateReverbNetwork, DecayScalingOfTheLargestRoom)
{
    // Size 0.15, Width 1: τ = 0.25 × 0.15 + 0.05 = 0.0875 s; T = 30 s gives
    // 10^(−0.00875) = 0.98005399 per pass; Mode 3 at D = 1 has n = sqrt(1/2.4) = 0.64549722.
    Settings s = quiet();
    s.size = 0.15, s.reverbTime = 30.0, s.mode = 2;
    const Network n(s);
    EXPECT_DOUBLE_EQ(n.net.loopTime(), 0.0875);
    EXPECT_NEAR(n.net.decayMatrix()[0][0], -0.6326221287, 1e-10);
    EXPECT_NEAR(n.net.decayMatrix()[1][0], -0.1265244257, 1e-10);
    for (size_t k = 0; k < 4; ++k)
        for (size_t j = 0; j < 4; ++j)
            EXPECT_NEAR(n.net.decayMatrix()[k][j], n.net.baseMatrix()[k][j] * 0.6326221287, 1e-10);
}

TEST(LateReverbNetwork, InputWeightsFollowThePan)
{
    // p = 0: v = 0.2, −0.4, 0.4, −0.2, each formed in single precision (0.2f = 0.2000000030).
    Settings s;
    const Network centred(s);
    const auto& centre = centred.net.inputWeights();
    using Row = std::array<double, 2>;
    EXPECT_EQ(centre[0], (Row{0.4000000059604645, 0.0}));
    EXPECT_EQ(centre[1], (Row{0.10000000149011612, 0.5}));
    EXPECT_EQ(centre[2], (Row{0.5, 0.20000000298023224}));
    EXPECT_EQ(centre[3], (Row{0.0, 0.30000001192092896}));
    EXPECT_EQ(centre[6], (Row{0.5, 0.10000000149011612}));
    EXPECT_EQ(centre[7], (Row{0.0, 0.4000000059604645}));

    // p = 1: v = 0.7, 0.1, 0.9, 0.3, all to the right branch; p = −1: v = −0.3, −0.9, −0.1, −0.7.
    const std::array<double, 4> right{0.7, 0.1, 0.9, 0.3};
    s.pan = 1.0;
    Network toRight(s);
    s.pan = -1.0;
    Network toLeft(s);
    for (size_t k = 0; k < 4; ++k) {
        const auto& r = toRight.net.inputWeights();
        EXPECT_NEAR(r[2 * k][0], 0.5 * (1.0 - right[k]), 1e-7);
        EXPECT_EQ(r[2 * k][1], 0.0);
        EXPECT_NEAR(r[2 * k + 1][0], 0.5 * right[k], 1e-7);
        EXPECT_EQ(r[2 * k + 1][1], 0.5);
        const auto& l = toLeft.net.inputWeights();
        const double v = right[k] - 1.0;
        EXPECT_EQ(l[2 * k][0], 0.5);
        EXPECT_NEAR(l[2 * k][1], -0.5 * v, 1e-7);
        EXPECT_EQ(l[2 * k + 1][0], 0.0);
        EXPECT_NEAR(l[2 * k + 1][1], 0.5 * (1.0 + v), 1e-7);
    }
}

TEST(LateReverbNetwork, ImpulseLeavesEachLineAfterExactlyItsLength)
{
    // Default room with offset 2240/3 and no room lines taken: A0 = 3631, B0 = 2137,
    // A1 = 2833 (first left arrival, weight 0.5), later A0 with weight 0.4000000060.
    // The output is taken before the line filters, so each first arrival is its weight.
    Settings s = quiet();
    s.lowDamp = 6.0, s.highDamp = 12.0;
    s.stereoOffset = 2240.0 / 3.0;
    Network n(s);
    std::vector<double> left;
    for (int i = 0; i < 4000; ++i) {
        double l = 0.0, r = 0.0;
        n.net.process(i == 0 ? 1.0 : 0.0, 0.0, l, r);
        left.push_back(l);
    }
    const int a1 = n.net.lineLengths()[2], a0 = n.net.lineLengths()[0];
    const auto first = std::find_if(left.begin(), left.end(), [](double x) { return std::fabs(x) > 1e-9; });
    EXPECT_EQ(first - left.begin(), a1);
    EXPECT_NEAR(left[size_t(a1)], 0.5, 1e-12);
    EXPECT_NEAR(left[size_t(a0)], 0.4000000059604645, 1e-12);
}

TEST(LateReverbNetwork, DecayFollowsReverbTimeAndDampening)
{
    // Mode 4 at D = 0 is diagonal: every line recirculates alone with gain ±g per pass,
    // g = 10^(−3τ/T), through a lossless all-pass. An impulse into both inputs at p = 0
    // puts 0.4, 0.6, 0.7, 0.3, 0.3, 0.7, 0.6, 0.4 into the lines, so the whole tail holds
    // 2.2 / (1 − g²): at τ = 0.0875 s and T = 1 s, g² = 10^(−0.525) = 0.29854 and 3.1363.
    Settings s = quiet();
    s.size = 0.15, s.mode = 3, s.reverbDiffusion = 0.0, s.stereoOffset = 960.0, s.reverbTime = 1.0;
    const auto still = impulseEnergies(s, 3.0, 3.0);
    EXPECT_NEAR(still[0], 2.2 / (1.0 - std::pow(10.0, -0.525)), 1e-5);
    // Modulation neither pumps nor drains the tail, beyond the interpolator's treble loss
    // on the lines that start at half-sample delays.
    s.modulation = 1.0;
    const auto moving = impulseEnergies(s, 3.0, 3.0);
    EXPECT_NEAR(moving[0] / still[0], 1.0, 0.1);

    // At T = 0.5 s two seconds take the tail far below −120 dB.
    s = quiet();
    s.reverbTime = 0.5;
    const auto e = impulseEnergies(s, 2.2, 0.2);
    EXPECT_LT(e[10], 1e-12 * e[0]);

    // Equal low and high shelves at one frequency multiply to a flat gain, so 3 dB per
    // 100 ms of travel takes 30 dB more in that second, whatever the line lengths.
    s.size = 0.15, s.mode = 2, s.reverbDiffusion = 1.0, s.reverbTime = 1.0;
    const auto undamped = impulseEnergies(s, 1.6, 0.2);
    s.lowDamp = s.highDamp = 3.0;
    s.lowFrequency = s.highFrequency = 3.0;
    const auto damped = impulseEnergies(s, 1.6, 0.2);
    EXPECT_NEAR(decibels(damped[7] / damped[2]) - decibels(undamped[7] / undamped[2]), -30.0, 0.5);
}

TEST(LateReverbNetwork, ModulationRecomputesEverySixtyFourSamples)
{
    Settings s;
    s.modulation = 1.0, s.modulationFrequency = 0.0; // 1 rad/s: 64/48000 per interval
    Network n(s);
    const auto offset = [&](size_t k, size_t j) { return n.net.matrix()[k][j] - n.net.decayMatrix()[k][j]; };
    EXPECT_NEAR(offset(1, 2), 0.01 * std::sin(3.0), 1e-15); // phases start at 0
    double l = 0.0, r = 0.0;
    for (int i = 0; i < 63; ++i)
        n.net.process(0.1, -0.1, l, r);
    EXPECT_EQ(offset(0, 0), 0.0);
    n.net.process(0.1, -0.1, l, r);
    EXPECT_NEAR(offset(0, 0), 1.3333329382716402e-05, 1e-15); // 0.01 sin(64/48000)
    EXPECT_NEAR(offset(0, 3), 0.001397959322952949, 1e-15);  // 0.01 sin(3 + 1.003 × 64/48000)

    // Without modulation the matrix is never touched.
    s.modulation = 0.0;
    Network still(s);
    for (int i = 0; i < 200; ++i)
        still.net.process(0.1, -0.1, l, r);
    EXPECT_EQ(still.net.matrix(), still.net.decayMatrix());
}

TEST(LateReverbNetwork, ModulatedTapReadsBetweenSamples)
{
    // Cubic Hermite reproduces a ramp exactly: at delay d the ramp n returns n − d.
    ZModulatedTap tap;
    tap.glideTo(3.25, 0);
    double y = 0.0;
    for (int n = 0; n < 20; ++n)
        y = tap.process(n);
    EXPECT_NEAR(y, 19 - 3.25, 1e-12);
    tap.glideTo(5.0, 4);
    for (int n = 20; n < 24; ++n)
        y = tap.process(n);
    EXPECT_NEAR(y, 23 - 5.0, 1e-12);
}

TEST(LateReverbNetwork, LargestSingularValue)
{
    // [[1, 1], [0, 1]] has singular values (sqrt 5 ± 1) / 2.
    const ZMatrix4 shear{{{1, 1, 0, 0}, {0, 1, 0, 0}, {0, 0, 0.5, 0}, {0, 0, 0, -0.5}}};
    const ZMatrix4 hadamard{{{.5, .5, .5, .5}, {.5, -.5, .5, -.5}, {.5, .5, -.5, -.5}, {.5, -.5, -.5, .5}}};
    const ZMatrix4 diagonal{{{0.3, 0, 0, 0}, {0, -2, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
    const double golden = (std::sqrt(5.0) + 1.0) / 2.0;
    EXPECT_GE(LargestSingularValue(shear), golden - 1e-12);
    EXPECT_LE(LargestSingularValue(shear), golden * 1.0007);
    EXPECT_GE(LargestSingularValue(hadamard), 1.0 - 1e-12);
    EXPECT_LE(LargestSingularValue(hadamard), 1.0007);
    EXPECT_NEAR(LargestSingularValue(diagonal), 2.0, 1e-9);
}

TEST(LateReverbNetwork, OnlyAGrowingMatrixIsScaledDown)
{
    // Smallest room (τ ≈ 0.05 s) at T = 30 s: 10^(−0.005) = 0.9886 per pass. Mode 3 at
    // D = 1 has n σ(M) = 1.0182, so 1.0065 after decay; Mode 4 (orthonormal) stays at 0.9886.
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
    s.sampleRate = 8000.0;
    s.size = 0.00333, s.width = 1.0, s.stereoOffset = 13.0;
    s.reverbTime = 30.0;
    s.modulationFrequency = 0.0;
    const int second = 8000;
    for (int mode = 0; mode < 4; ++mode)
        for (double diffusion : {0.0, 0.5, 1.0})
            for (double modulation : {0.0, 1.0}) {
                s.mode = mode, s.reverbDiffusion = diffusion, s.modulation = modulation;
                Network n(s);
                std::mt19937 generator(11);
                std::uniform_real_distribution<float> noise(-1.0f, 1.0f);
                double early = 0.0, late = 0.0, peak = 0.0;
                for (int i = 0; i < 60 * second; ++i) {
                    double l = 0.0, r = 0.0;
                    n.net.process(noise(generator), noise(generator), l, r);
                    peak = std::max({peak, std::fabs(l), std::fabs(r)});
                    if (i >= 20 * second && i < 30 * second)
                        early += l * l + r * r;
                    if (i >= 50 * second)
                        late += l * l + r * r;
                }
                EXPECT_TRUE(std::isfinite(peak));
                EXPECT_LT(peak, 1000.0) << mode << " " << diffusion << " " << modulation;
                EXPECT_LT(late, 1.5 * early) << mode << " " << diffusion << " " << modulation;
            }
}

} // namespace
} // namespace halvern
