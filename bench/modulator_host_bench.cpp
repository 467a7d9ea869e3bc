// Cost of the modulator host per 512-sample block at 48 kHz stereo with all four LFOs
// (one in each of the Normal, Envelope, Random and Pitch modes) and all four
// MultiParameters (Normal, Banks, Switch, Trigger) at work, around an effect that only
// copies. "budget_percent" is the share of the block's real-time budget (512 / 48000 s)
// that the block costs.

#include "core/z_value_number.h"
#include "modulation/audio_effect_plugin_to_audio_plugin_adapter.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

using namespace halvern;

constexpr int kBlock = 512;
constexpr double kRate = 48000.0;

class CopyEffect : public ZAudioEffectPlugin {
public:
    std::array<double, 8> values{};
    std::vector<std::unique_ptr<ZValueDouble>> objects;

    void RegisterParameters(ZAudioPlugin& core) override
    {
        for (size_t i = 0; i < values.size(); ++i) {
            objects.push_back(std::make_unique<ZValueDouble>(&values[i], 0, 1, 0.5, 0.01));
            std::string id = "p";
            id += std::to_string(i);
            core.parameters().add({id, id, "", ZParameterType::Float, "", true}, objects.back().get());
        }
    }
    void Process(const ZHostTimeInfo*, float* const* in, float* const* out, int32_t n) override
    {
        for (int c = 0; c < 2; ++c)
            std::copy(in[c], in[c] + n, out[c]);
    }
};

ZModulatorTarget target(int parameter)
{
    ZModulatorTarget t;
    t.parameter = parameter;
    t.value = 0.5;
    t.range = 0.5;
    return t;
}

void BM_ModulatorHostAllModulators(benchmark::State& state)
{
    ZAudioEffectPluginToAudioPluginAdapter core(std::make_unique<CopyEffect>());
    core.SetSampleRate(kRate);
    core.SetMaxBlockSize(kBlock);
    core.SetMaxSubBlock(kBlock);
    core.InitProcessing();
    const ZLFOMode modes[4] = {ZLFOMode::Normal, ZLFOMode::Envelope, ZLFOMode::Random, ZLFOMode::Pitch};
    for (int i = 0; i < 4; ++i) {
        ZLFO& lfo = core.lfo(i);
        ZLFOSettings settings = lfo.settings();
        settings.enabled = 1;
        settings.mode = static_cast<int32_t>(modes[i]);
        settings.frequency = 0.5 + i;
        lfo.setSettings(settings);
        lfo.targets().replaceAll({target(2 * i), target(2 * i + 1)});
    }
    const double mpModes[4] = {0.0, 1.0, 1.0 / 3.0, 2.0 / 3.0}; // Normal, Banks, Switch, Trigger
    for (int i = 0; i < 4; ++i) {
        ZMultiParameter& multiParameter = core.multiParameter(i);
        multiParameter.setEnabled(true);
        multiParameter.modeObject().setNormalized(mpModes[i]);
        multiParameter.replaceTargets({target(i), target(7 - i)});
        multiParameter.setBankCount(4);
    }
    std::vector<float> left(kBlock), right(kBlock);
    for (int i = 0; i < kBlock; ++i)
        left[static_cast<size_t>(i)] = right[static_cast<size_t>(i)] =
            static_cast<float>(0.3 * std::sin(2.0 * 3.14159265358979 * 220.0 * i / kRate));
    float* in[2] = {left.data(), right.data()};
    std::vector<float> outLeft(kBlock), outRight(kBlock);
    float* out[2] = {outLeft.data(), outRight.data()};
    int block = 0;
    for (auto _ : state) {
        // The Normal and Banks MultiParameters move every block; Switch and Trigger are held.
        const double value = 0.5 + 0.4 * std::sin(0.01 * block++);
        core.SetParameter(core.multiParameterIndex(0), value);
        core.SetParameter(core.multiParameterIndex(1), value);
        core.SetParameter(core.multiParameterIndex(2), 1.0);
        core.SetParameter(core.multiParameterIndex(3), 1.0);
        core.ProcessBlock(in, out, kBlock, true);
        benchmark::DoNotOptimize(outLeft.data());
    }
    // CPU seconds per audio second, in percent.
    state.counters["budget_percent"] = benchmark::Counter(static_cast<double>(state.iterations()) * kBlock / kRate / 100.0,
                                                          benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BENCHMARK(BM_ModulatorHostAllModulators);

} // namespace
