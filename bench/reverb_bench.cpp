// The reverb through the whole plug-in core (the chain the library builds, slots and AGC
// included), 48 kHz stereo, 512-sample blocks: the default patch, full modulation, the
// gate and saturation on, the AGC on, and a block of silence
// after loud input next to a block of noise (the silence must not cost more: no
// denormal slowdown). "realtime" is audio seconds processed per CPU second.

#include "bench/reverb_instance.h"

#include <string>
#include <utility>
#include <vector>

namespace {

using namespace halvern;

using bench::kBlock;
using bench::kRate;
using bench::ReportRealtime;
using Reverb = bench::ZBenchReverb;

void runPatch(benchmark::State& state, const std::vector<std::pair<std::string, std::string>>& settings)
{
    Reverb reverb(settings);
    for (auto _ : state)
        reverb.block();
    ReportRealtime(state);
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
    ReportRealtime(state);
}

BENCHMARK(BM_ReverbDefault);
BENCHMARK(BM_ReverbModulationFull);
BENCHMARK(BM_ReverbGateAndSaturation);
BENCHMARK(BM_ReverbAGC);
BENCHMARK(BM_ReverbNoise);
BENCHMARK(BM_ReverbSilenceAfterLoudInput);

} // namespace
