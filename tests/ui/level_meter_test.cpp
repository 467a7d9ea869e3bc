#include "ui/level_meter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

namespace halvern {
namespace {

TEST(UiLevelMeter, RisesAtOnceFallsTwentyFourDecibelsASecondAndHoldsThePeak)
{
    double next = 1.0; // 0 dBFS, then silence
    const double tick = 0.1;
    ZLevelMeter meter("In", [&next] { return std::exchange(next, 0.0); }, tick);
    meter.Refresh();
    EXPECT_DOUBLE_EQ(meter.levelDB(), 0.0);
    EXPECT_EQ(meter.Text(), "0.0");
    for (int i = 0; i < 10; ++i)
        meter.Refresh();
    EXPECT_NEAR(meter.levelDB(), -24.0, 1e-9); // one second later
    EXPECT_DOUBLE_EQ(meter.heldDB(), 0.0);    // still held
    for (int i = 0; i < 6; ++i)
        meter.Refresh();
    EXPECT_LT(meter.heldDB(), -30.0); // 1.6 s: the hold is over
    next = 0.1;                       // -20 dBFS
    meter.Refresh();
    EXPECT_NEAR(meter.levelDB(), -20.0, 1e-9);
    for (double bad : {-1.0, std::nan(""), 0.0}) {
        next = bad;
        meter.Refresh();
    }
    EXPECT_GE(meter.levelDB(), ZLevelMeter::kFloorDB);
}

} // namespace
} // namespace halvern
