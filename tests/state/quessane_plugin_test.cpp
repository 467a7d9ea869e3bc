#include "reverb/halvern_audio_effect_plugin.h"
#include "state/plugin_state_block.h"
#include "state/quessane_audio_effect_plugin.h"
#include "state/serialization_context.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <string>
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

// The values of every parameter before the slot selector.
std::vector<double> Values(Core& core)
{
    std::vector<double> values;
    for (int index = 0; index < core.slotParameterIndex(); ++index)
        values.push_back(core.GetParameter(index));
    return values;
}

std::vector<int> MarkedForHost(Core& core)
{
    std::vector<int> marked;
    core.parameters().sendMarked([&](int index, double) { marked.push_back(index); });
    return marked;
}

TEST(StateSlots, StartIdenticalKeepEachSlotsChangesAndAHostStateRestoresEverySlot)
{
    auto core = NewReverb();
    EXPECT_EQ(core->slots().live(), 0);
    EXPECT_EQ(core->slots().previous(), -1);
    ZMLElement liveState;
    core->serializeState(ZSerializationContext(liveState, true));
    for (int slot = 0; slot < ZStateSlots::kCount; ++slot)
        EXPECT_TRUE(core->slots().state(slot) == liveState) << "slot " << slot;

    const int liveDepth = IndexOf(*core, "ReverbDepth");
    const double initial = core->GetParameter(liveDepth);
    core->SetParameter(liveDepth, 0.25);
    core->SelectSlot(0); // the live slot: nothing happens, not even storing it
    EXPECT_EQ(core->slots().previous(), -1);
    EXPECT_TRUE(core->slots().state(0) == liveState);
    EXPECT_TRUE(MarkedForHost(*core).empty());

    core->SelectSlot(1);
    EXPECT_EQ(core->GetParameter(liveDepth), initial);
    EXPECT_EQ(core->slots().previous(), 0);
    EXPECT_EQ(core->GetParameterValueName(core->slotParameterIndex()), "B");
    EXPECT_EQ(MarkedForHost(*core).size(), static_cast<size_t>(core->GetParameterCount()));
    core->SelectSlot(0);
    EXPECT_EQ(core->GetParameter(liveDepth), 0.25);

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
    for (int slot = 0; slot < ZStateSlots::kCount; ++slot)
        EXPECT_EQ(document->hasChild("Preset" + std::to_string(slot)), slot != 2) << "slot " << slot;

    auto target = NewReverb();
    LoadPluginState(*target, block.data(), static_cast<int32_t>(block.size()));
    EXPECT_EQ(target->slots().live(), 2);
    EXPECT_TRUE(target->agc());
    EXPECT_EQ(target->GetParameter(depth), 0.5);
    for (int slot : {0, 1, 3, 7}) {
        std::unique_ptr<ZMLElement> restored = target->slots().state(slot).clone();
        restored->setName(source->slots().state(slot).name());
        EXPECT_TRUE(*restored == source->slots().state(slot)) << "slot " << slot;
    }
}

// Slots A to D hold distinct values of three parameters (the position is stored apart);
// the instance is left in slot E.
struct Morph : ::testing::Test {
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
    void expect(Core& on, double expectedDepth, double expectedWidth, double expectedPosition)
    {
        EXPECT_NEAR(on.GetParameter(depth), expectedDepth, 1e-6);
        EXPECT_NEAR(on.GetParameter(width), expectedWidth, 1e-6);
        EXPECT_NEAR(on.GetParameter(positionX), expectedPosition, 1e-6);
    }
};

TEST_F(Morph, CornersGiveTheirSlotsTheCentreTheMeanOfAllAndAHostStateKeepsThePad)
{
    ZMLElement atDefault("settings");
    StorePluginState(*core, atDefault);
    EXPECT_EQ(atDefault.findAttribute("ABCDMorphingU"), nullptr) << "the pad at its default is left out";
    // The first move, from slot E to where the pad already stands, sets every value of A.
    EXPECT_EQ(core->MoveMorph(0.0, 0.0), 3);
    const std::vector<double> morphed = Values(*core);
    EXPECT_EQ(core->MoveMorph(1.0, 0.0), 3);
    expect(*core, 0.3, 0.6, 0.4); // B
    core->MoveMorph(0.25, 0.5); // left 0.3/0.5/0.4, right 0.6/0.3/0.6
    expect(*core, 0.375, 0.45, 0.45);

    const ZMemoryStream block = SavePluginState(*core);
    auto target = NewReverb();
    LoadPluginState(*target, block.data(), static_cast<int32_t>(block.size()));
    EXPECT_EQ(target->GetParameter(target->morphParameterIndex(0)), 0.25);
    EXPECT_EQ(target->GetParameter(target->morphParameterIndex(1)), 0.5);
    expect(*target, 0.375, 0.45, 0.45);
    target->MoveMorph(0.5, 0.5); // the corners come from the loaded slots
    expect(*target, 0.45, 0.4, 0.5);

    EXPECT_EQ(core->MorphWarning(), "");
    core->SelectSlot(0);
    EXPECT_NE(core->MorphWarning().find("Preset A is currently selected"), std::string::npos);
    const std::vector<double> slotA = Values(*core);
    for (size_t index = 0; index < slotA.size(); ++index)
        EXPECT_NEAR(morphed[index], slotA[index], 1e-6) << "parameter " << index;
}

