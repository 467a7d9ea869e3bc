#include "reverb/saturation_shaper.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace halvern {
namespace {

TEST(Saturation, EveryCurveIsContinuousOddMonotonicAndLimited)
{
    const auto names = ZEnumNames<ZSaturationMode>::names();
    ZSaturationShaper shaper;
    for (int mode = 0; mode < 7; ++mode) {
        SCOPED_TRACE(names[static_cast<size_t>(mode)]);
        shaper.setMode(mode);
        const double t = shaper.knee();
        ASSERT_TRUE(t >= 0.0 && t < 1.0);
        EXPECT_EQ(shaper.shapeAboveKnee(0.0), 0.0);
        for (double x : {1.0, 1.0000001, std::numeric_limits<double>::infinity()})
            EXPECT_TRUE(shaper.shape(x) == 1.0 && shaper.shape(-x) == -1.0) << x;
        // No step at the knee, nor where the curve meets the limit at |x| = 1.
        EXPECT_NEAR(shaper.shape(t + 1e-9), shaper.shape(t - 1e-9), 4e-9);
        EXPECT_NEAR(shaper.shape(1.0 - 1e-9), 1.0, 1e-8);
        for (double x = 0.0; x <= 1.2; x += 0.001) {
            EXPECT_GE(shaper.shape(x + 0.001), shaper.shape(x)) << x;
            EXPECT_EQ(shaper.shape(-x), -shaper.shape(x)) << x;
        }
    }
}

TEST(Saturation, BlendAddsTheSquaredDifference)
{
    ZSaturationShaper shaper;
    shaper.setMode(static_cast<int>(ZSaturationMode::Soft2)); // the cubic: y = 1.5 x - 0.5 x^3
    // s = 0.5. x = 0.5: y = 0.6875, (0.1875^2 + 0.6875) * 0.5 + 0.25 = 0.611328125; x = -0.5
    // keeps the even term positive: (0.03515625 - 0.6875) * 0.5 - 0.25. From |x| = 1 on
    // y = +-1: x = 1.5 gives (0.25 + 1) * 0.5 + 0.75, x = -1 stays -1.
    float left[] = {0.5f, -0.5f, 1.5f, -1.0f};
    float right[] = {0.0f, 0.0f, 0.0f, 0.0f};
    shaper.process(left, right, 4, 0.5);
    EXPECT_EQ(std::vector<float>(left, left + 4), (std::vector<float>{0.611328125f, -0.576171875f, 1.375f, -1.0f}));
    EXPECT_EQ(right[0], 0.0f);

    // The hard clipper at s = 1: gain 1 / 0.6 below its knee at 0.6 (0.3 -> 0.5), 1 above.
    shaper.setMode(static_cast<int>(ZSaturationMode::Clip3));
    float clipLeft[] = {0.3f}, clipRight[] = {-0.75f};
    shaper.process(clipLeft, clipRight, 1, 1.0);
    EXPECT_NEAR(clipLeft[0], 0.2 * 0.2 + 0.5, 1e-6);
    EXPECT_NEAR(clipRight[0], 0.25 * 0.25 - 1.0, 1e-6);
}

} // namespace
} // namespace halvern
