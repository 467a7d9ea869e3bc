#include "core/modulation_enums.h"
#include "core/z_format.h"
#include "core/z_value_enum.h"
#include "core/z_value_number.h"
#include "core/z_value_scale.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <utility>

namespace halvern {

namespace {

// A "value" element with the given attributes, as a value description holds them.
ZMLElement ValueElement(std::initializer_list<std::pair<const char*, const char*>> attributes)
{
    ZMLElement element("value");
    for (const auto& [name, text] : attributes)
        element.setAttribute(name, text);
    return element;
}

} // namespace

TEST(ValueNumberTest, IntegerPositionsRoundToNearestAndWritesReportADifferenceBeforeClamping)
{
    int number = 0;
    ZValueInt(&number, 0, 3, 0, 1).setNormalized(0.5); // 1.5 + 0.5 truncated
    EXPECT_EQ(number, 2);
    ZValueInt zeroToFour(&number, 0, 4, 0, 1);
    number = 7;
    EXPECT_EQ(zeroToFour.getNormalized(), 1.0);
    number = -1;
    EXPECT_EQ(zeroToFour.getNormalized(), 0.0);
    EXPECT_EQ(zeroToFour.stepCount(), 5);

    ZValueInt(&number, -10, 10, 0, 1).setNormalized(0.26); // -10 + trunc(5.2 + 0.5)
    EXPECT_EQ(number, -5);

    short small = 0;
    EXPECT_TRUE(ZValueShort(&small, 0, 30000, 0, 1).setNormalized(2.0)); // 60000 must not wrap
    EXPECT_EQ(small, 30000);

    int64_t large = 0;
    ZValueInt64 noRounding(&large, 0, 1000, 0, 1);
    noRounding.setNormalized(0.4999);
    EXPECT_EQ(large, 499);
    EXPECT_EQ(noRounding.stepCount(), 0);

    double gain = 0;
    ZValueDouble value(&gain, -24, 24, 0, 0.5);
    EXPECT_TRUE(value.setNormalized(0.75));
    EXPECT_EQ(gain, 12.0);
    value.clearChanged();
    EXPECT_FALSE(value.setNormalized(0.75));
    EXPECT_TRUE(value.isChanged());

    double level = 10;
    EXPECT_TRUE(ZValueDouble(&level, 0, 10, 0, 1).setNormalized(1.5));
    EXPECT_EQ(level, 10.0);
    EXPECT_EQ(ZValueDouble(&level, 5, 5, 5, 1).getNormalized(), 0.0);

    float ratio = 0;
    ZValueFloat floatValue(&ratio, 0, 1, 0, 0.1);
    EXPECT_TRUE(floatValue.setNormalized(0.1));
    EXPECT_EQ(ratio, 0.1f);
    EXPECT_FALSE(floatValue.setNormalized(0.1));
}

TEST(ValueNumberTest, StepsResetAndClamping)
{
    double v = 5;
    ZValueDouble value(&v, 0, 10, 2, 0.5);
    EXPECT_TRUE(value.stepBy(3));
    EXPECT_EQ(v, 6.5);
    EXPECT_TRUE(value.stepBy(-20));
    EXPECT_EQ(v, 0.0);
    EXPECT_FALSE(value.stepBy(-1)); // already at the bottom: nothing changes
    EXPECT_EQ(v, 0.0);

    value.stepByExponent(1, 3); // 0.5 * 8, limited to the maximal increment 0.5
    EXPECT_EQ(v, 0.5);
    value.setMaximalIncrement(2);
    value.stepByExponent(1, 3);
    EXPECT_EQ(v, 2.5);

    EXPECT_TRUE(value.resetToDefault());
    EXPECT_EQ(v, 2.0);
    EXPECT_FALSE(value.resetToDefault());

    v = 12;
    value.clearChanged();
    value.clampToRange();
    EXPECT_EQ(v, 10.0);
    EXPECT_TRUE(value.isChanged());
    value.clearChanged();
    value.clampToRange();
    EXPECT_FALSE(value.isChanged());

    double reversed = 3;
    ZValueDouble(&reversed, 5, 1, 5, 1).clampToRange(); // maximum first, then minimum
    EXPECT_EQ(reversed, 5.0);
}

TEST(ValueNumberTest, StorageTextHasSixDecimalsAndDisplayTextFormatsAndParses)
{
    double number = -2.25;
    ZValueDouble stored(&number, 0, 10, 0, 1);
    EXPECT_EQ(stored.toStorageText(), "-2.250000");
    number = 1.0 / 3.0;
    EXPECT_EQ(stored.toStorageText(), "0.333333");
    stored.fromStorageText("12.5");
    EXPECT_EQ(number, 12.5);
    stored.fromStorageText("junk");
    EXPECT_EQ(number, 12.5);

    double gain = 3;
    ZValueDouble value(&gain, -24, 24, 0, 0.5, "{+0.2} dB");
    EXPECT_TRUE(value.setFromDisplayText("-6.5 dB"));
    EXPECT_EQ(gain, -6.5);
    EXPECT_TRUE(value.setFromDisplayText("40 dB"));
    EXPECT_EQ(gain, 24.0);
    EXPECT_FALSE(value.setFromDisplayText("5 Hz"));
    EXPECT_EQ(gain, 24.0);

    EXPECT_EQ(value.displayTextAt(1.5), "+24.00 dB");
    double normalized = 0;
    EXPECT_TRUE(value.normalizedFromDisplayText("+12 dB", normalized));
    EXPECT_EQ(normalized, 0.75);
    EXPECT_EQ(gain, 24.0);
}

TEST(ValueNumberTest, LoadAttributesAppliesDefaultValueAndIncrementRules)
{
    double v = 0;
    ZValueDouble value(&v, 0, 1, 0, 1);
    value.loadAttributes(
        ValueElement({{"name", "Gain"}, {"max", "12"}, {"default", "3"}, {"inc", "0.5"}, {"format", "{0;.1} dB"}}));
    EXPECT_EQ(value.name(), "Gain");
    EXPECT_EQ(value.defaultValue(), 3.0);
    EXPECT_EQ(v, 3.0);
    EXPECT_EQ(value.maximalIncrement(), 1.0); // the larger of 0.5 and the previous 1
    EXPECT_EQ(value.getDisplayText(), "3.0 dB");

    value.loadAttributes(ValueElement({{"value", "50"}, {"inc", "4"}}));
    EXPECT_EQ(v, 50.0); // not clamped
    EXPECT_EQ(value.defaultValue(), 50.0);
    EXPECT_EQ(value.maximalIncrement(), 4.0);

    value.loadAttributes(ValueElement({{"default", "0.2"}, {"value", "0.7"}, {"maxinc", "3"}}));
    EXPECT_EQ(value.defaultValue(), 0.2);
    EXPECT_EQ(v, 0.7);
    EXPECT_EQ(value.maximalIncrement(), 3.0);
}

TEST(ValueEnumTest, NormalizedPositionsRoundToNearestIndex)
{
    int32_t index = 3;
    ZValueEnum<ZRangeMode> range(&index);
    EXPECT_EQ(range.getNormalized(), 0.75);
    EXPECT_TRUE(range.setNormalized(0.6)); // 0.6 * 4 + 0.5 = 2.9
    EXPECT_EQ(range.getDisplayText(), "Up only");
    range.setNormalized(0.63);
    EXPECT_EQ(index, 3);
    EXPECT_TRUE(range.setNormalized(1.2));
    EXPECT_EQ(index, 4);
    EXPECT_EQ(range.stepCount(), 5);
}

TEST(ValueEnumTest, EachEnumerationReadsItsOwnNames)
{
    int32_t index = 0;
    ZValueEnum<ZNoteControllerMode> note(&index);
    note.setFromDisplayText("Switch");
    EXPECT_EQ(index, 4);
    note.setNormalized(1.0);
    EXPECT_EQ(note.toStorageText(), "Switch (all octaves)");
    ZValueEnum<ZMultiParameterMode>(&index).setFromDisplayText("Switch");
    EXPECT_EQ(index, 1);

    ZValueEnum<ZRangeMode> range(&index);
    EXPECT_TRUE(range.setFromDisplayText("down only")); // names match exactly
    EXPECT_EQ(range.getDisplayText(), "Up and down");
}

TEST(ValueEnumTest, ClampingStepsAndAttributes)
{
    int32_t index = 9; // from an old state
    ZValueEnum<ZRangeMode> range(&index, ZRangeMode::FullRange);
    range.clampToRange();
    EXPECT_EQ(index, 4);
    index = -2;
    range.clampToRange();
    EXPECT_EQ(index, 0);
    EXPECT_TRUE(range.stepBy(9));
    EXPECT_EQ(index, 4);
    EXPECT_TRUE(range.resetToDefault());
    EXPECT_EQ(index, 1);

    range.loadAttributes(ValueElement({{"default", "Down only"}, {"value", "Interval"}}));
    EXPECT_EQ(range.defaultValue(), 3);
    EXPECT_EQ(index, 4);

    range.loadAttributes(ValueElement({{"value", "Bogus"}}));
    EXPECT_EQ(index, 0);
    EXPECT_EQ(range.defaultValue(), 0);
}

TEST(ValueScaleTest, TapersReshapeTheNormalizedViewAndStepOnTheTaperedAxis)
{
    double x = 25;
    ZValueDouble linear(&x, 0, 100, 0, 1, "{0;.1}");
    ZValueScaleSqr taper(linear);
    EXPECT_DOUBLE_EQ(taper.getNormalized(), 0.5);
    taper.setNormalized(0.3);
    EXPECT_DOUBLE_EQ(x, 9.0);
    double normalized = 0;
    EXPECT_TRUE(taper.normalizedFromDisplayText("36", normalized));
    EXPECT_DOUBLE_EQ(normalized, 0.6);

    double w = 10;
    ZValueScalePower<4> power(std::make_unique<ZValueDouble>(&w, 0, 160, 0, 1, "{0;.1}"));
    EXPECT_DOUBLE_EQ(power.getNormalized(), 0.5); // 0.0625 ^ 0.25
    power.setNormalized(0.25);
    EXPECT_DOUBLE_EQ(w, 160.0 / 256.0);
    EXPECT_EQ(power.displayTextAt(0.5), "10.0");

    double v = 0.9995 * 0.9995;
    ZValueDouble inner(&v, 0, 1, 0, 0.01);
    ZValueScaleSqr sqr(inner);
    EXPECT_TRUE(sqr.stepBy(1));
    EXPECT_EQ(v, 1.0);
    v = 0.25;
    sqr.stepBy(100); // 0.5 + 0.1 on the tapered axis
    EXPECT_DOUBLE_EQ(v, 0.36);
    sqr.stepBy(-1000);
    EXPECT_EQ(v, 0.0);
}

} // namespace halvern
