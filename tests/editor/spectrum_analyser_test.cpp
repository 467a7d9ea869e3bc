#include "core/sample_ring.h"
#include "editor/spectrum_analyser.h"
#include "reverb/equalizer_processor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace halvern {
namespace {

constexpr double kRate = 48000.0;

std::vector<float> sine(double hertz, double amplitude, size_t count)
{
    std::vector<float> samples(count);
    for (size_t i = 0; i < count; ++i)
        samples[i] = static_cast<float>(amplitude * std::sin(2.0 * std::numbers::pi * hertz * static_cast<double>(i) / kRate));
    return samples;
}

TEST(SpectrumAnalyser, AFullScaleSineReadsZeroDecibelsAtItsFrequency)
{
    ZSpectrumAnalyser analyser;
    const double binWidth = kRate / static_cast<double>(analyser.size());
    for (double hertz : {60.0, 1000.0, 5003.7, 15500.0}) {
        const std::vector<float> signal = sine(hertz, 1.0, 3 * analyser.size());
        analyser.clear();
        analyser.push(signal.data(), signal.size());
        analyser.analyse(kRate);
        const ZSpectrumAnalyser::Peak peak = analyser.peak();
        EXPECT_NEAR(peak.frequency, hertz, binWidth) << hertz;
        EXPECT_NEAR(peak.levelDb, 0.0, 0.5) << hertz;
        EXPECT_LT(analyser.levelDb(hertz * 2.5, hertz * 3.0), -60.0) << "leakage far from " << hertz;
    }
    // A quieter frame shows the louder one falling slowly, never at once.
    const std::vector<float> quiet = sine(1000.0, 0.01, analyser.size());
    analyser.push(quiet.data(), quiet.size());
    analyser.analyse(kRate);
    EXPECT_NEAR(analyser.peak().levelDb, -40.0, 0.5);
    EXPECT_GT(analyser.levelDb(14000.0, 17000.0), -1.0 - ZSpectrumAnalyser::kFallDbPerFrame);
}

TEST(SampleRing, KeepsTheNewestSamplesInOrderWhenTheReaderFallsBehind)
{
    ZSampleRing ring;
    ring.resize(100); // rounded up to 128
    ASSERT_EQ(ring.capacity(), 128u);
    int next = 0;
    const auto write = [&](int n) { ring.write(n, [&](int) { return static_cast<float>(next++); }); };
    std::vector<float> out(256);

    write(50);
    ASSERT_EQ(ring.read(out.data(), 20), 20u); // the newest 20, the 30 before them dropped
    EXPECT_EQ(out[0], 30.0f);
    EXPECT_EQ(out[19], 49.0f);
    EXPECT_EQ(ring.read(out.data(), 20), 0u);

    write(300); // runs over the reader: only the last lap survives
    ASSERT_EQ(ring.read(out.data(), out.size()), 128u);
    EXPECT_EQ(out[0], 350.0f - 128.0f);
    EXPECT_EQ(out[127], 349.0f);
}

// The curve the editor draws is the gain the filters really apply.
TEST(EqualizerResponse, EqualsTheMeasuredGainOfTheFilters)
{
    ZEqualizerProcessorPlugin equalizer;
    ASSERT_TRUE(equalizer.lowCutValue().setFromDisplayText("80"));
    ASSERT_TRUE(equalizer.highCutValue().setFromDisplayText("12000"));
    auto& bands = equalizer.bands();
    bands[ZEqualizerProcessorPlugin::kLowShelf] = {200.0, 6.0, 0.7, true};
    bands[ZEqualizerProcessorPlugin::kPeak] = {2000.0, -9.0, 2.0, true};
    bands[ZEqualizerProcessorPlugin::kHighShelf] = {6000.0, 4.0, 0.7, false};
    equalizer.prepare(kRate);
    const ZEqualizerResponse response = equalizer.response();

    for (double hertz : {50.0, 180.0, 1000.0, 2000.0, 9000.0, 16000.0}) {
        equalizer.reset();
        std::vector<float> left = sine(hertz, 0.5, 48000), right = left;
        equalizer.process(left.data(), right.data(), static_cast<int>(left.size()));
        double in = 0.0, out = 0.0;
        const std::vector<float> reference = sine(hertz, 0.5, 48000);
        for (size_t i = 24000; i < left.size(); ++i) { // after the filters settled
            in += reference[i] * reference[i];
            out += left[i] * left[i];
        }
        EXPECT_NEAR(response.gainDb(hertz), 10.0 * std::log10(out / in), 0.1) << hertz;
    }
}

} // namespace
} // namespace halvern
