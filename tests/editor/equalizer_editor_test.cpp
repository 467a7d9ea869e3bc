#include "editor/equalizer_editor.h"
#include "editor/equalizer_graph.h"
#include "modulator_page_fixture.h"
#include "ui/controls/knob.h"
#include "ui/panel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace halvern {
namespace {

// Keeps the gestures it hears as "B25 P25 E25 ", a run of changes written once.
class RecordingHost : public ZOffscreenEditorHost {
public:
    using ZOffscreenEditorHost::ZOffscreenEditorHost;
    void BeginEdit(int32_t index) override { note("B", index); }
    void PerformEdit(int32_t index, double normalized) override
    {
        note("P", index);
        ZOffscreenEditorHost::PerformEdit(index, normalized);
    }
    void EndEdit(int32_t index) override { note("E", index); }
    std::string log;

private:
    void note(const char* what, int32_t index)
    {
        const std::string entry = what + std::to_string(index) + " ";
        if (entry != last_)
            log += entry;
        last_ = entry;
    }
    std::string last_;
};

struct EqualizerPage : ZModulatorPageFixture {
    RecordingHost recorder{*core};
    ZModulatorEditorContext eqContext{*core, effect, recorder, {}, {}};
    ZEqualizerEditor* page = nullptr;

    explicit EqualizerPage(double scale = 1.0)
    {
        effect.Prepare(48000.0, 512);
        auto owned = std::make_unique<ZEqualizerEditor>(eqContext);
        page = owned.get();
        Show(std::move(owned), scale);
    }
    ZEqualizerGraph& graph() { return page->graph(); }
    void Drag(ZPoint from, ZPoint to)
    {
        root->MouseMove({from});
        root->MouseDown({from});
        root->MouseMove({{(from.x + to.x) / 2, (from.y + to.y) / 2}});
        root->MouseMove({to});
        root->MouseUp({to});
        Tick();
    }
    // Runs noise through the reverb so that the analyser has a spectrum to show.
    void PlayNoise(int blocks)
    {
        std::minstd_rand random(7);
        std::uniform_real_distribution<float> noise(-0.5f, 0.5f);
        std::vector<float> inL(512), inR(512), outL(512), outR(512);
        for (int block = 0; block < blocks; ++block) {
            for (size_t i = 0; i < inL.size(); ++i)
                inL[i] = inR[i] = noise(random);
            float* const inputs[] = {inL.data(), inR.data()};
            float* const outputs[] = {outL.data(), outR.data()};
            effect.Process(nullptr, inputs, outputs, 512);
        }
        Tick();
    }
};

TEST(EqualizerEditor, HandlesEditTheBandsAndTheCutsAsHostGestures)
{
    EqualizerPage f;
    ZEqualizerGraph& graph = f.graph();
    constexpr int kPeak = ZEqualizerProcessorPlugin::kPeak;

    // Dragging the peak's point moves its frequency and gain, and the effect runs it.
    f.Drag(graph.BandHandle(kPeak), {graph.XOf(3000.0), graph.YOfGain(9.0)});
    ZEqualizerBand peak = f.effect.EqualizerBands()[kPeak];
    EXPECT_NEAR(peak.frequency, 3000.0, 30.0);
    EXPECT_NEAR(peak.gainDb, 9.0, 0.3);
    EXPECT_FALSE(peak.enabled);

    // A double click switches it on, the wheel narrows it; the response follows.
    const ZPoint at = graph.BandHandle(kPeak);
    f.root->MouseDown({at, ZMouseButton::Left, kModifierNone, 1});
    f.root->MouseUp({at});
    f.root->MouseDown({at, ZMouseButton::Left, kModifierNone, 2});
    f.root->MouseUp({at});
    f.root->Wheel({at, 2.0});
    f.Tick();
    peak = f.effect.EqualizerBands()[kPeak];
    EXPECT_TRUE(peak.enabled);
    EXPECT_NEAR(peak.q, 0.7071 * 1.12 * 1.12, 1e-3);
    EXPECT_NEAR(f.effect.EqualizerResponse().gainDb(peak.frequency), peak.gainDb, 0.05);
    EXPECT_EQ(f.Find("Peak Gain").Text(), "+9.0 dB");

    // The low cut moves sideways only, as one gesture on its host parameter.
    const int lowCut = f.IndexOf("LowCut");
    const ZPoint cut = graph.CutHandle(ZEqualizerModel::Cut::Low);
    f.Drag(cut, {graph.XOf(200.0), cut.y - 40});
    const std::string id = std::to_string(lowCut);
    EXPECT_EQ(f.recorder.log, "B" + id + " P" + id + " E" + id + " ");
    EXPECT_NEAR(ZEqualizerModel::HertzAt(f.core->GetParameter(lowCut)), 200.0, 3.0);

    // A state loaded behind the page's back shows at the next tick.
    ZEqualizerBand shelf = f.effect.EqualizerBands()[ZEqualizerProcessorPlugin::kLowShelf];
    shelf.gainDb = -6.0;
    f.effect.SetEqualizerBand(ZEqualizerProcessorPlugin::kLowShelf, shelf);
    f.Tick();
    EXPECT_EQ(f.Find("Low shelf Gain").Text(), "-6.0 dB");
    EXPECT_NEAR(graph.BandHandle(ZEqualizerProcessorPlugin::kLowShelf).y, graph.YOfGain(-6.0), 1e-9);
}

// Pictures at both scales, with the analyser fed, for looking at; the layout must fit.
TEST(EqualizerEditor, RendersAtBothScalesWithEveryControlInside)
{
    for (double scale : {1.0, 2.0}) {
        EqualizerPage f(scale);
        const int lowCut = f.IndexOf("LowCut"), highCut = f.IndexOf("HighCut");
        f.core->SetParameter(lowCut, ZEqualizerModel::NormalizedAt(60.0));
        f.core->SetParameter(highCut, ZEqualizerModel::NormalizedAt(11000.0));
        f.effect.Update();
        f.effect.SetEqualizerBand(ZEqualizerProcessorPlugin::kLowShelf, {180.0, 4.0, 0.7, true});
        f.effect.SetEqualizerBand(ZEqualizerProcessorPlugin::kPeak, {2500.0, -6.0, 1.4, true});
        f.PlayNoise(120);
        f.root->MouseMove({f.graph().BandHandle(ZEqualizerProcessorPlugin::kPeak)});
        f.Tick();
        EXPECT_GT(f.graph().analyser().levelDb(500.0, 600.0), -80.0);

        const ZRect page{0, 0, ZModulatorPageFixture::kWidth, ZModulatorPageFixture::kHeight};
        for (const auto& cell : f.page->bandsPanel().body().children()) {
            EXPECT_TRUE(page.contains(cell->bounds())) << cell->name();
            if (auto* knob = dynamic_cast<ZKnob*>(cell.get())) {
                EXPECT_GE(knob->DialRect().width, 36.0) << knob->name();
            }
        }
        f.root->InvalidateAll();
        f.root->Paint();
    }
}

} // namespace
} // namespace halvern
