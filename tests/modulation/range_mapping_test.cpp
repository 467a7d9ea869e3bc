#include "core/z_exception.h"
#include "core/z_value_number.h"
#include "modulation/modulator_target_list.h"
#include "modulation/range_mapping.h"

#include <gtest/gtest.h>

namespace halvern {
namespace {

double map(double m, double v, double d, ZRangeMode mode, double w = 1.0, bool invert = false)
{
    return MapModulatorOutput(m, v, w, d, mode, invert);
}

TEST(RangeMapping, EveryModeAtItsExamplesAndEdges)
{
    // "Up and down": value 10 %, depth 100 % gives 0 % to 20 %; value 0 collapses.
    EXPECT_DOUBLE_EQ(map(-1, 0.1, 1.0, ZRangeMode::UpAndDown), 0.0);
    EXPECT_DOUBLE_EQ(map(1, 0.1, 1.0, ZRangeMode::UpAndDown), 0.2);
    EXPECT_DOUBLE_EQ(map(0.5, 0.5, 0.4, ZRangeMode::UpAndDown), 0.6);
    for (double m : {-1.0, 0.3, 1.0})
        EXPECT_DOUBLE_EQ(map(m, 0.0, 1.0, ZRangeMode::UpAndDown), 0.0);

    // "Full range": the interval keeps its size and moves away from the edge.
    EXPECT_DOUBLE_EQ(map(-1, 0.1, 0.5, ZRangeMode::FullRange), 0.0);
    EXPECT_DOUBLE_EQ(map(1, 0.1, 0.5, ZRangeMode::FullRange), 0.5);
    EXPECT_DOUBLE_EQ(map(-1, 0.5, 0.5, ZRangeMode::FullRange), 0.25);
    EXPECT_DOUBLE_EQ(map(1, 0.5, 0.5, ZRangeMode::FullRange), 0.75);
    for (double v : {0.0, 0.3, 1.0}) {
        EXPECT_DOUBLE_EQ(map(-1, v, 1.0, ZRangeMode::FullRange), 0.0);
        EXPECT_DOUBLE_EQ(map(1, v, 1.0, ZRangeMode::FullRange), 1.0);
    }

    // "Up only": value 10 %, depth 50 % gives 10 % to 60 %; limited by the top.
    EXPECT_DOUBLE_EQ(map(-1, 0.1, 0.5, ZRangeMode::UpOnly), 0.1);
    EXPECT_DOUBLE_EQ(map(1, 0.1, 0.5, ZRangeMode::UpOnly), 0.6);
    EXPECT_DOUBLE_EQ(map(1, 0.8, 0.5, ZRangeMode::UpOnly), 1.0);

    // "Down only": the highest output gives the lowest value.
    EXPECT_DOUBLE_EQ(map(1, 0.7, 0.5, ZRangeMode::DownOnly), 0.2);
    EXPECT_DOUBLE_EQ(map(1, 0.3, 0.5, ZRangeMode::DownOnly), 0.0); // Value - min(Depth, Value)
    EXPECT_DOUBLE_EQ(map(-1, 0.7, 0.5, ZRangeMode::DownOnly), 0.7);

    // "Interval" runs from Value to MaxValue, downward when MaxValue is below.
    EXPECT_DOUBLE_EQ(map(-1, 0.2, 0.0, ZRangeMode::Interval, 0.6), 0.2);
    EXPECT_DOUBLE_EQ(map(0, 0.2, 0.0, ZRangeMode::Interval, 0.6), 0.4);
    EXPECT_DOUBLE_EQ(map(1, 0.8, 0.0, ZRangeMode::Interval, 0.3), 0.3);
    EXPECT_GT(map(-0.5, 0.8, 0.0, ZRangeMode::Interval, 0.3), map(0.5, 0.8, 0.0, ZRangeMode::Interval, 0.3));

    // Invert swaps the ends; an unknown mode leaves Value.
    EXPECT_DOUBLE_EQ(map(1, 0.1, 0.5, ZRangeMode::UpOnly, 1.0, true), 0.1);
    EXPECT_DOUBLE_EQ(map(1, 0.4, 1.0, static_cast<ZRangeMode>(9)), 0.4);
}

TEST(RangeMapping, FirstRangeAndShapeAreAppliedPerTarget)
{
    ZModulatorTarget first, second;
    first.value = 0.2, first.maxValue = 0.6, first.rangeMode = ZRangeMode::Interval;
    second.value = 0.9, second.range = 0.1, second.invert = true, second.useFirstRange = true;
    EXPECT_DOUBLE_EQ(TargetValueFor(second, first, 1.0), 0.2); // first's interval, own invert
    second.shapeEnabled = true;
    second.shape.clear();
    second.shape.addPoint({0.0, 1.0, 1.0});
    second.shape.addPoint({1.0, 0.0, 1.0});
    EXPECT_DOUBLE_EQ(TargetValueFor(second, first, -1.0), 0.4); // 0.6 through y = 1 - x
    ZTransferCurve bent;
    bent.clear();
    bent.addPoint({0.0, 0.0, 1.0});
    bent.addPoint({1.0, 1.0, 2.0});
    EXPECT_DOUBLE_EQ(bent.evaluate(0.5), 0.25);
    EXPECT_DOUBLE_EQ(bent.evaluate(2.0), 1.0);
}

TEST(ModulatorTargetList, NeverEmptiesAndWritesThroughTheRegistry)
{
    ZLock lock;
    ZParameterRegistry registry;
    double a = 0.0, b = 0.0;
    ZValueDouble aValue(&a, 0, 10, 0, 1), bValue(&b, 0, 1, 0, 0.1);
    registry.add({"a", "A", "", ZParameterType::Float, "", true}, &aValue);
    registry.add({"b", "B", "", ZParameterType::Float, "", true}, &bValue);

    ZModulatorTarget first, second, stray;
    first.parameter = 0, first.value = 0.5;
    second.parameter = 1, second.value = 0.5, second.range = 0.5, second.rangeMode = ZRangeMode::UpOnly;
    stray.parameter = 7;
    ZModulatorTargetList list(lock, first);
    try {
        list.remove(0);
        FAIL() << "the last target was removed";
    } catch (const ZException& error) {
        EXPECT_STREQ(error.message(), "There must be at least one parameter for each modulator.");
    }
    EXPECT_EQ(list.size(), 1);
    EXPECT_THROW(list.replaceAll({}), ZException);

    list.add(second);
    list.backupValues(registry);
    list.apply(1.0, registry);
    EXPECT_DOUBLE_EQ(a, 10.0); // 0.5 + 1 * 0.5 -> 1.0 of 0..10
    EXPECT_DOUBLE_EQ(b, 1.0);  // 0.5 + 1 * min(0.5, 0.5)
    list.restoreValues(registry);
    EXPECT_DOUBLE_EQ(a, 0.0);
    EXPECT_DOUBLE_EQ(b, 0.0);

    list.remove(0);
    EXPECT_EQ(list.targets().front().parameter, 1);
    EXPECT_EQ(list.backup().size(), 1u);

    // Targets naming a parameter that does not exist are skipped.
    list.set(0, stray);
    list.apply(1.0, registry);
}

} // namespace
} // namespace halvern
