// The reverb editor's costs: a full repaint at scale 1 and 2 (the target is at most
// 8 ms at scale 1), one second of an open editor's timer ticks while audio runs (the
// meters move, nothing else changes), and the audio thread's cost with the editor's
// metering and the equalizer's analyser on against off, at 48 kHz stereo in 512-sample
// blocks; and the two state copies the editor takes: the slot selector's look at which
// slots hold changes and one undo step.

#include "bench/reverb_instance.h"
#include "editor/offscreen_editor.h"
#include "editor/undo_history.h"

#include <benchmark/benchmark.h>

namespace {

using namespace halvern;

using bench::ReportRealtime;
using Instance = bench::ZBenchReverb;
constexpr int kTicksPerSecond = 60;

void BM_EditorFullRepaint(benchmark::State& state)
{
    Instance instance;
    ZOffscreenEditor editor(instance.core, static_cast<double>(state.range(0)));
    editor.RenderAll();
    for (auto _ : state) {
        editor.root().InvalidateAll();
        benchmark::DoNotOptimize(editor.root().Paint());
    }
}
BENCHMARK(BM_EditorFullRepaint)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

// One second of an open editor: 60 ticks, each with the blocks of audio that arrive in
// a sixtieth of a second (timed apart), so the meters have something to show.
void BM_EditorIdleSecond(benchmark::State& state)
{
    Instance instance;
    instance.core.SetMetering(true);
    ZOffscreenEditor editor(instance.core, 1.0);
    editor.RenderAll();
    double now = 0.0;
    for (auto _ : state) {
        for (int tick = 0; tick < kTicksPerSecond; ++tick) {
            state.PauseTiming();
            for (int b = 0; b < 2; ++b)
                instance.block();
            state.ResumeTiming();
            now += 1.0 / kTicksPerSecond;
            editor.root().Tick(now);
            benchmark::DoNotOptimize(editor.root().Paint());
        }
    }
}
BENCHMARK(BM_EditorIdleSecond)->Unit(benchmark::kMillisecond);

// With the editor open the audio thread keeps peaks for the meters and, while the
// equalizer page is open, copies the reverberation for its analyser.
void BM_AudioWithEditor(benchmark::State& state)
{
    Instance instance;
    instance.core.SetMetering(state.range(0) != 0);
    dynamic_cast<HalvernAudioEffectPlugin&>(instance.core.effect()).SetWetAnalysis(state.range(1) != 0);
    for (auto _ : state)
        instance.block();
    ReportRealtime(state);
}
BENCHMARK(BM_AudioWithEditor)->ArgNames({"open", "analyser"})->Args({0, 0})->Args({1, 0})->Args({1, 1});

} // namespace

namespace {

// What the slot selector does twice a second while the editor is open, holding the
// processing lock: the live state stored and the eight slots compared with the defaults.
void BM_SlotsHoldingChanges(benchmark::State& state)
{
    Instance instance;
    for (auto _ : state)
        benchmark::DoNotOptimize(instance.core.SlotsHoldingChanges());
}
BENCHMARK(BM_SlotsHoldingChanges)->Unit(benchmark::kMicrosecond);

// One undo step: the whole state stored and compressed as a host block.
void BM_UndoStep(benchmark::State& state)
{
    Instance instance;
    halvern::ZUndoHistory history(instance.core);
    const int size = 4;
    for (auto _ : state) {
        instance.core.SetParameter(size, instance.core.GetParameter(size) > 0.5 ? 0.25 : 0.75);
        benchmark::DoNotOptimize(history.Record());
    }
}
BENCHMARK(BM_UndoStep)->Unit(benchmark::kMicrosecond);

} // namespace