TEST_F(Morph, MovesThatChangeNoValueByMoreThanTheThresholdSetNothing)
{
    core->MoveMorph(0.5, 0.5);
    (void)MarkedForHost(*core);
    const std::vector<double> before = Values(*core);
    // No two slot values differ by more than 1, so no blend moves by more than 5e-6.
    EXPECT_EQ(core->MoveMorph(0.5 + 5e-6, 0.5), 0);
    EXPECT_EQ(Values(*core), before);
    EXPECT_EQ(MarkedForHost(*core), (std::vector<int>{core->morphParameterIndex(0), core->morphParameterIndex(1)}));
    EXPECT_EQ(core->MoveMorph(0.5, 0.6), 3); // a move of 0.1 changes each of the three by 0.04 or more
    EXPECT_EQ(core->MoveMorph(std::nan(""), 0.6), 0) << "a position that is not a number is ignored";
}

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

struct AGC : ::testing::Test {
    static constexpr double kRate = 48000.0;
    static constexpr int kBlock = 480;
    GainEffect* effect = new GainEffect;
    Core core{std::unique_ptr<ZAudioEffectPlugin>(effect)};
    std::vector<float> in = std::vector<float>(kBlock);
    std::vector<float> left = std::vector<float>(kBlock), right = std::vector<float>(kBlock);
    long long sample = 0;

    void SetUp() override
    {
        core.SetSampleRate(kRate);
        core.SetMaxBlockSize(kBlock);
        core.InitProcessing();
    }
    // Runs a 440 Hz sine at an RMS level in dBFS; returns output over input level in the last block, in dB.
    double run(double seconds, double levelDb)
    {
        const double amplitude = std::sqrt(2.0) * std::pow(10.0, levelDb / 20.0);
        double inPower = 0.0, outPower = 0.0;
        for (int block = 0; block < static_cast<int>(seconds * kRate) / kBlock; ++block) {
            for (int s = 0; s < kBlock; ++s, ++sample)
                in[s] = static_cast<float>(amplitude * std::sin(2.0 * std::numbers::pi * 440.0 * sample / kRate));
            float* inputs[2] = {in.data(), in.data()};
            float* outputs[2] = {left.data(), right.data()};
            core.ProcessBlock(inputs, outputs, kBlock, true);
            inPower = outPower = 0.0;
            for (int s = 0; s < kBlock; ++s) {
                inPower += in[s] * in[s];
                outPower += left[s] * left[s];
            }
        }
        return 10.0 * std::log10(outPower / inPower);
    }
};

TEST_F(AGC, OffByDefaultOnItPullsToTheInputsLoudnessAndFreezesBelowMinus70Decibels)
{
    EXPECT_NEAR(run(1.0, -30.0), 20.0, 1e-4);
    core.SetAGC(true);
    // Input and output hold the same sine, so the window asks for -20 dB from the start
    // and the gain gets there with its 1 s lag: -20 (1 - e^-t) dB.
    EXPECT_NEAR(run(1.0, -30.0), 20.0 - 20.0 * (1.0 - std::exp(-1.0)), 0.1);
    EXPECT_NEAR(run(4.0, -30.0), 20.0 - 20.0 * (1.0 - std::exp(-5.0)), 0.05);

    const double frozen = core.agcGainDb();
    effect->gain = 1.0f; // the window would now ask for 0 dB
    EXPECT_NEAR(run(3.0, -80.0), frozen, 1e-3);
    EXPECT_EQ(core.agcGainDb(), frozen);
    run(3.0, -30.0);
    EXPECT_GT(core.agcGainDb(), frozen + 3.0) << "the gain moves again once the input is back";
}

TEST_F(AGC, SwitchedByItsParameterTheGainStaysWithin24Decibels)
{
    core.SetParameter(core.agcParameterIndex(), 1.0); // taken over at the next block
    effect->gain = 1000.0f; // +60 dB
    EXPECT_NEAR(run(10.0, -40.0), 60.0 - 24.0, 0.01);
    EXPECT_TRUE(core.agc());
    // -60 dB: once the loud output has left the 3 s window the gain climbs to +24 dB.
    effect->gain = 0.001f;
    EXPECT_NEAR(run(15.0, -40.0), -60.0 + 24.0, 0.01);
}

} // namespace
} // namespace halvern
