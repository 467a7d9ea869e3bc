// What the analyser's tap costs the audio thread: the default reverb through the core,
// 48 kHz stereo, 512-sample blocks, with the reverberation kept for an analyser and
// without. "realtime" is audio seconds processed per CPU second.

#include "reverb/halvern_audio_effect_plugin.h"
#include "state/quessane_audio_effect_plugin.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

using namespace halvern;

constexpr int kBlock = 512;
constexpr double kRate = 48000.0;

void runWithAnalysis(benchmark::State& state, bool analysing)
{
    ZQuessaneAudioEffectPlugin core(std::make_unique<HalvernAudioEffectPlugin>());
    core.SetSampleRate(kRate);
    core.SetMaxBlockSize(kBlock);
    core.InitProcessing();
    dynamic_cast<HalvernAudioEffectPlugin&>(core.effect()).SetWetAnalysis(analysing);
    std::vector<float> left(kBlock), right(kBlock), outLeft(kBlock), outRight(kBlock);
    std::mt19937 generator(7);
    std::uniform_real_distribution<float> uniform(-0.5f, 0.5f);
    for (int i = 0; i < kBlock; ++i) {
        left[static_cast<size_t>(i)] = uniform(generator);
        right[static_cast<size_t>(i)] = uniform(generator);
    }
    float* in[2] = {left.data(), right.data()};
    float* out[2] = {outLeft.data(), outRight.data()};
    for (auto _ : state) {
        core.ProcessBlock(in, out, kBlock, true);
        benchmark::DoNotOptimize(outLeft.data());
    }
    state.counters["realtime"] = benchmark::Counter(static_cast<double>(state.iterations()) * kBlock / kRate,
                                                    benchmark::Counter::kIsRate);
}

void BM_ReverbWetAnalysisOff(benchmark::State& state) { runWithAnalysis(state, false); }
void BM_ReverbWetAnalysisOn(benchmark::State& state) { runWithAnalysis(state, true); }

BENCHMARK(BM_ReverbWetAnalysisOff);
BENCHMARK(BM_ReverbWetAnalysisOn);

} // namespace
