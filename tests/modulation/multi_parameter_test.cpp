#include "modulation/multi_parameter.h"

#include "core/z_exception.h"

#include <gtest/gtest.h>

#include <vector>

namespace halvern {
namespace {

// Three effect parameters A, B, C (0..1) and a frequency F (0..200 Hz) as targets.
class MultiParameterTest : public ::testing::Test {
protected:
    MultiParameterTest()
    {
        for (ZValueDouble* value : {&aValue, &bValue, &cValue, &fValue})
            registry.add({"p", "P", "", ZParameterType::Float, "", true}, value);
    }

    static ZModulatorTarget Target(int parameter, double value, double depth = 1.0,
                                   ZRangeMode mode = ZRangeMode::UpAndDown)
    {
        ZModulatorTarget target;
        target.parameter = parameter, target.value = value, target.range = depth, target.rangeMode = mode;
        return target;
    }

    // A switch or trigger with a 10 ms stroke whose target A follows the position 1:1;
    // blocks of 120 samples at 48 kHz are a quarter of a stroke.
    void makeSwitch(ZMultiParameterMode mode)
    {
        mp.replaceTargets({Target(0, 0.0, 1.0, ZRangeMode::Interval)});
        mp.modeObject().setNormalized(static_cast<int>(mode) / 3.0);
        mp.switchTimeObject().fromStorageText("0.01");
        mp.setEnabled(true);
    }
    // Runs blocks with the value given and checks the position and target after each.
    void expectPositions(double value, const std::vector<double>& positions)
    {
        mp.valueObject().setNormalized(value);
        for (double expected : positions) {
            mp.processSwitch(120, 48000.0, registry);
            EXPECT_DOUBLE_EQ(mp.switchPosition(), expected);
            EXPECT_DOUBLE_EQ(a, expected);
        }
    }

