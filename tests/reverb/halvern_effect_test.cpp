#include "analysis/impulse_analysis.h"
#include "modulation/audio_effect_plugin_to_audio_plugin_adapter.h"
#include "reverb/halvern_audio_effect_plugin.h"
#include "reverb/reverb_mix.h"
#include "tools/render_session.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

namespace halvern {
namespace {

using AudioData = ZAudioData;
using tools::RenderSession;

TEST(ReverbParameters, RecordsTextsAndEntryRules)
{
    RenderSession session(44100.0, 512);
    ZAudioPlugin& core = session.core();
    EXPECT_EQ(core.GetParameterID(0), "Globals");
    EXPECT_EQ(core.GetParameterType(0), ZParameterType::Panel);
    EXPECT_EQ(core.GetParameterValueName(0), "");
    EXPECT_EQ(core.GetParameterID(2), "Reverbation");
    EXPECT_EQ(core.GetParameterName(2), "Early/late");
    EXPECT_EQ(core.GetParameterID(19), "Gate");
    EXPECT_EQ(core.GetParameterType(19), ZParameterType::Switch);
    // Storage names at their host indices: saved projects depend on them.
    EXPECT_EQ(core.GetParameterID(25), "LowCut");
    EXPECT_EQ(core.GetParameterID(28), "saturationmode");
    EXPECT_EQ(core.GetParameterName(31), "MultiParameter 1");

    // Defaults as shown.
    EXPECT_EQ(core.GetParameterValueName(1), "50.0 %");
    EXPECT_EQ(core.GetParameterValueName(3), "100.0 %"); // widening 0 is the unchanged width
    EXPECT_EQ(core.GetParameterValueName(4), "Automatic");
    EXPECT_EQ(core.GetParameterValueName(6), "13.2 m");
    EXPECT_EQ(core.GetParameterValueName(9), "500.0 ms");
    EXPECT_EQ(core.GetParameterValueName(11), "Mode 1");
    EXPECT_EQ(core.GetParameterValueName(13), "+3.00 dB");
    EXPECT_EQ(core.GetParameterValueName(14), "1000 Hz");
    EXPECT_EQ(core.GetParameterValueName(16), "10.0 kHz");
    EXPECT_EQ(core.GetParameterValueName(18), "0.2500 Hz");
    EXPECT_EQ(core.GetParameterValueName(20), "-50.00 dB");

    // A predelay just below the maximum is manual.
    EXPECT_EQ(core.GetParameterValueNameFrom01(4, 0.2499 / 0.25), "249.9 ms");
    // Typed metres are divided by 330 and shown again as metres.
    session.setByKey("Size", "10");
    EXPECT_NEAR(dynamic_cast<HalvernAudioEffectPlugin&>(session.core().effect()).settings().size, 10.0 / 330.0, 1e-12);
    EXPECT_EQ(core.GetParameterValueName(6), "10.0 m");
    session.setByKey("LowFreq", "250");
    EXPECT_NEAR(dynamic_cast<HalvernAudioEffectPlugin&>(session.core().effect()).settings().lowFreq, std::log10(250.0), 1e-12);
    EXPECT_THROW(session.setByKey("LowFreq", "0"), std::runtime_error); // not a frequency
    session.setByKey("Widening", "0");
    EXPECT_EQ(core.GetParameterValueName(3), "0.0 %");
}

TEST(ReverbEffect, TailLengthUsesWholeSecondsOfReverbTime)
{
    for (auto [text, expected] : {std::pair{"29900", 29 * 44100 + 4096}, std::pair{"500", 4096}}) {
        RenderSession session(44100.0, 512);
        session.setByKey("ReverbTime", text);
        session.start();
        EXPECT_EQ(session.core().effect().GetTailLength(), expected);
    }
}

TEST(ReverbMix, GainsAtTheEndsAndTheMiddle)
{
    const ZReverbMix dry = ComputeReverbMix(0.0, 0.3, 0.0, 0.0);
    EXPECT_DOUBLE_EQ(dry.dry, 1.0);
    EXPECT_DOUBLE_EQ(dry.early + dry.late, 0.0);
    const ZReverbMix wet = ComputeReverbMix(1.0, 0.3, 0.0, 0.0);
    EXPECT_DOUBLE_EQ(wet.dry, 0.0);
    EXPECT_DOUBLE_EQ(wet.early + wet.late, 1.0);
    const ZReverbMix middle = ComputeReverbMix(0.5, 0.3, 0.0, 0.0);
    EXPECT_DOUBLE_EQ(middle.dry, 0.75);
    EXPECT_DOUBLE_EQ(middle.early, 0.525);
    EXPECT_DOUBLE_EQ(middle.late, 0.225);
    const ZReverbMix mono = ComputeReverbMix(0.5, 0.3, -1.0, 0.0);
    EXPECT_DOUBLE_EQ(mono.direct, 0.5);
    EXPECT_DOUBLE_EQ(mono.cross, 0.5);
    const ZReverbMix wide = ComputeReverbMix(0.5, 0.3, 2.0, 0.0);
    EXPECT_DOUBLE_EQ(wide.direct, 2.0);
    EXPECT_DOUBLE_EQ(wide.cross, -1.0);
}

AudioData impulseResponse(double rate, const std::vector<std::pair<std::string, std::string>>& settings)
{
    RenderSession session(rate, 512);
    for (const auto& [key, text] : settings)
        session.setByKey(key, text);
    session.start();
    return session.renderImpulse();
}

int firstSoundingSample(const std::vector<float>& x)
{
    for (size_t i = 0; i < x.size(); ++i)
        if (std::fabs(x[i]) > 1e-6f)
            return static_cast<int>(i);
    return -1;
}

TEST(ReverbEffect, DryOnlyPassesTheInputAndEarlyReflectionsStartAtThePredelay)
{
    const AudioData dry = impulseResponse(48000.0, {{"ReverbDepth", "0"}});
    EXPECT_FLOAT_EQ(dry.channels[0][0], 1.0f);
    EXPECT_EQ(firstSoundingSample({dry.channels[0].begin() + 1, dry.channels[0].end()}), -1);

    // Early reflections alone: each ear starts at its predelay line's length, worked out
    // for the default positions at 48 kHz (2626 and 1666 samples).
    const AudioData early = impulseResponse(48000.0, {{"ReverbDepth", "100"}, {"Reverbation", "0"}});
    EXPECT_EQ(firstSoundingSample(early.channels[0]), 2626);
    EXPECT_EQ(firstSoundingSample(early.channels[1]), 1666);
}

double broadbandDecay(const AudioData& response)
{
    return AnalyseImpulseResponse(response).broadband.decay.seconds;
}

TEST(ReverbEffect, MeasuredDecayGrowsWithReverbTimeInEveryMode)
{
    for (const char* mode : {"Mode 1", "Mode 2", "Mode 3", "Mode 4"}) {
        double previous = 0.0;
        for (const char* time : {"500", "2000", "10000"}) {
            const double measured = broadbandDecay(impulseResponse(
                24000.0, {{"ReverbDepth", "100"}, {"Reverbation", "100"}, {"ReverbMode", mode}, {"ReverbTime", time}}));
            EXPECT_GT(measured, previous) << mode << " at " << time << " ms";
            previous = measured;
        }
    }
}

// The last sample of a response within 120 dB of its peak, over both channels.
size_t lastSampleWithin120Db(const AudioData& response)
{
    float peak = 0.0f;
    for (const auto& channel : response.channels)
        for (float x : channel)
            peak = std::max(peak, std::fabs(x));
    size_t last = 0;
    for (const auto& channel : response.channels)
        for (size_t i = 0; i < channel.size(); ++i)
            if (std::fabs(channel[i]) >= peak * 1e-6f)
                last = std::max(last, i);
    return last;
}

TEST(ReverbEffect, HostsAreToldATailThatCoversTheResponseDownTo120Db)
{
    // Through the plug-in library, as a host asks for the tail; 24 kHz keeps it quick.
    const double rate = 24000.0;
    for (const char* mode : {"Mode 1", "Mode 2", "Mode 3", "Mode 4"})
        for (const char* time : {"500", "2000", "6000"})
            for (bool dampened : {false, true}) {
                RenderSession session(rate, 512, HALVERN_PLUGIN_PATH);
                session.setByKey("ReverbMode", mode);
                session.setByKey("ReverbTime", time);
                if (!dampened) {
                    session.setByKey("LowDamp", "0");
                    session.setByKey("HighDamp", "0");
                }
                session.start();
                AudioData impulse;
                impulse.sampleRate = rate;
                impulse.channels.assign(2, std::vector<float>{1.0f});
                const double seconds = std::atof(time) / 1000.0;
                const AudioData response = session.render(impulse, 6.0 * seconds + 4.0);
                const double measured = static_cast<double>(lastSampleWithin120Db(response));
                const double reported = session.tailLength();
                EXPECT_GE(reported, measured) << mode << ", " << time << " ms, dampened " << dampened;
                EXPECT_LE(reported, 3.0 * measured) << mode << ", " << time << " ms, dampened " << dampened;
            }
}

TEST(ReverbEffect, DefaultDampeningShortensTheLowestAndHighestBands)
{
    const auto report = AnalyseImpulseResponse(
        impulseResponse(48000.0, {{"ReverbDepth", "100"}, {"Reverbation", "100"}, {"ReverbTime", "3000"}, {"Modulation", "0"}}));
    auto band = [&](double centre) {
        for (const auto& b : report.bands)
            if (b.centreHz == centre)
                return b.decay.seconds;
        return 0.0;
    };
    EXPECT_LT(band(125.0), band(1000.0));
    EXPECT_LT(band(8000.0), band(1000.0));
}

// The late network's own test sweeps every mode, diffusion and modulation for stability;
// here each mode runs once through the whole effect, fully diffused and modulated.
TEST(ReverbEffect, StaysBoundedForLongNoiseAtTheLongestTimeAndDecaysAfterwards)
{
    const double rate = 16000.0;
    std::mt19937 generator(3);
    std::uniform_real_distribution<float> uniform(-1.0f, 1.0f);
    for (const char* mode : {"Mode 1", "Mode 2", "Mode 3", "Mode 4"}) {
        RenderSession session(rate, 512);
        for (auto [key, text] : {std::pair{"ReverbMode", mode}, {"ReverbDiffusion", "100"}, {"Modulation", "100"},
                                 {"ReverbTime", "30000"}, {"LowDamp", "0"}, {"HighDamp", "0"},
                                 {"ReverbDepth", "100"}, {"Reverbation", "100"}})
            session.setByKey(key, text);
        session.start();
        AudioData noise;
        noise.sampleRate = rate;
        noise.channels.assign(2, std::vector<float>(static_cast<size_t>(60 * rate)));
        for (auto& channel : noise.channels)
            for (float& sample : channel)
                sample = uniform(generator);
        // 60 s of noise and then the first 4 s of the tail.
        AudioData out = session.render(noise);
        const size_t end = static_cast<size_t>(64 * rate);
        float peak = 0.0f;
        double lastSecondOfNoise = 0.0, lastSecondOfTail = 0.0;
        for (size_t i = 0; i < end; ++i) {
            const float x = out.channels[0][i];
            ASSERT_TRUE(std::isfinite(x)) << mode;
            peak = std::max(peak, std::fabs(x));
            if (i >= static_cast<size_t>(59 * rate) && i < static_cast<size_t>(60 * rate))
                lastSecondOfNoise += x * x;
            if (i >= static_cast<size_t>(63 * rate))
                lastSecondOfTail += x * x;
        }
        EXPECT_LT(peak, 100.0f) << mode;
        EXPECT_LT(lastSecondOfTail, lastSecondOfNoise) << mode;
    }
}

TEST(ReverbEffect, AnyInputLeavesTheOutputFiniteAndTheReverbRecovers)
{
    // The widest image, all wet and late, and a low cut whose filter state an overflowing
    // sample would turn into NaN for good.
    RenderSession session(48000.0, 256);
    for (auto [key, text] : {std::pair{"Widening", "300"}, {"ReverbDepth", "100"}, {"Reverbation", "0"}, {"LowCut", "200"}})
        session.setByKey(key, text);
    session.start();
    AudioData input;
    input.sampleRate = 48000.0;
    input.channels.assign(2, std::vector<float>(48256, 0.0f));
    // One block of opposite full-range extremes, NaN and infinities, then a second of a
    // quiet 1 kHz tone.
    std::mt19937 generator(7);
    for (auto& channel : input.channels)
        for (size_t i = 0; i < 256; ++i)
            channel[i] = generator() % 2 == 0 ? 3e38f : -3e38f;
    input.channels[0][10] = std::nanf("");
    input.channels[1][20] = INFINITY;
    input.channels[1][21] = -INFINITY;
    for (size_t i = 256; i < input.channels[0].size(); ++i)
        input.channels[0][i] = input.channels[1][i] = 0.1f * static_cast<float>(std::sin(2.0 * M_PI * 1000.0 * i / 48000.0));
    const AudioData out = session.render(input);
    for (const auto& channel : out.channels) {
        for (float x : channel)
            ASSERT_TRUE(std::isfinite(x));
        // Still a working reverb at the end of the second: the channel is not stuck.
        float lastPeak = 0.0f;
        for (size_t i = 47000; i < 48000; ++i)
            lastPeak = std::max(lastPeak, std::fabs(channel[i]));
        EXPECT_GT(lastPeak, 0.0f);
    }
}

} // namespace
} // namespace halvern
