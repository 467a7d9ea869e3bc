// Cost of the oversampler per 512-sample base block; the argument is the factor.
// Items processed count base-rate samples, so items/s is the base rate one channel sustains.

#include "core/oversampler.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

constexpr int kBlock = 512;

struct Buffers {
    explicit Buffers(int factor)
        : base(kBlock), high(static_cast<size_t>(kBlock * factor)), back(kBlock)
    {
        for (int n = 0; n < kBlock; ++n)
            base[static_cast<size_t>(n)] = static_cast<float>(0.5 * std::sin(0.1 * n));
    }
    std::vector<float> base;
    std::vector<float> high;
    std::vector<float> back;
};

halvern::ZOversampler prepared(int factor)
{
    halvern::ZOversampler oversampler;
    oversampler.prepare(factor, kBlock);
    return oversampler;
}

void BM_OversamplerUpsample(benchmark::State& state)
{
    const int factor = static_cast<int>(state.range(0));
    halvern::ZOversampler oversampler = prepared(factor);
    Buffers buffers(factor);
    for (auto _ : state) {
        oversampler.upsample(buffers.base.data(), buffers.high.data(), kBlock);
        benchmark::DoNotOptimize(buffers.high.data());
    }
    state.SetItemsProcessed(state.iterations() * kBlock);
}

void BM_OversamplerDownsample(benchmark::State& state)
{
    const int factor = static_cast<int>(state.range(0));
    halvern::ZOversampler oversampler = prepared(factor);
    Buffers buffers(factor);
    oversampler.upsample(buffers.base.data(), buffers.high.data(), kBlock);
    for (auto _ : state) {
        oversampler.downsample(buffers.high.data(), buffers.back.data(), kBlock);
        benchmark::DoNotOptimize(buffers.back.data());
    }
    state.SetItemsProcessed(state.iterations() * kBlock);
}

void BM_OversamplerRoundTrip(benchmark::State& state)
{
    const int factor = static_cast<int>(state.range(0));
    halvern::ZOversampler oversampler = prepared(factor);
    Buffers buffers(factor);
    for (auto _ : state) {
        oversampler.upsample(buffers.base.data(), buffers.high.data(), kBlock);
        oversampler.downsample(buffers.high.data(), buffers.back.data(), kBlock);
        benchmark::DoNotOptimize(buffers.back.data());
    }
    state.SetItemsProcessed(state.iterations() * kBlock);
}

} // namespace

BENCHMARK(BM_OversamplerUpsample)->Arg(2)->Arg(4);
BENCHMARK(BM_OversamplerDownsample)->Arg(2)->Arg(4);
BENCHMARK(BM_OversamplerRoundTrip)->Arg(2)->Arg(4);

