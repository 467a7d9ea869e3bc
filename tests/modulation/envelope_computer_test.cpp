#include "modulation/envelope_computer.h"
#include "modulation/transfer_curve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace halvern {
namespace {

using Computer = ZEnvelopeComputer;

struct Expected {
    double t;
    double s;
};

void ExpectShape(Computer::Item item, double p, double q, const std::vector<Expected>& expected)
{
    for (const Expected& e : expected)
        EXPECT_NEAR(Computer::Shape({item, p, q}, e.t), e.s, 1e-9) << "item " << int(item) << " p " << p << " t " << e.t;
}

TEST(EnvelopeComputer, EveryItemAtHandComputedPositions)
{
    ExpectShape(Computer::ItemConstant, 1, 0, {{0, 0}, {0.25, 0}, {0.5, 0}, {1, 0}});
    ExpectShape(Computer::ItemLinear, 1, 0, {{0, 0}, {0.25, 0.25}, {0.5, 0.5}, {1, 1}});
    ExpectShape(Computer::ItemExponencial, 2, 0, {{0, 0}, {0.25, 0.0625}, {0.5, 0.25}, {1, 1}});
    ExpectShape(Computer::ItemExponencial, 0.5, 0, {{0.25, 0.5}, {0.5, std::sqrt(0.5)}});
    ExpectShape(Computer::ItemExponencial, -3, 0, {{0.25, 0.25}}); // no curvature: straight
    // Bends: 1 is the pure power, -1 its mirror 1 - (1 - t)^n, 1/2 half-way to straight.
    ExpectShape(Computer::ItemQuadratic, 1, 0, {{0, 0}, {0.25, 0.0625}, {0.5, 0.25}, {1, 1}});
    ExpectShape(Computer::ItemQuadratic, -1, 0, {{0.25, 0.4375}, {0.5, 0.75}});
    ExpectShape(Computer::ItemQuadratic, 0.5, 0, {{0.25, 0.15625}});
    ExpectShape(Computer::ItemCubic, 1, 0, {{0.25, 0.015625}, {0.5, 0.125}, {1, 1}});
    ExpectShape(Computer::ItemCubic, -1, 0, {{0.25, 0.578125}, {0.5, 0.875}});
    ExpectShape(Computer::ItemFourthOrder, 1, 0, {{0.25, 0.00390625}, {0.5, 0.0625}, {1, 1}});
    ExpectShape(Computer::ItemFourthOrder, 0, 0, {{0.25, 0.25}});
    // Bezier: a control point on the diagonal is straight; (0, 1) gives u = sqrt(t) and
    // s = 2u - u^2; (1, 0) gives u = 1 - sqrt(1 - t) and s = u^2.
    ExpectShape(Computer::ItemBezier, 0.3, 0.3, {{0.25, 0.25}, {0.5, 0.5}});
    ExpectShape(Computer::ItemBezier, 0, 1, {{0, 0}, {0.25, 0.75}, {0.5, std::sqrt(2.0) - 0.5}, {1, 1}});
    ExpectShape(Computer::ItemBezier, 1, 0, {{0.25, std::pow(1 - std::sqrt(0.75), 2)}, {0.5, std::pow(1 - std::sqrt(0.5), 2)}});
    ExpectShape(Computer::ItemDouble, 2, 0, {{0, 0}, {0.25, 0.125}, {0.5, 0.5}, {0.75, 0.875}, {1, 1}});
    // Two sines: 3 half waves, the end value at t = 1/3 and 1, the start value at 2/3.
    ExpectShape(Computer::ItemSines, 1, 0, {{0.25, (1 - std::sqrt(0.5)) / 2}, {0.5, 0.5}, {1, 1}});
    ExpectShape(Computer::ItemSines, 2, 0, {{0.25, (1 + std::sqrt(0.5)) / 2}, {1.0 / 3, 1}, {2.0 / 3, 0}, {1, 1}});
    ExpectShape(Computer::ItemSaw, 2, 0, {{0, 0}, {0.25, 0.5}, {0.5, 0}, {0.75, 0.5}, {1, 1}});
    ExpectShape(Computer::ItemTriangles, 2, 0, {{0.25, 0.75}, {1.0 / 3, 1}, {0.5, 0.5}, {0.75, 0.25}, {1, 1}});
    ExpectShape(Computer::ItemTriangles, 1, 0, {{0.25, 0.25}, {0.5, 0.5}});
    ExpectShape(Computer::ItemStairs, 3, 0, {{0, 0}, {0.2, 0}, {0.25, 1.0 / 3}, {0.5, 2.0 / 3}, {0.8, 1}, {1, 1}});
    ExpectShape(Computer::ItemPulses, 2, 0.25, {{0, 0}, {0.25, 0}, {0.4, 1}, {0.5, 0}, {0.9, 1}, {1, 1}});
    // Counts are rounded and at least one.
    ExpectShape(Computer::ItemSaw, 0.2, 0, {{0.5, 0.5}});
    ExpectShape(Computer::ItemSaw, 2.4, 0, {{0.75, 0.5}});
}

TEST(EnvelopeComputer, EvaluatesThePointsSegmentsInOrderAndHoldsFlatOutside)
{
    Computer curve;
    EXPECT_EQ(curve.evaluate(0.5), 0.0);
    ASSERT_TRUE(curve.addPoint({0.8, 0.2, {Computer::ItemExponencial, 2.0}}));
    ASSERT_TRUE(curve.addPoint({0.2, 1.0, {Computer::ItemLinear}}));
    ASSERT_TRUE(curve.addPoint({0.5, 0.6, {Computer::ItemConstant}}));
    EXPECT_DOUBLE_EQ(curve.point(1).x, 0.5);
    EXPECT_EQ(curve.evaluate(0.0), 1.0);
    EXPECT_EQ(curve.evaluate(0.9), 0.2);
    EXPECT_DOUBLE_EQ(curve.evaluate(0.35), 1.0); // the constant holds its start value
    EXPECT_DOUBLE_EQ(curve.evaluate(0.5), 1.0);  // up to its end point
    // A falling segment scales the shape: 0.6 - 0.4 * 0.5^2.
    EXPECT_DOUBLE_EQ(curve.evaluate(0.65), 0.5);
    while (curve.pointCount() < Computer::kMaxPoints)
        ASSERT_TRUE(curve.addPoint({0.9, 0.0, {Computer::ItemLinear}}));
    EXPECT_FALSE(curve.addPoint({0.9, 0.0, {Computer::ItemLinear}}));

    // A transfer curve's segments are exponential items with its curve parameter.
    ZTransferCurve transfer;
    transfer.clear();
    transfer.addPoint({1.0, 1.0, 3.0});
    transfer.addPoint({0.0, 0.5, 1.0});
    EXPECT_DOUBLE_EQ(transfer.evaluate(0.5), 0.5 + 0.5 * 0.125);
    EXPECT_EQ(transfer.point(1).curve, 3.0);
    EXPECT_EQ(transfer.envelope().point(1).segment.item, Computer::ItemExponencial);
}

} // namespace
} // namespace halvern
