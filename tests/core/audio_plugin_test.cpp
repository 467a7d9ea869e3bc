#include "core/audio_plugin.h"
#include "core/z_exception.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <functional>
#include <future>
#include <numbers>
#include <thread>
#include <vector>

namespace halvern {
namespace {

// A core whose effect is written by each test: by default it copies input to output.
class TestCore : public ZAudioPlugin {
public:
    std::function<void(float* const*, float* const*, int)> effect = [](float* const* in, float* const* out, int n) {
        for (int c = 0; c < 2; ++c)
            for (int s = 0; s < n; ++s)
                out[c][s] = in[c][s];
    };
    std::vector<int> pieces;
    std::vector<double> positions;
    double clampLimit = -1.0;

    void ProcessSubBlock(float* const* in, float* const* out, int32_t n) override
    {
        pieces.push_back(n);
        positions.push_back(hostTime().musicalPosition);
        effect(in, out, n);
    }
    double GetOutputClampLimit() override { return clampLimit; }
};

struct StereoBlock {
    std::vector<float> left, right;
    float* pointers[2];
    explicit StereoBlock(int n, float fill = 0.0f) : left(static_cast<size_t>(n), fill), right(static_cast<size_t>(n), fill)
    {
        pointers[0] = left.data();
        pointers[1] = right.data();
    }
};

void prepare(TestCore& core, int maxBlock = 4096, double rate = 48000.0)
{
    core.SetSampleRate(rate);
    core.SetMaxBlockSize(maxBlock);
    core.InitProcessing();
}

std::vector<float> ramp(int n, float start = 1.0f)
{
    std::vector<float> values(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i)
        values[static_cast<size_t>(i)] = start + static_cast<float>(i);
    return values;
}

TEST(AudioPluginFrame, CutsBlocksIntoPiecesAndAdvancesTheMusicalPosition)
{
    TestCore core;
    prepare(core);
    core.hostTime().tempo = 120.0;
    core.hostTime().musicalPosition = 8.0;
    core.hostTime().positionValid = true;
    StereoBlock in(1000, 0.5f), out(1000);
    core.ProcessBlock(in.pointers, out.pointers, 1000, true);

    EXPECT_EQ(core.pieces, (std::vector<int>{256, 256, 256, 232}));
    // 256 samples at 120 bpm and 48 kHz are 256 * 2 / 48000 quarter notes.
    const double step = 256.0 * 120.0 / (48000.0 * 60.0);
    ASSERT_EQ(core.positions.size(), 4u);
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(core.positions[static_cast<size_t>(i)], 8.0 + i * step, 1e-12);

    // Without a valid position the pieces still come, but the position stands still.
    core.pieces.clear();
    core.positions.clear();
    core.hostTime().positionValid = false;
    core.SetMaxSubBlock(300);
    core.ProcessBlock(in.pointers, out.pointers, 1000, true);
    EXPECT_EQ(core.pieces, (std::vector<int>{300, 300, 300, 100}));
    for (double position : core.positions)
        EXPECT_EQ(position, core.positions.front());

    // A block no longer than the piece length is one call.
    core.pieces.clear();
    core.SetMaxSubBlock(0);
    core.ProcessBlock(in.pointers, out.pointers, 256, true);
    EXPECT_EQ(core.pieces, (std::vector<int>{256}));
}

TEST(AudioPluginFrame, HostBlocksLongerThanAnnouncedAreTakenInPreparedLengths)
{
    TestCore core;
    prepare(core, 512);
    StereoBlock in(1300, 0.25f), out(1300);
    core.ProcessBlock(in.pointers, out.pointers, 1300, true);
    EXPECT_EQ(core.pieces, (std::vector<int>{256, 256, 256, 256, 256, 20}));
    EXPECT_EQ(out.left, in.left);
    EXPECT_EQ(out.right, in.right);

    // A longer block announced without preparing again still fits the buffers prepared
    // for 512 (the sanitizer build would report an overrun).
    core.SetMaxBlockSize(4096);
    core.pieces.clear();
    core.ProcessBlock(in.pointers, out.pointers, 1300, true);
    EXPECT_EQ(core.pieces, (std::vector<int>{256, 256, 256, 256, 256, 20}));
    EXPECT_EQ(out.left, in.left);
}

TEST(AudioPluginFrame, AddsTheDenormalOffsetToInputsAndIgnoresANullFirstOutput)
{
    TestCore core;
    prepare(core);
    StereoBlock in(64, 0.0f), out(64, 7.0f);
    float* noOutputs[2] = {nullptr, out.right.data()};
    core.ProcessBlock(in.pointers, noOutputs, 64, true);
    EXPECT_TRUE(core.pieces.empty());
    EXPECT_EQ(out.right[0], 7.0f);

    core.ProcessBlock(in.pointers, out.pointers, 64, true);
    EXPECT_EQ(in.left[10], 1.0e-15f);
    EXPECT_EQ(out.right[63], 1.0e-15f);
}

// Feeds a running ramp through the core in blocks and returns what came out.
std::vector<float> runStream(TestCore& core, std::vector<float>& input, int block, const std::function<void(int)>& beforeBlock)
{
    std::vector<float> output(input.size());
    std::vector<float> right(static_cast<size_t>(block));
    for (size_t at = 0; at < input.size(); at += static_cast<size_t>(block)) {
        beforeBlock(static_cast<int>(at));
        float* in[2] = {input.data() + at, right.data()};
        float* out[2] = {output.data() + at, right.data()};
        core.ProcessBlock(in, out, block, true);
    }
    return output;
}

TEST(AudioPluginFrame, BypassDelaysByExactlyTheLatencyAlsoAcrossChanges)
{
    TestCore core;
    prepare(core, 256);
    core.SetBypass(true);

    std::vector<float> plain = ramp(512);
    std::vector<float> plainOut = runStream(core, plain, 64, [](int) {});
    EXPECT_EQ(plainOut, plain);
    EXPECT_TRUE(core.pieces.empty()); // the effect never runs while bypassed

    core.SetLatency(37);
    std::vector<float> input = ramp(3072);
    // Latency 37 until sample 1024, then 50 (13 more), then 20 from sample 2048.
    const std::vector<float> output = runStream(core, input, 64, [&](int at) {
        if (at == 1024)
            core.SetLatency(50);
        if (at == 2048)
            core.SetLatency(20);
    });
    for (int t = 0; t < 37; ++t)
        EXPECT_EQ(output[static_cast<size_t>(t)], 0.0f) << t;
    for (int t = 37; t < 1024; ++t)
        ASSERT_EQ(output[static_cast<size_t>(t)], input[static_cast<size_t>(t - 37)]) << t;
    // The longer delay starts with the 13 missing samples as silence, then runs on.
    for (int t = 1024; t < 1024 + 13; ++t)
        EXPECT_EQ(output[static_cast<size_t>(t)], 0.0f) << t;
    for (int t = 1024 + 13; t < 2048; ++t)
        ASSERT_EQ(output[static_cast<size_t>(t)], input[static_cast<size_t>(t - 50)]) << t;
    // The shorter delay drops the oldest samples and is exact at once.
    for (int t = 2048; t < 3072; ++t)
        ASSERT_EQ(output[static_cast<size_t>(t)], input[static_cast<size_t>(t - 20)]) << t;
}

TEST(AudioPluginFrame, AccumulatingCallsAddToWhatTheHostHeld)
{
    for (bool effectAdds : {false, true}) {
        TestCore core;
        core.SetClearOutputsFirst(effectAdds);
        if (effectAdds)
            core.effect = [](float* const* in, float* const* out, int n) {
                for (int c = 0; c < 2; ++c)
                    for (int s = 0; s < n; ++s)
                        out[c][s] += in[c][s];
            };
        prepare(core);
        StereoBlock in(300, 0.5f), out(300, 0.25f);
        core.ProcessBlock(in.pointers, out.pointers, 300, false);
        for (float sample : out.left)
            ASSERT_FLOAT_EQ(sample, 0.75f);
        for (float sample : out.right)
            ASSERT_FLOAT_EQ(sample, 0.75f);

        // A replacing call with an effect that adds gets cleared outputs first.
        StereoBlock fresh(300, 0.25f);
        core.ProcessBlock(in.pointers, fresh.pointers, 300, true);
        EXPECT_FLOAT_EQ(fresh.left[5], 0.5f);
    }
}

TEST(AudioPluginFrame, InPlaceProcessingWithSeparateInputsShowsTheEffectTheUntouchedInput)
{
    // An effect that clears its outputs before it reads its inputs.
    auto clearsFirst = [](float* const* in, float* const* out, int n) {
        for (int c = 0; c < 2; ++c)
            for (int s = 0; s < n; ++s)
                out[c][s] = 0.0f;
        for (int c = 0; c < 2; ++c)
            for (int s = 0; s < n; ++s)
                out[c][s] += 2.0f * in[c][s];
    };
    for (bool separate : {false, true}) {
        TestCore core;
        core.effect = clearsFirst;
        core.SetSeparateInputBuffers(separate);
        prepare(core);
        StereoBlock block(128, 0.5f);
        core.ProcessBlock(block.pointers, block.pointers, 128, true);
        EXPECT_FLOAT_EQ(block.left[17], separate ? 1.0f : 0.0f);
        EXPECT_FLOAT_EQ(block.right[127], separate ? 1.0f : 0.0f);
    }
}

struct ModeCase {
    ZChannelMode mode;
    uint32_t mask;
    float left, right; // expected output for input (L, R) = (3, 1) through a gain of 2
};

TEST(AudioPluginFrame, ChannelModesRouteTheRightChannelsThroughTheEffect)
{
    // L = 3, R = 1: M = 2, S = 1. The effect doubles what it sees.
    const ModeCase cases[] = {
        {ZChannelMode::Stereo, 0, 6, 2},
        {ZChannelMode::Left, 0, 6, 1},
        {ZChannelMode::Right, 0, 3, 2},
        {ZChannelMode::MidSide, 0, 6, 2},         // (2M + 2S, 2M - 2S)
        {ZChannelMode::Side, 0, 4, 0},            // (M + 2S, M - 2S)
        {ZChannelMode::Mid, 0, 5, 3},             // (2M + S, 2M - S)
        {ZChannelMode::InvertedRight, 0, 6, -2},
        {ZChannelMode::Surround, 0b11, 6, 2},
        {ZChannelMode::Surround, 0b01, 6, 1},
        {ZChannelMode::Surround, 0b10, 3, 2},
        {ZChannelMode::Surround, 0b00, 3, 1},
    };
    for (const ModeCase& c : cases) {
        TestCore core;
        core.effect = [](float* const* in, float* const* out, int n) {
            for (int ch = 0; ch < 2; ++ch)
                for (int s = 0; s < n; ++s)
                    out[ch][s] = 2.0f * in[ch][s];
        };
        prepare(core);
        core.SetChannelMode(c.mode);
        core.SetSurroundChannelMask(c.mask);
        StereoBlock in(600, 3.0f), out(600);
        std::fill(in.right.begin(), in.right.end(), 1.0f);
        core.ProcessBlock(in.pointers, out.pointers, 600, true);
        const std::string label = std::string(ChannelModeName(c.mode)) + " mask " + std::to_string(c.mask);
        EXPECT_FLOAT_EQ(out.left[0], c.left) << label;
        EXPECT_FLOAT_EQ(out.right[599], c.right) << label;
        // The host's input is never changed beyond the denormal offset.
        EXPECT_FLOAT_EQ(in.left[300], 3.0f) << label;
        EXPECT_FLOAT_EQ(in.right[300], 1.0f) << label;
    }
}

TEST(AudioPluginFrame, ChannelModesRoundTripThroughAnIdentityEffect)
{
    for (int mode = 0; mode < kChannelModeCount; ++mode) {
        TestCore core;
        core.SetLatency(0);
        prepare(core);
        core.SetChannelMode(static_cast<ZChannelMode>(mode));
        core.SetSurroundChannelMask(0b01);
        StereoBlock in(333), out(333);
        for (int s = 0; s < 333; ++s) {
            in.left[static_cast<size_t>(s)] = std::sin(0.01f * static_cast<float>(s));
            in.right[static_cast<size_t>(s)] = 0.5f * std::cos(0.03f * static_cast<float>(s));
        }
        // In place, as many hosts call.
        StereoBlock block = in;
        block.pointers[0] = block.left.data();
        block.pointers[1] = block.right.data();
        core.ProcessBlock(block.pointers, block.pointers, 333, true);
        const float rightSign = mode == static_cast<int>(ZChannelMode::InvertedRight) ? -1.0f : 1.0f;
        for (int s = 0; s < 333; ++s) {
            ASSERT_NEAR(block.left[static_cast<size_t>(s)], in.left[static_cast<size_t>(s)], 1e-6) << mode;
            ASSERT_NEAR(block.right[static_cast<size_t>(s)], rightSign * in.right[static_cast<size_t>(s)], 1e-6) << mode;
        }
    }
}

TEST(AudioPluginFrame, DryChannelOfAChannelModeIsDelayedByTheEffectLatency)
{
    TestCore core;
    core.effect = [](float* const*, float* const* out, int n) {
        for (int c = 0; c < 2; ++c)
            std::fill(out[c], out[c] + n, 0.0f);
    };
    prepare(core, 256);
    core.SetLatency(5);
    core.SetChannelMode(ZChannelMode::Left);
    std::vector<float> input = ramp(256);
    std::vector<float> right = input;
    std::vector<float> outLeft(256), outRight(256);
    float* in[2] = {input.data(), right.data()};
    float* out[2] = {outLeft.data(), outRight.data()};
    core.ProcessBlock(in, out, 256, true);
    for (int t = 0; t < 5; ++t)
        EXPECT_EQ(outRight[static_cast<size_t>(t)], 0.0f);
    for (int t = 5; t < 256; ++t)
        ASSERT_EQ(outRight[static_cast<size_t>(t)], right[static_cast<size_t>(t - 5)]);
}

TEST(AudioPluginFrame, ASecondConcurrentProcessCallIsTurnedAwayWhileTheFirstCompletes)
{
    TestCore core;
    std::promise<void> entered;
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::atomic<int> inside{0};
    std::atomic<int> mostInside{0};
    std::atomic<bool> first{true};
    core.effect = [&](float* const* in, float* const* out, int n) {
        const int now = ++inside;
        mostInside = std::max(mostInside.load(), now);
        if (first.exchange(false)) {
            entered.set_value();
            released.wait();
        }
        for (int c = 0; c < 2; ++c)
            std::copy(in[c], in[c] + n, out[c]);
        --inside;
    };
    prepare(core);
    StereoBlock blockA(128, 0.5f), outA(128);
    StereoBlock blockB(128, 0.5f), outB(128, 9.0f);
    std::thread audio([&] { core.ProcessBlock(blockA.pointers, outA.pointers, 128, true); });
    entered.get_future().wait();
    try {
        core.ProcessBlock(blockB.pointers, outB.pointers, 128, true);
        ADD_FAILURE() << "the second call was not turned away";
    } catch (const ZException& error) {
        EXPECT_STREQ(error.message(), "Could not acquire mutex.");
    }
    EXPECT_EQ(outB.left[0], 9.0f); // the turned-away call produced nothing
    release.set_value();
    audio.join();
    EXPECT_FLOAT_EQ(outA.left[127], 0.5f);
    EXPECT_EQ(mostInside.load(), 1);

    // Once the first call is done, the next one goes through.
    core.ProcessBlock(blockB.pointers, outB.pointers, 128, true);
    EXPECT_FLOAT_EQ(outB.left[0], 0.5f);
}

TEST(AudioPluginFrame, SetUpWaitsForTheBlockInProgress)
{
    TestCore core;
    std::atomic<bool> inBlock{false};
    std::atomic<bool> setUpRanDuringBlock{false};
    core.effect = [&](float* const*, float* const*, int) {
        inBlock = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        inBlock = false;
    };
    prepare(core);
    StereoBlock in(64), out(64);
    std::thread audio([&] { core.ProcessBlock(in.pointers, out.pointers, 64, true); });
    while (!inBlock)
        std::this_thread::yield();
    core.SetLatency(3); // takes the processing lock
    setUpRanDuringBlock = inBlock.load();
    audio.join();
    EXPECT_FALSE(setUpRanDuringBlock.load());
}

double sineAmplitude(const float* x, int n, double frequency, double rate)
{
    double sine = 0.0, cosine = 0.0;
    for (int i = 0; i < n; ++i) {
        const double phase = 2.0 * std::numbers::pi * frequency * i / rate;
        sine += x[i] * std::sin(phase);
        cosine += x[i] * std::cos(phase);
    }
    return 2.0 * std::hypot(sine, cosine) / n;
}

TEST(AudioPluginFrame, OversamplingAnIdentityEffectPassesA1kHzSine)
{
    for (int factor : {2, 4}) {
        TestCore core;
        std::vector<int> seenLengths;
        prepare(core, 480);
        core.SetOversampling(factor);
        const int latency = core.GetLatency();
        EXPECT_GT(latency, 0);

        const int n = 48000 / 4;
        std::vector<float> input(static_cast<size_t>(n)), output(static_cast<size_t>(n));
        for (int i = 0; i < n; ++i)
            input[static_cast<size_t>(i)] = static_cast<float>(0.5 * std::sin(2.0 * std::numbers::pi * 1000.0 * i / 48000.0));
        std::vector<float> right = input, rightOut(static_cast<size_t>(n));
        for (int at = 0; at < n; at += 480) {
            float* in[2] = {input.data() + at, right.data() + at};
            float* out[2] = {output.data() + at, rightOut.data() + at};
            core.ProcessBlock(in, out, 480, true);
        }
        EXPECT_EQ(core.pieces.front(), 256); // the effect runs on factor x 480 samples in pieces

        // Whole periods (48 samples each) after the filters have settled.
        const int start = latency + 480;
        const int length = 48 * 200;
        const double gain = sineAmplitude(output.data() + start, length, 1000.0, 48000.0) / 0.5;
        EXPECT_LT(std::fabs(20.0 * std::log10(gain)), 0.1) << "factor " << factor;
        // The output is the input delayed by the reported latency.
        for (int i = start; i < start + 200; ++i)
            ASSERT_NEAR(output[static_cast<size_t>(i)], input[static_cast<size_t>(i - latency)], 0.01) << factor;
    }
}

TEST(AudioPluginFrame, OversampledOutputIsClampedOnlyWhenALimitIsSet)
{
    for (double limit : {-1.0, 0.25}) {
        TestCore core;
        core.clampLimit = limit;
        prepare(core, 256);
        core.SetOversampling(2);
        StereoBlock in(256, 0.9f), out(256);
        for (int i = 0; i < 8; ++i)
            core.ProcessBlock(in.pointers, out.pointers, 256, true);
        if (limit < 0.0)
            EXPECT_NEAR(out.left[200], 0.9f, 0.01f);
        else
            EXPECT_FLOAT_EQ(out.left[200], 0.25f);
    }
}

TEST(AudioPluginFrame, MeteringMeasuresThePeaksOfTheBlock)
{
    TestCore core;
    core.effect = [](float* const* in, float* const* out, int n) {
        for (int c = 0; c < 2; ++c)
            for (int s = 0; s < n; ++s)
                out[c][s] = 0.5f * in[c][s];
    };
    core.SetMetering(true);
    prepare(core);
    StereoBlock in(100, 0.1f), out(100);
    in.right[42] = -0.8f;
    core.ProcessBlock(in.pointers, out.pointers, 100, true);
    EXPECT_NEAR(core.inputLevel(), 0.8, 1e-6);
    EXPECT_NEAR(core.outputLevel(), 0.4, 1e-6);
}

TEST(AudioPluginFrame, LatencyChangesAreReportedToTheHost)
{
    struct Host : ZAudioPluginAdapter {
        std::vector<int> latencies;
        void ReportLatency(int32_t samples) override { latencies.push_back(samples); }
        void SendAutomation(int32_t, double) override {}
        void QueueMIDIEvent(const ZMIDIEvent&) override {}
    } host;
    {
        // Oversampling chosen before processing is prepared counts once it is.
        TestCore early;
        early.SetOversampling(2);
        prepare(early);
        EXPECT_GT(early.GetLatency(), 0);
    }
    TestCore core;
    core.SetHostAdapter(&host);
    prepare(core);
    core.SetLatency(10);
    core.SetLatency(10);
    core.SetOversampling(2);
    ASSERT_EQ(host.latencies.size(), 2u);
    EXPECT_EQ(host.latencies[0], 10);
    EXPECT_GT(host.latencies[1], 10);
    EXPECT_EQ(core.GetLatency(), host.latencies[1]);
}

TEST(AudioPluginFrame, UnpreparedCoreGivesSilenceAndBadConfigurationsAreRefused)
{
    TestCore core;
    StereoBlock in(64, 0.5f), out(64, 3.0f);
    core.ProcessBlock(in.pointers, out.pointers, 64, true);
    EXPECT_EQ(out.left[0], 0.0f);
    EXPECT_TRUE(core.pieces.empty());

    EXPECT_THROW(core.SetChannelConfiguration(-1, 2), ZException);
    EXPECT_THROW(core.SetChannelConfiguration(2, ZAudioPlugin::kMaxChannels + 1), ZException);
    EXPECT_THROW(core.SetChannelConfiguration(2, 2, 0), ZException);
    EXPECT_EQ(core.GetInputBusCount(), 1);

    core.SetChannelConfiguration(6, 4, 2);
    EXPECT_EQ(core.GetInputBusCount(), 3);
    EXPECT_EQ(core.GetOutputBusCount(), 2);
}

TEST(AudioPluginFrame, NullInputChannelsReadAsSilence)
{
    TestCore core;
    prepare(core);
    StereoBlock out(64, 5.0f);
    float* inputs[2] = {nullptr, nullptr};
    core.ProcessBlock(inputs, out.pointers, 64, true);
    EXPECT_EQ(out.left[10], 0.0f);
    core.ProcessBlock(nullptr, out.pointers, 64, true);
    EXPECT_EQ(out.right[10], 0.0f);
}

} // namespace
} // namespace halvern
