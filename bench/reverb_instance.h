#pragma once

// A reverb through the whole plug-in core (the chain the library builds, slots and AGC
// included), prepared for 48 kHz stereo in 512-sample blocks of uniform noise, with
// settings by key as a user types them.

#include "reverb/halvern_audio_effect_plugin.h"
#include "state/quessane_audio_effect_plugin.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace halvern::bench {

constexpr int kBlock = 512;
constexpr double kRate = 48000.0;

struct ZBenchReverb {
    ZQuessaneAudioEffectPlugin core{std::make_unique<HalvernAudioEffectPlugin>()};
    std::vector<float> left = std::vector<float>(kBlock), right = std::vector<float>(kBlock);
    std::vector<float> outLeft = std::vector<float>(kBlock), outRight = std::vector<float>(kBlock);

    explicit ZBenchReverb(const std::vector<std::pair<std::string, std::string>>& settings = {})
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

// Audio seconds processed per CPU second, one block per iteration.
inline void ReportRealtime(benchmark::State& state)
{
    state.counters["realtime"] = benchmark::Counter(static_cast<double>(state.iterations()) * kBlock / kRate,
                                                    benchmark::Counter::kIsRate);
}

} // namespace halvern::bench
