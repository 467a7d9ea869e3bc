// The reverb through the whole plug-in core (the chain the library builds, slots and AGC
// included), 48 kHz stereo, 512-sample blocks: the default patch, full modulation, the
// gate and saturation on, the AGC on, and a block of silence
// after loud input next to a block of noise (the silence must not cost more: no
// denormal slowdown). "realtime" is audio seconds processed per CPU second.

#include "reverb/halvern_audio_effect_plugin.h"
#include "state/quessane_audio_effect_plugin.h"

#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace halvern;

constexpr int kBlock = 512;
constexpr double kRate = 48000.0;

struct Reverb {
    ZQuessaneAudioEffectPlugin core{std::make_unique<HalvernAudioEffectPlugin>()};
    std::vector<float> left = std::vector<float>(kBlock), right = std::vector<float>(kBlock);
    std::vector<float> outLeft = std::vector<float>(kBlock), outRight = std::vector<float>(kBlock);

    explicit Reverb(const std::vector<std::pair<std::string, std::string>>& settings)
    {
        core.SetSampleRate(kRate);
        core.SetMaxBlockSize(kBlock);
        for (const auto& [key, text] : settings)
            for (int index = 0; index < core.GetParameterCount(); ++index)
                if (core.GetParameterID(index) == key)
                    core.SetParameterFromDisplayText(index, text);
        core.InitProcessing();
        fillNoise();
    }
    void fillNoise()
    {
        std::mt19937 generator(7);
        std::uniform_real_distribution<float> uniform(-0.5f, 0.5f);
        for (int i = 0; i < kBlock; ++i) {
            left[static_cast<size_t>(i)] = uniform(generator);
            right[static_cast<size_t>(i)] = uniform(generator);
        }
    }
    void block()
    {
        float* in[2] = {left.data(), right.data()};
        float* out[2] = {outLeft.data(), outRight.data()};
        core.ProcessBlock(in, out, kBlock, true);
        benchmark::DoNotOptimize(outLeft.data());
    }
};

void reportRealtime(benchmark::State& state)
{
    state.counters["realtime"] = benchmark::Counter(static_cast<double>(state.iterations()) * kBlock / kRate,
                                                    benchmark::Counter::kIsRate);
}

void runPatch(benchmark::State& state, const std::vector<std::pair<std::string, std::string>>& settings)
{
    Reverb reverb(settings);
    for (auto _ : state)
        reverb.block();
    reportRealtime(state);
}

void BM_ReverbDefault(benchmark::State& state) { runPatch(state, {}); }
void BM_ReverbModulationFull(benchmark::State& state) { runPatch(state, {{"Modulation", "100"}}); }
void BM_ReverbGateAndSaturation(benchmark::State& state)
{
    runPatch(state, {{"Gate", "1"}, {"saturation", "50"}, {"saturationmode", "Soft 2"}});
}
void BM_ReverbAGC(benchmark::State& state) { runPatch(state, {{"AGC", "1"}}); }
void BM_ReverbNoise(benchmark::State& state) { runPatch(state, {{"ReverbTime", "3000"}}); }

// Ten seconds of loud noise, then silence: the tail decays through the range where
// denormal numbers would slow an unprotected network down.
void BM_ReverbSilenceAfterLoudInput(benchmark::State& state)
{
    Reverb reverb(std::vector<std::pair<std::string, std::string>>{{"ReverbTime", "3000"}});
    for (int i = 0; i < static_cast<int>(10 * kRate / kBlock); ++i)
        reverb.block();
    std::fill(reverb.left.begin(), reverb.left.end(), 0.0f);
    std::fill(reverb.right.begin(), reverb.right.end(), 0.0f);
    for (auto _ : state)
        reverb.block();
    reportRealtime(state);
}

BENCHMARK(BM_ReverbDefault);
BENCHMARK(BM_ReverbModulationFull);
BENCHMARK(BM_ReverbGateAndSaturation);
BENCHMARK(BM_ReverbAGC);
BENCHMARK(BM_ReverbNoise);
BENCHMARK(BM_ReverbSilenceAfterLoudInput);

} // namespace
