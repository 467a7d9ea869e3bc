#include "core/z_value_number.h"
#include "modulation/audio_effect_plugin_to_audio_plugin_adapter.h"

#include "core/z_exception.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>
#include <vector>

namespace halvern {
namespace {

// An effect of the test's own: a gain and two other parameters, the values it saw.
class GainEffect : public ZAudioEffectPlugin {
public:
    double gain = 0.5, tone = 0.5, size = 0.5;
    ZValueDouble gainValue{&gain, 0, 1, 0.5, 0.01};
    ZValueDouble toneValue{&tone, 0, 1, 0.5, 0.01};
    ZValueDouble sizeValue{&size, 0, 1, 0.5, 0.01};
    std::vector<double> gainsSeen;
    int updates = 0;

    void RegisterParameters(ZAudioPlugin& core) override
    {
        core.parameters().add({"Globals", "Globals", "", ZParameterType::Panel, "", false}, nullptr);
        core.parameters().add({"gain", "Gain", "", ZParameterType::Float, "", true}, &gainValue);
        core.parameters().add({"tone", "Tone", "", ZParameterType::Float, "", true}, &toneValue);
        core.parameters().add({"size", "Size", "", ZParameterType::Float, "", true}, &sizeValue);
    }
    bool TakeParameterChanges() override
    {
        bool changed = false;
        for (ZValueDouble* value : {&gainValue, &toneValue, &sizeValue})
            changed = value->isChanged() || changed, value->clearChanged();
        return changed;
    }
    bool failPreparation = false;

    void Update() override { ++updates; }
    void Prepare(double rate, int32_t block) override
    {
        if (failPreparation)
            throw ZException("Out of memory.");
        ZAudioEffectPlugin::Prepare(rate, block);
    }
    void Process(const ZHostTimeInfo*, float* const* in, float* const* out, int32_t n) override
    {
        gainsSeen.push_back(gain);
        for (int c = 0; c < 2; ++c)
            for (int s = 0; s < n; ++s)
                out[c][s] = static_cast<float>(gain) * in[c][s];
    }
};

struct Host {
    GainEffect* effect;
    ZAudioEffectPluginToAudioPluginAdapter core;
    std::vector<float> left, right;

