// Cost of the reverb's saturation and gate per 512-sample stereo block at 48 kHz,
// reported as audio seconds processed per CPU second.

#include "reverb/reverb_gate.h"
#include "reverb/saturation_shaper.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

constexpr int kBlock = 512;
constexpr double kRate = 48000.0;

struct StereoBlock {
    StereoBlock() : left(kBlock), right(kBlock)
    {
        for (int n = 0; n < kBlock; ++n) {
            left[static_cast<size_t>(n)] = static_cast<float>(0.8 * std::sin(0.05 * n));
            right[static_cast<size_t>(n)] = static_cast<float>(0.8 * std::cos(0.03 * n));
        }
    }
    std::vector<float> left;
    std::vector<float> right;
};

void reportRealtime(benchmark::State& state)
{
    state.counters["realtime"] = benchmark::Counter(static_cast<double>(state.iterations()) * kBlock / kRate,
                                                    benchmark::Counter::kIsRate);
}

// The same block each time, so the level stays in the curve's shaped range.
void BM_Saturation(benchmark::State& state)
{
    const int mode = static_cast<int>(state.range(0));
    halvern::ZSaturationShaper shaper;
    shaper.setMode(mode);
    state.SetLabel(halvern::ZEnumNames<halvern::ZSaturationMode>::names()[static_cast<size_t>(mode)]);
    const StereoBlock input;
    StereoBlock block;
    for (auto _ : state) {
        block = input;
        shaper.process(block.left.data(), block.right.data(), kBlock, 0.5);
        benchmark::DoNotOptimize(block.left.data());
        benchmark::DoNotOptimize(block.right.data());
    }
    reportRealtime(state);
}

void BM_ReverbGate(benchmark::State& state)
{
    halvern::ZReverbGate gate;
    gate.configure(kRate, -20.0, 12.0, 0.001, 0.1);
    const StereoBlock input;
    StereoBlock block;
    for (auto _ : state) {
        block = input;
        gate.process(block.left.data(), block.right.data(), kBlock);
        benchmark::DoNotOptimize(block.left.data());
        benchmark::DoNotOptimize(block.right.data());
    }
    reportRealtime(state);
}

BENCHMARK(BM_Saturation)->DenseRange(0, 6);
BENCHMARK(BM_ReverbGate);

} // namespace
