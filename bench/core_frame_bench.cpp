// Cost of the plug-in core's processing frame around an effect that does nothing but
// copy, at 48 kHz stereo in 512-sample blocks. "realtime" is audio seconds processed
// per CPU second.

#include "core/audio_plugin.h"
#include "core/vector_kernels.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

using namespace halvern;

constexpr int kBlock = 512;
constexpr double kRate = 48000.0;

class WireCore : public ZAudioPlugin {
public:
    void ProcessSubBlock(float* const* in, float* const* out, int32_t n) override
    {
        for (int c = 0; c < 2; ++c)
            kernels::Copy(in[c], out[c], n);
    }
};

void runFrame(benchmark::State& state, ZChannelMode mode, int oversampling, bool bypass, int latency)
{
    WireCore core;
    core.SetSampleRate(kRate);
    core.SetMaxBlockSize(kBlock);
    core.SetOversampling(oversampling);
    core.SetChannelMode(mode);
    core.SetLatency(latency);
    core.SetBypass(bypass);
    core.InitProcessing();
    std::vector<float> left(kBlock), right(kBlock), outLeft(kBlock), outRight(kBlock);
    for (int i = 0; i < kBlock; ++i) {
        left[static_cast<size_t>(i)] = static_cast<float>(std::sin(0.05 * i));
        right[static_cast<size_t>(i)] = static_cast<float>(std::cos(0.03 * i));
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

void BM_FrameStereo(benchmark::State& state) { runFrame(state, ZChannelMode::Stereo, 1, false, 0); }
void BM_FrameMidSide(benchmark::State& state) { runFrame(state, ZChannelMode::MidSide, 1, false, 0); }
void BM_FrameLeftOnlyWithLatency(benchmark::State& state) { runFrame(state, ZChannelMode::Left, 1, false, 256); }
void BM_FrameBypassWithLatency(benchmark::State& state) { runFrame(state, ZChannelMode::Stereo, 1, true, 256); }
void BM_FrameOversampled2(benchmark::State& state) { runFrame(state, ZChannelMode::Stereo, 2, false, 0); }
void BM_FrameOversampled4(benchmark::State& state) { runFrame(state, ZChannelMode::Stereo, 4, false, 0); }

BENCHMARK(BM_FrameStereo);
BENCHMARK(BM_FrameMidSide);
BENCHMARK(BM_FrameLeftOnlyWithLatency);
BENCHMARK(BM_FrameBypassWithLatency);
BENCHMARK(BM_FrameOversampled2);
BENCHMARK(BM_FrameOversampled4);

} // namespace

