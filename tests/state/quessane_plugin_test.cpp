#include "reverb/halvern_audio_effect_plugin.h"
#include "state/plugin_state_block.h"
#include "state/quessane_audio_effect_plugin.h"
#include "state/serialization_context.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <functional>
#include <memory>
#include <numbers>
#include <string>
#include <thread>
#include <vector>

namespace halvern {
namespace {

using Core = ZQuessaneAudioEffectPlugin;

std::unique_ptr<Core> NewReverb()
{
    return std::make_unique<Core>(std::make_unique<HalvernAudioEffectPlugin>());
}

int IndexOf(Core& core, const std::string& id)
{
    for (int index = 0; index < core.GetParameterCount(); ++index)
        if (core.GetParameterID(index) == id)
            return index;
    ADD_FAILURE() << "no parameter " << id;
    return 0;
}

std::vector<double> Values(Core& core)
{
    std::vector<double> values;
    for (int index = 0; index < core.GetParameterCount(); ++index)
        values.push_back(core.GetParameter(index));
    return values;
}

std::vector<int> MarkedForHost(Core& core)
{
    std::vector<int> marked;
    core.parameters().sendMarked([&](int index, double) { marked.push_back(index); });
    return marked;
}

ZMLElement LiveSlotState(Core& core)
{
    ZMLElement state;
    core.serializeState(ZSerializationContext(state, true));
    return state;
}

// The slot element as a "PresetN" child carries it: names aside, the same.
bool SameSlotState(const ZMLElement& a, const ZMLElement& b)
{
    std::unique_ptr<ZMLElement> renamed = b.clone();
    renamed->setName(a.name());
    return a == *renamed;
}

// Waits (at most five seconds) until the update thread has done what the host asked.
bool Eventually(Core& core, const std::function<bool()>& done)
{
    for (int attempt = 0; attempt < 500; ++attempt) {
        {
            ZLockHolder hold(core.processingLock(), -1);
            if (done())
                return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

// ---------------------------------------------------------------- slots

TEST(StateSlots, NewInstanceStartsWithEightIdenticalSlotsInA)
{
    auto core = NewReverb();
    EXPECT_EQ(core->slots().live(), 0);
    EXPECT_EQ(core->slots().requested(), 0);
    EXPECT_EQ(core->slots().previous(), -1);
    const ZMLElement live = LiveSlotState(*core);
    for (int slot = 0; slot < ZStateSlots::kCount; ++slot)
        EXPECT_TRUE(core->slots().state(slot) == live) << "slot " << slot;
}

TEST(StateSlots, ChangeInAStaysWithAAndBKeepsTheDefault)
{
    auto core = NewReverb();
    const int depth = IndexOf(*core, "ReverbDepth");
    const double initial = core->GetParameter(depth);
    core->SetParameter(depth, 0.25);
    (void)MarkedForHost(*core);

    core->SelectSlot(1);
    EXPECT_EQ(core->slots().live(), 1);
    EXPECT_EQ(core->slots().previous(), 0);
    EXPECT_EQ(core->GetParameter(depth), initial);
    EXPECT_EQ(core->GetParameterValueName(core->slotParameterIndex()), "B");
    // The state changed as a whole: every parameter is reported to the host again.
    EXPECT_EQ(MarkedForHost(*core).size(), static_cast<size_t>(core->GetParameterCount()));

    core->SelectSlot(0);
    EXPECT_EQ(core->GetParameter(depth), 0.25);
    EXPECT_EQ(core->slots().previous(), 1);
    core->SelectSlot(1);
    EXPECT_EQ(core->GetParameter(depth), initial);
}

TEST(StateSlots, SelectingTheLiveSlotDoesNothing)
{
    auto core = NewReverb();
    const int depth = IndexOf(*core, "ReverbDepth");
    core->SetParameter(depth, 0.25);
    (void)MarkedForHost(*core);
    const std::unique_ptr<ZMLElement> storedA = core->slots().state(0).clone();

    core->SelectSlot(0);
    EXPECT_EQ(core->slots().previous(), -1);
    EXPECT_TRUE(core->slots().state(0) == *storedA) << "the live slot was stored";
    EXPECT_TRUE(MarkedForHost(*core).empty());
    EXPECT_EQ(core->GetParameter(depth), 0.25);
}

TEST(StateSlots, OutOfRangeSelectionsAreLimitedToAH)
{
    auto core = NewReverb();
    core->SelectSlot(99);
    EXPECT_EQ(core->slots().live(), 7);
    core->SelectSlot(-3);
    EXPECT_EQ(core->slots().live(), 0);
    double normalized = 0.0;
    ASSERT_TRUE(core->parameters().value(core->slotParameterIndex())->normalizedFromDisplayText("g", normalized));
    EXPECT_DOUBLE_EQ(normalized, 6.0 / 7.0);
}

TEST(StateSlots, HostStateWithCLiveRestoresCLiveAndTheOthersFromTheirChildren)
{
    auto source = NewReverb();
    const int depth = IndexOf(*source, "ReverbDepth");
    for (const auto& [slot, value] : {std::pair{0, 0.1}, std::pair{1, 0.3}, std::pair{2, 0.5}}) {
        source->SelectSlot(slot);
        source->SetParameter(depth, value);
    }
    source->SetAGC(true);
    const ZMemoryStream block = SavePluginState(*source);

    std::unique_ptr<ZMLElement> document = ReadStateDocument(block.data(), static_cast<int32_t>(block.size()));
    EXPECT_EQ(document->getAttribute("PresetIndex"), "2");
    EXPECT_EQ(document->getAttribute("AGC"), "1");
    std::vector<std::string> children;
    for (const auto& child : document->children())
        if (child->name().starts_with("Preset"))
            children.push_back(child->name());
    EXPECT_EQ(children, (std::vector<std::string>{"Preset0", "Preset1", "Preset3", "Preset4", "Preset5", "Preset6",
                                                  "Preset7"}));

    auto target = NewReverb();
    LoadPluginState(*target, block.data(), static_cast<int32_t>(block.size()));
    EXPECT_EQ(target->slots().live(), 2);
    EXPECT_EQ(target->slots().requested(), 2);
    EXPECT_TRUE(target->agc());
    EXPECT_EQ(target->GetParameter(depth), 0.5);
    for (int slot = 0; slot < ZStateSlots::kCount; ++slot) {
        if (slot == 2)
            continue;
        EXPECT_TRUE(SameSlotState(source->slots().state(slot), target->slots().state(slot))) << "slot " << slot;
    }
    target->SelectSlot(0);
    EXPECT_EQ(target->GetParameter(depth), 0.1);
    target->SelectSlot(1);
    EXPECT_EQ(target->GetParameter(depth), 0.3);
}

TEST(StateSlots, AbsentOrDamagedSlotItemsLeaveTheSlotsAsTheyWere)
{
    auto core = NewReverb();
    core->SelectSlot(3);
    const std::unique_ptr<ZMLElement> storedB = core->slots().state(1).clone();
    ZMLElement root("settings");
    root.setAttribute("PresetIndex", "banana");
    root.setAttribute("AGC", "7");
    root.addChild("Preset1").setAttribute("ReverbDepth", "0.75");
    {
        ZLockHolder hold(core->processingLock(), -1);
        core->Serialize(ZSerializationContext(root, false));
    }
    EXPECT_EQ(core->slots().live(), 3);
    EXPECT_TRUE(core->agc());
    EXPECT_FALSE(core->slots().state(1) == *storedB) << "a present child replaces its slot";
    root.setAttribute("PresetIndex", "12");
    {
        ZLockHolder hold(core->processingLock(), -1);
        core->Serialize(ZSerializationContext(root, false));
    }
    EXPECT_EQ(core->slots().live(), 7);
    core->SelectSlot(1);
    EXPECT_EQ(core->GetParameter(IndexOf(*core, "ReverbDepth")), 0.75);
}

// ---------------------------------------------------------------- morphing

// Slots A to D hold distinct values of three continuous parameters (one of them kept
// outside the parameter attributes); the instance is left in slot E, which has the
// defaults.
struct MorphFixture : ::testing::Test {
    std::unique_ptr<Core> core = NewReverb();
    const int depth = IndexOf(*core, "ReverbDepth");
    const int width = IndexOf(*core, "Width");
    const int positionX = IndexOf(*core, "PositionX");

    void SetUp() override
    {
        const double values[4][3] = {{0.1, 0.8, 0.2}, {0.3, 0.6, 0.4}, {0.5, 0.2, 0.6}, {0.9, 0.0, 0.8}};
        for (int slot = 0; slot < 4; ++slot) {
            core->SelectSlot(slot);
            core->SetParameter(depth, values[slot][0]);
            core->SetParameter(width, values[slot][1]);
            core->SetParameter(positionX, values[slot][2]);
        }
        core->SelectSlot(4);
    }
    void expectValues(double expectedDepth, double expectedWidth, double expectedPosition)
    {
        // Stored texts carry six decimals.
        EXPECT_NEAR(core->GetParameter(depth), expectedDepth, 1e-6);
        EXPECT_NEAR(core->GetParameter(width), expectedWidth, 1e-6);
        EXPECT_NEAR(core->GetParameter(positionX), expectedPosition, 1e-6);
    }
};

TEST_F(MorphFixture, CornersGiveTheirSlotsAndTheCentreTheMeanOfAll)
{
    EXPECT_EQ(core->MoveMorph(1.0, 0.0), 3);
    expectValues(0.3, 0.6, 0.4); // B
    core->MoveMorph(0.0, 1.0);
    expectValues(0.5, 0.2, 0.6); // C
    core->MoveMorph(1.0, 1.0);
    expectValues(0.9, 0.0, 0.8); // D
    core->MoveMorph(0.5, 0.5);
    expectValues(0.45, 0.4, 0.5);
    core->MoveMorph(0.25, 0.5); // left 0.3/0.5/0.4, right 0.6/0.3/0.6
    expectValues(0.375, 0.45, 0.45);

    // At (0, 0) every parameter is as slot A holds it.
    core->MoveMorph(0.0, 0.0);
    std::vector<double> morphed = Values(*core);
    core->SelectSlot(0);
    const std::vector<double> slotA = Values(*core);
    for (int index = 0; index < core->slotParameterIndex(); ++index)
        EXPECT_NEAR(morphed[static_cast<size_t>(index)], slotA[static_cast<size_t>(index)], 1e-6) << "parameter " << index;
}

TEST_F(MorphFixture, MovesThatChangeNoValueByMoreThanTheThresholdSetNothing)
{
    core->MoveMorph(0.5, 0.5);
    (void)MarkedForHost(*core);
    const std::vector<double> before = Values(*core);
    // No two slot values differ by more than 1, so no blend moves by more than 5e-6.
    EXPECT_EQ(core->MoveMorph(0.5 + 5e-6, 0.5), 0);
    const std::vector<double> after = Values(*core);
    for (int index = 0; index < core->slotParameterIndex(); ++index)
        EXPECT_EQ(after[static_cast<size_t>(index)], before[static_cast<size_t>(index)]) << "parameter " << index;
    EXPECT_EQ(MarkedForHost(*core), (std::vector<int>{core->morphParameterIndex(0), core->morphParameterIndex(1)}));

    EXPECT_EQ(core->MoveMorph(0.5, 0.6), 3); // 0.1 moves each of the three by at least 0.01
    EXPECT_EQ(core->MoveMorph(std::nan(""), 0.6), 0) << "a position that is not a number is ignored";
}

TEST_F(MorphFixture, WarnsOnlyWhileTheLiveSlotIsOneOfAToD)
{
    EXPECT_EQ(core->MorphWarning(), "");
    core->SelectSlot(2);
    EXPECT_EQ(core->MorphWarning(),
              "Preset C is currently selected, which means that the changes you have made using ABCD morphing will "
              "replace it. ABCD morphing uses presets A,B,C and D, so next time you use it you would be morphing "
              "different presets, because you are going to change one of them.");
}

TEST_F(MorphFixture, MorphingInALiveCornerChangesThatCornerOnceItIsLeft)
{
    core->SelectSlot(0);
    core->MoveMorph(1.0, 1.0); // A now holds D's values
    core->SelectSlot(4);
    core->MoveMorph(0.0, 0.0);
    expectValues(0.9, 0.0, 0.8);
}

TEST_F(MorphFixture, HostStateLoadTakesTheCornersFromTheLoadedSlots)
{
    const ZMemoryStream block = SavePluginState(*core);
    auto target = NewReverb();
    LoadPluginState(*target, block.data(), static_cast<int32_t>(block.size()));
    target->MoveMorph(0.5, 0.5);
    EXPECT_NEAR(target->GetParameter(depth), 0.45, 1e-6);
    EXPECT_NEAR(target->GetParameter(positionX), 0.5, 1e-6);
}

TEST_F(MorphFixture, HostReachesTheSlotsAndThePadOffTheAudioThread)
{
    core->SetSampleRate(48000.0);
    core->SetMaxBlockSize(256);
    core->InitProcessing(); // from now on host changes are parked for the next block
    core->SetParameter(core->slotParameterIndex(), 3.0 / 7.0);
    ASSERT_TRUE(Eventually(*core, [&] { return core->slots().live() == 3; }));
    EXPECT_NEAR(core->GetParameter(depth), 0.9, 1e-6);

    core->SetParameter(core->slotParameterIndex(), 1.0);
    core->SetParameter(core->morphParameterIndex(0), 1.0);
    ASSERT_TRUE(Eventually(*core, [&] { return std::abs(core->GetParameter(depth) - 0.3) < 1e-6; }));
    EXPECT_EQ(core->slots().live(), 7);
    EXPECT_NEAR(core->GetParameter(width), 0.6, 1e-6);
}

// ---------------------------------------------------------------- AGC

// An effect that multiplies by a gain the test sets.
class GainEffect : public ZAudioEffectPlugin {
public:
    float gain = 10.0f;
    void Process(const ZHostTimeInfo*, float* const* in, float* const* out, int32_t n) override
    {
        for (int c = 0; c < 2; ++c)
            for (int s = 0; s < n; ++s)
                out[c][s] = gain * in[c][s];
    }
};

// A 440 Hz sine at a given RMS level in dBFS, run through the core block by block.
struct AGCFixture : ::testing::Test {
    static constexpr double kRate = 48000.0;
    static constexpr int kBlock = 480;
    GainEffect* effect = new GainEffect;
    Core core{std::unique_ptr<ZAudioEffectPlugin>(effect)};
    std::vector<float> left = std::vector<float>(kBlock), right = std::vector<float>(kBlock);
    std::vector<float> outLeft = std::vector<float>(kBlock), outRight = std::vector<float>(kBlock);
    long long sample = 0;

    void SetUp() override
    {
        core.SetSampleRate(kRate);
        core.SetMaxBlockSize(kBlock);
        core.InitProcessing();
    }
    // Output level over input level of the last block, in dB.
    double run(double seconds, double levelDb)
    {
        const double amplitude = std::sqrt(2.0) * std::pow(10.0, levelDb / 20.0);
        double gainDb = 0.0;
        for (int block = 0; block < static_cast<int>(seconds * kRate) / kBlock; ++block) {
            for (int s = 0; s < kBlock; ++s, ++sample)
                left[s] = right[s] = static_cast<float>(amplitude * std::sin(2.0 * std::numbers::pi * 440.0 * sample / kRate));
            float* in[2] = {left.data(), right.data()};
            float* out[2] = {outLeft.data(), outRight.data()};
            core.ProcessBlock(in, out, kBlock, true);
            double inPower = 0.0, outPower = 0.0;
            for (int s = 0; s < kBlock; ++s) {
                inPower += left[s] * left[s];
                outPower += outLeft[s] * outLeft[s];
            }
            gainDb = 10.0 * std::log10(outPower / inPower);
        }
        return gainDb;
    }
};

TEST_F(AGCFixture, OffByDefaultAndThenTheOutputIsUntouched)
{
    EXPECT_FALSE(core.agc());
    EXPECT_NEAR(run(1.0, -30.0), 20.0, 1e-4);
}

TEST_F(AGCFixture, LoudOutputIsPulledToTheInputsLoudnessWithinSeconds)
{
    core.SetAGC(true);
    // Input and output hold the same sine, so the window asks for -20 dB from the start
    // and the gain gets there with its 1 s lag: -20 (1 - e^-t) dB.
    EXPECT_NEAR(run(1.0, -30.0), 20.0 - 20.0 * (1.0 - std::exp(-1.0)), 0.1);
    EXPECT_NEAR(run(4.0, -30.0), 20.0 - 20.0 * (1.0 - std::exp(-5.0)), 0.05);
    EXPECT_NEAR(core.agcGainDb(), -20.0 * (1.0 - std::exp(-5.0)), 0.01);
}

TEST_F(AGCFixture, GainStaysWithin24Decibels)
{
    core.SetAGC(true);
    effect->gain = 1000.0f; // +60 dB
    EXPECT_NEAR(run(10.0, -40.0), 60.0 - 24.0, 0.01);
    EXPECT_GE(core.agcGainDb(), -24.0);
    effect->gain = 0.001f; // -60 dB: once the loud output has left the window (3 s) the
                           // gain climbs to +24 dB
    EXPECT_NEAR(run(15.0, -40.0), -60.0 + 24.0, 0.01);
    EXPECT_LE(core.agcGainDb(), 24.0);
}

TEST_F(AGCFixture, InputBelowMinus70DecibelsFreezesTheGain)
{
    core.SetAGC(true);
    run(5.0, -30.0);
    const double frozen = core.agcGainDb();
    effect->gain = 1.0f; // the windows would now ask for 0 dB
    EXPECT_NEAR(run(3.0, -80.0), frozen, 1e-3);
    EXPECT_EQ(core.agcGainDb(), frozen);
    run(3.0, -30.0);
    EXPECT_GT(core.agcGainDb(), frozen + 3.0) << "the gain moves again once the input is back";
}

} // namespace
} // namespace halvern