    explicit Host(int block = 480)
        : effect(new GainEffect), core(std::unique_ptr<ZAudioEffectPlugin>(effect)),
          left(static_cast<size_t>(block), 0.0f), right(static_cast<size_t>(block), 0.0f)
    {
        core.SetSampleRate(48000.0);
        core.SetMaxBlockSize(block);
        core.InitProcessing();
    }
    void run(int blocks = 1)
    {
        float* io[2] = {left.data(), right.data()};
        for (int i = 0; i < blocks; ++i)
            core.ProcessBlock(io, io, static_cast<int>(left.size()), true);
    }
    // Turns an LFO on with the given changes to its settings and starts it at its phase.
    ZLFO& startLFO(int index, const std::function<void(ZLFOSettings&)>& change)
    {
        ZLFOSettings settings = core.lfo(index).settings();
        settings.enabled = 1;
        change(settings);
        core.lfo(index).setSettings(settings);
        core.lfo(index).reset();
        return core.lfo(index);
    }
};

ZModulatorTarget TargetOn(int parameter, double value, double depth, ZRangeMode mode = ZRangeMode::UpAndDown)
{
    ZModulatorTarget target;
    target.parameter = parameter, target.value = value, target.range = depth, target.rangeMode = mode;
    return target;
}

TEST(ModulatorHost, AFailedPreparationLeavesTheInstanceSilentAndModulatorParametersFollowTheEffects)
{
    Host failing;
    failing.effect->failPreparation = true;
    failing.core.InitProcessing();
    std::fill(failing.left.begin(), failing.left.end(), 1.0f);
    failing.run();
    EXPECT_TRUE(failing.effect->gainsSeen.empty()) << "a half-prepared effect was run";
    EXPECT_EQ(failing.left, std::vector<float>(failing.left.size(), 0.0f));

    failing.effect->failPreparation = false;
    failing.core.InitProcessing();
    std::fill(failing.left.begin(), failing.left.end(), 1.0f);
    failing.run();
    EXPECT_FLOAT_EQ(failing.left[0], 0.5f);

    Host host;
    ZAudioEffectPluginToAudioPluginAdapter& core = host.core;
    EXPECT_EQ(core.multiParameterIndex(0), 4);
    core.multiParameter(0).setName("Space");
    EXPECT_EQ(core.GetParameterName(4), "Space");
    EXPECT_EQ(core.bypassIndex(), 8);
    EXPECT_EQ(core.GetParameterName(core.lfoParameterIndex(3) + 1), "LFO 4 frequency");
    EXPECT_EQ(core.lfo(0).targets().targets().front().parameter, 1); // the first parameter with a value
}

TEST(ModulatorHost, LFOPhaseAdvancesPerBlockTenTimesFasterWithHighSpeedAndFollowsItsSyncGroupsLeader)
{
    Host host(480);
    ZLFO& lfo = host.startLFO(0, [](ZLFOSettings& s) { s.frequency = 1.0; });
    host.run(5);
    EXPECT_NEAR(lfo.phase(), 0.05, 1e-12);
    host.startLFO(0, [](ZLFOSettings& s) { s.highSpeed = true; });
    host.run(3);
    EXPECT_NEAR(lfo.phase(), 0.3, 1e-12);

    // LFO 1 is in group 1 but off; LFOs 2 and 3 run in it from different phases.
    ZLFOSettings off = lfo.settings();
    off.enabled = 0, off.syncGroup = 1;
    lfo.setSettings(off);
    ZLFO& leader = host.startLFO(1, [](ZLFOSettings& s) { s.syncGroup = 1, s.phase = 0.25, s.frequency = 1.0; });
    ZLFO& follower = host.startLFO(2, [](ZLFOSettings& s) { s.syncGroup = 1, s.phase = 0.6, s.frequency = 1.0; });
    host.run(10);
    EXPECT_NEAR(leader.phase(), 0.35, 1e-9);
    EXPECT_NEAR(follower.phase(), 0.35, 1e-9);
}

TEST(ModulatorHost, LFOWritesItsTargetsOncePerBlockAndGivesThemBackWhenStopped)
{
    Host host(480);
    host.core.SetMaxSubBlock(480); // one piece per block
    host.core.lfo(0).targets().replaceAll({TargetOn(1, 0.5, 1.0)});
    // High speed 25 Hz: a quarter cycle per block, from the top of the sine.
    ZLFO& lfo = host.startLFO(0, [](ZLFOSettings& s) { s.frequency = 2.5, s.highSpeed = true, s.phase = 0.25; });
    host.effect->gain = 0.3;
    host.run();
    EXPECT_DOUBLE_EQ(host.effect->gainsSeen.back(), 1.0);
    EXPECT_GT(host.core.GetParameter(1), 0.99);
    host.run();
    EXPECT_NEAR(host.effect->gainsSeen.back(), 0.5, 1e-9); // phase 0.5: sine 0
    EXPECT_GE(host.effect->updates, 2);

    lfo.setEnabledByUser(false); // a manual stop restores the value from before
    host.run();
    EXPECT_DOUBLE_EQ(host.effect->gain, 0.3);
}

TEST(ModulatorHost, LFOModulationAtFullAmountBehavesLikeNormalMode)
{
    std::vector<double> outputs[2];
    for (int pass = 0; pass < 2; ++pass) {
        Host host(480);
        ZLFO& lfo = host.startLFO(0, [&](ZLFOSettings& s) {
            s.frequency = 3.0, s.lfoAmount = pass;
            s.mode = static_cast<int32_t>(pass == 0 ? ZLFOMode::Normal : ZLFOMode::Envelope);
        });
        for (int i = 0; i < 480; ++i)
            host.left[static_cast<size_t>(i)] = host.right[static_cast<size_t>(i)] = (i % 7) * 0.1f;
        for (int block = 0; block < 20; ++block) {
            host.run();
            outputs[pass].push_back(lfo.lastOutput());
        }
    }
    EXPECT_EQ(outputs[0], outputs[1]);
}

TEST(ModulatorHost, PitchModeMapsATonesPitch)
{
    Host host(512);
    ZLFO& lfo = host.startLFO(0, [](ZLFOSettings& s) {
        s.mode = static_cast<int32_t>(ZLFOMode::Pitch), s.minFrequency = 55.0, s.maxFrequency = 1760.0;
    });
    // 220 Hz is two of the five octaves from 55 Hz to 1760 Hz: d = 0.4.
    int t = 0;
    for (int block = 0; block < 60; ++block) {
        for (size_t i = 0; i < host.left.size(); ++i, ++t)
            host.left[i] = host.right[i] = static_cast<float>(0.5 * std::sin(2.0 * std::numbers::pi * 220.0 * t / 48000.0));
        host.run();
    }
    EXPECT_NEAR(lfo.lastDetectorValue(), 0.4, 0.01);
    EXPECT_NEAR(lfo.lastOutput(), -0.2, 0.02);
}

TEST(ModulatorHost, WithModulatorsDisabledNoLFORunsButSwitchingMultiParametersStillAct)
{
    Host host(480);
    host.core.lfo(0).targets().replaceAll({TargetOn(1, 0.5, 1.0)});
    host.startLFO(0, [](ZLFOSettings& s) { s.phase = 0.25; });
    ZMultiParameter& switcher = host.core.multiParameter(0);
    switcher.setEnabled(true);
    switcher.replaceTargets({TargetOn(2, 0.0, 0.0, ZRangeMode::Interval)});
    switcher.modeObject().setNormalized(1.0 / 3.0); // "Switch"
    host.core.SetModulatorsEnabled(false);
    host.core.SetParameter(host.core.multiParameterIndex(0), 1.0);
    host.run(5);
    EXPECT_DOUBLE_EQ(host.effect->gain, 0.5); // no LFO wrote
    EXPECT_GT(host.effect->tone, 0.0);        // the switch moves its target
    EXPECT_TRUE(switcher.switchMoving());
}

TEST(ModulatorHost, NormalMultiParameterDrivesItsTargetsWhenItsValueChanges)
{
    Host host(480);
    ZMultiParameter& knob = host.core.multiParameter(1);
    knob.setEnabled(true);
    knob.replaceTargets({TargetOn(1, 0.2, 0.0, ZRangeMode::Interval), TargetOn(3, 0.5, 0.5, ZRangeMode::UpOnly)});
    ZModulatorTarget first = knob.targets().targets()[0];
    first.maxValue = 0.6;
    knob.setTarget(0, first);
    host.core.SetParameter(host.core.multiParameterIndex(1), 0.5);
    host.run(2); // the value glides to 0.5 across the first block
    EXPECT_DOUBLE_EQ(host.effect->gain, 0.4); // halfway from 0.2 to 0.6
    EXPECT_DOUBLE_EQ(host.effect->size, 0.75); // 0.5 + 0.5 * min(0.5, 0.5)
    struct Recorder : ZAudioPluginAdapter {
        std::vector<int> indices;
        void ReportLatency(int32_t) override {}
        void SendAutomation(int32_t index, double) override { indices.push_back(index); }
        void QueueMIDIEvent(const ZMIDIEvent&) override {}
    } recorder;
    host.core.SetHostAdapter(&recorder);
    host.core.ProcessUpdate();
    EXPECT_EQ(recorder.indices, (std::vector<int>{1, 3}));
}

TEST(ModulatorHost, MIDIReachesControllersTheBypassParameterSwitchesTheFrameAndRandomizingKeepsToEnabled)
{
    Host host(480);
    ZMIDIControllerAssignment modWheel;
    modWheel.controller = 1, modWheel.target = TargetOn(1, 0.5, 1.0, ZRangeMode::FullRange);
    host.core.midiControllers().setControllers({modWheel});
    host.core.midiControllers().setControllersEnabled(true);
    host.core.ProcessMIDIMessage(0xB0, 1, 0, 0);
    EXPECT_DOUBLE_EQ(host.effect->gain, 0.0);

    std::fill(host.left.begin(), host.left.end(), 0.25f);
    host.core.SetParameter(host.core.bypassIndex(), 1.0);
    host.run();
    EXPECT_TRUE(host.core.bypass());
    EXPECT_FLOAT_EQ(host.left[0], 0.25f); // passed through, though the gain is 0

    // Randomizing only the enabled modulators leaves the others alone.
    host.startLFO(2, [](ZLFOSettings&) {});
    const double before = host.core.lfo(0).settings().frequency;
    host.core.GenerateRandomSettingsSmart();
    EXPECT_EQ(host.core.lfo(0).settings().frequency, before);
    EXPECT_NE(host.core.lfo(2).settings().frequency, before);
    host.core.GenerateRandomSettings();
    EXPECT_NE(host.core.lfo(0).settings().frequency, before);
    const double frequency = host.core.lfo(1).settings().frequency;
    EXPECT_TRUE(frequency >= 0.05 && frequency <= 5.0) << frequency;
}

} // namespace
} // namespace halvern
