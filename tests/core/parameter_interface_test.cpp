#include "core/audio_plugin.h"
#include "core/modulation_enums.h"
#include "core/trace.h"
#include "core/z_value_enum.h"
#include "core/z_value_number.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace halvern {
namespace {

class ParameterCore : public ZAudioPlugin {
public:
    double gain = 1.0;
    int32_t mode = 0;
    ZValueDouble gainValue{&gain, 0.0, 2.0, 1.0, 0.01, "{+0.2} dB"};
    ZValueEnum<ZRangeMode> modeValue{&mode};
    std::vector<double> gainsSeen;

    ParameterCore()
    {
        parameters().add({"Globals", "Globals", "", ZParameterType::Panel, "", false}, nullptr);
        parameters().add({"gain", "Gain", "dB", ZParameterType::Float, "", true}, &gainValue);
        parameters().add({"mode", "Mode", "", ZParameterType::Enumeration, "", true}, &modeValue);
    }
    void ProcessSubBlock(float* const*, float* const* out, int32_t n) override
    {
        gainsSeen.push_back(gain);
        for (int c = 0; c < 2; ++c)
            std::fill(out[c], out[c] + n, 0.0f);
    }
};

struct TraceCapture {
    std::vector<std::string> lines;
    TraceSink previous = SetTraceSink([this](std::string_view text, std::string_view location) {
        lines.push_back(std::string(location) + ": " + std::string(text));
    });
    ~TraceCapture() { SetTraceSink(previous); }
};

TEST(ParameterInterface, ReportsTextsAndDefaultsAndOutOfRangeInputEndsNeutrallyWithTheLocation)
{
    TraceCapture trace;
    ParameterCore core;
    EXPECT_DOUBLE_EQ(core.GetParameterDefaultValue(1), 0.5); // 1 of 0..2
    EXPECT_EQ(core.GetParameter(0), 0.0);
    EXPECT_EQ(core.GetParameterValueName(0), "");
    core.SetParameter(0, 0.7);
    EXPECT_EQ(core.GetParameter(0), 0.0) << "a panel ignores writes";
    core.SetParameter(1, 0.75);
    EXPECT_DOUBLE_EQ(core.gain, 1.5);
    EXPECT_EQ(core.GetParameterValueName(1), "+1.50 dB");
    EXPECT_EQ(core.GetParameterValueNameFrom01(1, 0.0), "0.00 dB");
    EXPECT_EQ(core.GetParameterValueNameFrom01(2, 0.6), "Up only");
    EXPECT_DOUBLE_EQ(core.gain, 1.5); // showing another value does not touch the variable
    EXPECT_DOUBLE_EQ(core.ParseParameterValueName(1, "+0.50 dB"), 0.25);
    EXPECT_DOUBLE_EQ(core.ParseParameterValueName(2, "Interval"), 1.0);
    EXPECT_DOUBLE_EQ(core.ParseParameterValueName(1, "loud"), 0.75) << "unparsed text gives the current value";
    EXPECT_EQ(core.GetParameterName(99), "");
    EXPECT_EQ(core.GetParameter(-1), 0.0);
    core.SetParameter(3, 0.5);
    ASSERT_EQ(trace.lines.size(), 3u);
    EXPECT_EQ(trace.lines[0], "ZAudioPlugin::GetParameterName: Invalid parameter index.");
    EXPECT_EQ(trace.lines[2], "ZAudioPlugin::SetParameter: Invalid parameter index.");
    core.SetParameter(1, 7.0);
    EXPECT_DOUBLE_EQ(core.gain, 2.0);
    core.SetParameter(1, std::nan(""));
    EXPECT_DOUBLE_EQ(core.gain, 2.0);
    core.SetParameter(2, -3.0);
    EXPECT_EQ(core.mode, 0);
}

TEST(ParameterInterface, ChangesDuringProcessingWaitForTheNextBlockAndGlideAcrossIt)
{
    ParameterCore core;
    core.SetSampleRate(48000.0);
    core.SetMaxBlockSize(512);
    core.SetAutomationSubBlock(128);
    core.InitProcessing();
    std::vector<float> left(512), right(512);
    float* io[2] = {left.data(), right.data()};
    core.SetParameter(1, 1.0); // gain 1 -> 2
    core.SetParameter(2, 0.5); // a stepped parameter jumps
    EXPECT_DOUBLE_EQ(core.gain, 1.0);          // not yet taken over ...
    EXPECT_DOUBLE_EQ(core.GetParameter(1), 1.0); // ... but the host sees its value
    core.ProcessBlock(io, io, 512, true);
    EXPECT_EQ(core.gainsSeen, (std::vector<double>{1.0, 1.25, 1.5, 1.75}));
    EXPECT_DOUBLE_EQ(core.gain, 2.0);
    EXPECT_EQ(core.mode, 2);
    core.gainsSeen.clear();
    core.ProcessBlock(io, io, 512, true);
    EXPECT_EQ(core.gainsSeen, (std::vector<double>{2.0, 2.0})) << "no glide without changes";
}

TEST(ParameterInterface, ChangesMadeInsideReachTheHostOnceAndAnAdapterRegistersAGroupOfValues)
{
    struct Host : ZAudioPluginAdapter {
        std::vector<std::pair<int, double>> sent;
        void ReportLatency(int32_t) override {}
        void SendAutomation(int32_t index, double value) override { sent.emplace_back(index, value); }
        void QueueMIDIEvent(const ZMIDIEvent&) override {}
    } host;
    ParameterCore core;
    core.SetHostAdapter(&host);
    core.parameters().setNow(1, 0.25);
    core.parameters().markForHost(1);
    core.parameters().markForHost(1);
    core.SendPendingAutomation();
    core.SendPendingAutomation();
    ASSERT_EQ(host.sent.size(), 1u);
    EXPECT_EQ(host.sent[0], std::make_pair(1, 0.25));

    double x = 0.5, y = 1.0;
    ZValueDouble xValue{&x, 0.0, 1.0, 0.5, 0.01, "{0.6}"};
    ZValueDouble yValue{&y, 0.0, 1.0, 1.0, 0.01, "{0.6}"};
    ZAudioPlugin::AutomationAdapter position;
    position.Register(core, {{{"PositionX", "Position X", "", ZParameterType::Float, "", true}, &xValue},
                             {{"PositionY", "Position Y", "", ZParameterType::Float, "", true}, &yValue}});
    EXPECT_EQ(position.firstIndex(), 3);
    EXPECT_EQ(core.GetParameterName(4), "Position Y");
    position.SendAutomationValueWithChange(0, 0.125);
    EXPECT_DOUBLE_EQ(x, 0.125);
    EXPECT_EQ(core.GetParameterValueName(3), "0.125000");
}

} // namespace
} // namespace halvern
