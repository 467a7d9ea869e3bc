#include "reverb/reverb_gate.h"

#include <gtest/gtest.h>

#include <cmath>

namespace halvern {
namespace {

// Feeds a constant level to both channels for `samples` samples; returns the last output.
float runConstant(ZReverbGate& gate, float level, double samples)
{
    float left = 0.0f, right = 0.0f;
    for (int n = 0; n < samples; ++n) {
        left = right = level;
        gate.process(&left, &right, 1);
    }
    return left;
}

TEST(ReverbGate, CoefficientsAndTransferCurve)
{
    ZReverbGate gate;
    gate.configure(48000.0, -50.0, 12.0, 0.001, 0.1);
    const ZReverbGate::Coefficients& c = gate.coefficients();
    EXPECT_DOUBLE_EQ(c.smoother, 0.8119363461506349);     // exp(-1 / 4.8)
    EXPECT_DOUBLE_EQ(c.attack, 0.9793821813312401);       // exp(-1 / 48)
    EXPECT_DOUBLE_EQ(c.release, 0.9997916883665486);      // exp(-1 / 4800)
    EXPECT_DOUBLE_EQ(c.threshold, 0.0031622776601683794); // 10^-2.5
    EXPECT_DOUBLE_EQ(c.floor, 0.0007943282347242813);     // 10^-3.1
    gate.configure(0.0, 0.0, 0.0, 0.0, 0.0);
    EXPECT_EQ(c.smoother + c.attack + c.release, 0.0);

    // Threshold 0.1 and floor 0.05 (size 20 log10 2 dB): 0.075 is half-way up the ramp,
    // so the curve gives 0.05, a gain of 2/3.
    gate.configure(48000.0, -20.0, 20.0 * std::log10(2.0), 0.001, 0.1);
    EXPECT_NEAR(runConstant(gate, 0.075f, 9600), 0.05f, 1e-6);
}

TEST(ReverbGate, PassesALoudLevelAndClosesOnceTheHeldPowerHasDecayed)
{
    ZReverbGate gate;
    gate.configure(48000.0, -50.0, 12.0, 0.001, 0.1);
    // Open from the threshold up, above full scale too: levels of 2 and 40 (the power
    // clamp at 100 caps the follower at 10) pass unchanged.
    ZReverbGate loud;
    loud.configure(48000.0, -50.0, 12.0, 0.001, 0.1);
    EXPECT_FLOAT_EQ(runConstant(loud, 2.0f, 4800), 2.0f);
    EXPECT_FLOAT_EQ(runConstant(loud, 40.0f, 4800), 40.0f);
    EXPECT_NEAR(runConstant(gate, 0.5f, 4800), 0.5f, 1e-6);
    // A level below the floor B = 10^-3.1 is cut once the held power has fallen from 0.25
    // to B^2 at 0.9999 per sample: ln(B^2 / 0.25) / ln(0.9999) samples = 2.69 s, plus the
    // follower's release lag.
    EXPECT_GT(runConstant(gate, 1e-5f, 2.6 * 48000), 0.0f);
    EXPECT_EQ(runConstant(gate, 1e-5f, 0.4 * 48000), 0.0f);
    // Long silence keeps it closed, the follower finite and above zero (no 0 / 0).
    runConstant(gate, 0.0f, 10 * 48000);
    EXPECT_TRUE(std::isfinite(gate.followerLevel()) && gate.followerLevel() > 0.0);
    EXPECT_EQ(runConstant(gate, 1e-5f, 1), 0.0f);
}

TEST(ReverbGate, ZeroReleaseFollowsAFallingLevelAtOnce)
{
    // One silent sample after 0.5 lowers the held power to 0.25 * 0.9999 and the level to
    // its root; a release of 0.1 s would have kept the follower within 1e-8 of 0.5.
    ZReverbGate gate;
    gate.configure(48000.0, -50.0, 12.0, 0.001, 0.0);
    runConstant(gate, 0.5f, 4800);
    runConstant(gate, 0.0f, 1);
    EXPECT_NEAR(gate.followerLevel(), std::sqrt(0.25 * ZReverbGate::kHold), 1e-9);
}

} // namespace
} // namespace halvern
