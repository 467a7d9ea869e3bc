// The late network alone, 512 samples at 48 kHz, without and with full modulation.
// "realtime" is audio seconds processed per CPU second.

#include "reverb/late_reverb_network.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

using namespace halvern;

constexpr int kBlock = 512;
constexpr double kRate = 48000.0;

void lateNetwork(benchmark::State& state, double modulation)
{
    ZLateReverbNetwork::Settings settings;
    settings.modulation = modulation;
    settings.stereoOffset = 746.0;
    ZPrimeTable primes;
    ZLateReverbNetwork network;
    network.prepare(kRate);
    network.update(settings, primes);
    network.reset();

    std::mt19937 generator(5);
    std::uniform_real_distribution<double> noise(-0.5, 0.5);
    std::vector<double> left(kBlock), right(kBlock);
    for (int i = 0; i < kBlock; ++i)
        left[size_t(i)] = noise(generator), right[size_t(i)] = noise(generator);

    for (auto _ : state) {
        double sum = 0.0;
        for (size_t i = 0; i < kBlock; ++i) {
            double lateLeft = 0.0, lateRight = 0.0;
            network.process(left[i], right[i], lateLeft, lateRight);
            sum += lateLeft + lateRight;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.counters["realtime"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kBlock / kRate, benchmark::Counter::kIsRate);
}

} // namespace

BENCHMARK_CAPTURE(lateNetwork, Unmodulated, 0.0);
BENCHMARK_CAPTURE(lateNetwork, Modulated, 1.0);