    double a = 0.0, b = 0.0, c = 0.0, f = 0.0;
    ZValueDouble aValue{&a, 0.0, 1.0, 0.0, 0.01}, bValue{&b, 0.0, 1.0, 0.0, 0.01}, cValue{&c, 0.0, 1.0, 0.0, 0.01};
    ZValueDouble fValue{&f, 0.0, 200.0, 0.0, 1.0, "{0;.1} Hz"};
    ZParameterRegistry registry;
    ZLock lock;
    ZMultiParameter mp{lock, Target(0, 0.5), 3};
};

TEST_F(MultiParameterTest, NormalModeMapsTheValueThroughEachTargetsRangeAndBacksUpTheTargetsOnce)
{
    // A: value 10 %, depth 100 %, up and down -> 0..20 %; B: value 10 %, depth 50 %, full range -> 0..50 %.
    a = 0.3, b = 0.6;
    mp.replaceTargets({Target(0, 0.1), Target(1, 0.1, 0.5, ZRangeMode::FullRange)});
    mp.valueObject().setNormalized(0.75);
    EXPECT_TRUE(mp.takeValueChange());
    EXPECT_FALSE(mp.takeValueChange());

    mp.applyValue(registry);
    EXPECT_EQ(a, 0.3) << "a disabled MultiParameter leaves its targets alone";
    EXPECT_TRUE(mp.valueBackup().empty()) << "nor takes them over";

    mp.setEnabled(true);
    mp.applyValue(registry);
    EXPECT_DOUBLE_EQ(a, 0.15);
    EXPECT_DOUBLE_EQ(b, 0.375);
    EXPECT_EQ(mp.valueBackup(), (std::vector<double>{0.3, 0.6}));
    mp.valueObject().setNormalized(0.25);
    mp.applyValue(registry);
    EXPECT_EQ(mp.valueBackup(), (std::vector<double>{0.3, 0.6})) << "the values from before, not its own";
    // Disabled and enabled again, it takes over the values the targets have then.
    mp.setEnabled(false);
    EXPECT_TRUE(mp.valueBackup().empty());
    mp.setEnabled(true);
    mp.applyValue(registry);
    EXPECT_DOUBLE_EQ(mp.valueBackup()[0], 0.05);

    mp.modeObject().setFromDisplayText("Switch");
    mp.valueObject().setNormalized(0.0);
    mp.applyValue(registry);
    EXPECT_DOUBLE_EQ(a, 0.05) << "switch targets follow the position, not the value";
}

TEST_F(MultiParameterTest, ValueShowsPercentOrTheFirstTargetInItsUnits)
{
    mp.attach(registry);
    mp.replaceTargets({Target(3, 0.1)});
    mp.valueObject().setNormalized(0.75);
    EXPECT_EQ(mp.valueObject().getDisplayText(), "75.0 %");
    mp.valueModeObject().setFromDisplayText("By first parameter");
    EXPECT_EQ(mp.valueObject().getDisplayText(), "30.0 Hz"); // 15 % of 200 Hz
    mp.setCurrentValueAsDefault();
    EXPECT_EQ(mp.defaultValueObject().getDisplayText(), "75.0 %");
}

TEST_F(MultiParameterTest, HeldTriggerRisesFallsBackAndStartsAgain)
{
    makeSwitch(ZMultiParameterMode::Trigger);
    // Exactly 1 is not above 1, so the turn comes one block after reaching the top.
    expectPositions(1.0, {0.25, 0.5, 0.75, 1.0, 1.0, 0.75, 0.5, 0.25, 0.0});
    EXPECT_FALSE(mp.switchMoving());
    expectPositions(1.0, {0.25});
    EXPECT_EQ(mp.switchDirection(), 1.0);
}

TEST_F(MultiParameterTest, SwitchTurnsBackFromWhereItIsAndCountsAsOnWhenRestingAtHalf)
{
    makeSwitch(ZMultiParameterMode::Switch);
    expectPositions(1.0, {0.25, 0.5});
    expectPositions(0.0, {0.25});
    expectPositions(1.0, {0.5});
    mp.stopSwitch();
    expectPositions(1.0, {0.5, 0.5}); // pressed and on: stays
    expectPositions(0.0, {0.25, 0.0, 0.0}); // released: goes down, not up
    EXPECT_FALSE(mp.switchMoving());
}

TEST_F(MultiParameterTest, BanksAreSpreadEvenlyOverTheValue)
{
    mp.replaceTargets({Target(0, 0.5), Target(1, 0.5)});
    mp.modeObject().setFromDisplayText("Banks");
    mp.setEnabled(true);
    const auto bankValueAt = [&](double value, bool interpolate) {
        mp.setInterpolate(interpolate);
        mp.valueObject().setNormalized(value);
        mp.applyValue(registry);
        return a;
    };

    mp.replaceBanks({{0.3, 0.7}});
    for (double value : {0.0, 0.5, 1.0}) {
        EXPECT_DOUBLE_EQ(bankValueAt(value, true), 0.3);
        EXPECT_DOUBLE_EQ(b, 0.7);
    }

    mp.replaceBanks({{0.0}, {1.0}}); // B's missing values come from its target's value
    EXPECT_DOUBLE_EQ(bankValueAt(0.3, true), 0.3);
    EXPECT_DOUBLE_EQ(bankValueAt(0.3, false), 0.0);
    EXPECT_DOUBLE_EQ(b, 0.5);

    mp.replaceBanks({{0.0}, {0.5}, {0.2}}); // value 75 % lies half-way between the last two
    EXPECT_DOUBLE_EQ(bankValueAt(0.75, true), 0.35);
    EXPECT_DOUBLE_EQ(bankValueAt(0.75, false), 0.2);
}

TEST_F(MultiParameterTest, BankToolsKeepOneValuePerTargetInEveryBank)
{
    using Banks = std::vector<std::vector<double>>;
    mp.replaceTargets({Target(0, 0.5), Target(1, 0.5)});
    mp.setBankCount(3);
    a = 0.1, b = 0.9;
    mp.saveBank(0, registry);
    a = 0.2, b = 0.4;
    mp.saveBank(2, registry);
    EXPECT_EQ(mp.banks(), (Banks{{0.1, 0.9}, {0.5, 0.5}, {0.2, 0.4}}));

    mp.reverseBanks();
    EXPECT_EQ(mp.banks(), (Banks{{0.2, 0.4}, {0.5, 0.5}, {0.1, 0.9}}));
    mp.sortBanks(1, false);
    EXPECT_EQ(mp.banks(), (Banks{{0.1, 0.9}, {0.5, 0.5}, {0.2, 0.4}}));
    mp.sortBanks(0, true);
    EXPECT_EQ(mp.banks(), (Banks{{0.1, 0.9}, {0.2, 0.4}, {0.5, 0.5}}));

    mp.setBankCount(4);
    EXPECT_EQ(mp.banks().back(), (std::vector<double>{0.5, 0.5}));
    mp.removeTarget(0);
    mp.addTarget(Target(2, 0.25));
    EXPECT_EQ(mp.banks().front(), (std::vector<double>{0.9, 0.25}));

    mp.loadBank(0, registry);
    EXPECT_DOUBLE_EQ(registry.normalized(1), 0.9);
    EXPECT_DOUBLE_EQ(registry.normalized(2), 0.25);
}

TEST_F(MultiParameterTest, NamesAndTheLastTarget)
{
    EXPECT_EQ(mp.displayName(), "MultiParameter 3");
    EXPECT_FALSE(mp.hidden());
    mp.setName("Wet*");
    EXPECT_EQ(mp.displayName(), "Wet*");
    mp.setName("*Internal");
    EXPECT_TRUE(mp.hidden());

    EXPECT_THROW(mp.removeTarget(0), ZException);
    EXPECT_EQ(mp.targets().size(), 1);
    EXPECT_EQ(mp.banks().front().size(), 1u);
}

} // namespace
} // namespace halvern
