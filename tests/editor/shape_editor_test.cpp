#include "audio_import/audio_file_writer.h"
#include "editor/preset_window.h"
#include "editor/shape_editor.h"
#include "editor/shape_graph.h"
#include "tests/editor/modulator_page_fixture.h"
#include "ui/dialog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

namespace halvern {
namespace {

using Family = ZSignalGenerator::Family;

struct ShapePage : ZModulatorPageFixture {
    ZShapeEditor* editor = nullptr;

    explicit ShapePage(const std::string& presetFolder = {})
    {
        if (!presetFolder.empty())
            core->SetPresets({}, presetFolder);
        auto made = std::make_unique<ZShapeEditor>(context, 0);
        editor = made.get();
        Show(std::move(made));
    }
    ZLFO& lfo() { return core->lfo(0); }
    ZShapeGraph& graph() { return editor->graph(); }
    void ChooseFamily(const std::string& family)
    {
        Click(Find("Family"));
        Choose(family);
    }
    // A point over the graph's bar area at a phase (or a harmonic's slot) and a value.
    ZPoint At(double across, double value)
    {
        const ZRect area = lfo().shape().family() == Family::Harmonics ? graph().BarsRect() : graph().WaveRect();
        const ZRect inner = area.inset(0, 6);
        return {area.x + area.width * across, inner.y + (1 - value) / 2 * inner.height};
    }
    void Drag(ZPoint from, ZPoint to)
    {
        root->MouseMove({from});
        root->MouseDown({from});
        root->MouseMove({to});
        root->MouseUp({to});
        Tick();
    }
    void TypeValueAt(ZPoint at, const std::string& text)
    {
        ClickAt(at, ZMouseButton::Right);
        Choose("Type a value\u2026");
        Type(*root->overlays().back(), text);
    }
    std::vector<double> Steps() { return {lfo().shape().steps().begin(), lfo().shape().steps().end()}; }
};

TEST(ShapeEditor, StepsAreDrawnAcrossTypedAndCountedAndFollowThePhaseOffset)
{
    ShapePage page;
    page.ChooseFamily("Steps");
    ASSERT_EQ(page.lfo().shape().family(), Family::Steps);
    for (int i = 0; i < 4; ++i)
        page.Click(page.Find("ShapeCountDown"));
    ASSERT_EQ(page.Steps().size(), 4u);
    EXPECT_EQ(page.Find("ShapeCount").Text(), "4 steps");
    // A drag across draws every step it passes, even when the pointer jumps over some.
    page.Drag(page.At(0.05, 1.0), page.At(0.95, -1.0));
    std::vector<double> steps = page.Steps();
    EXPECT_GT(steps[0], steps[1]);
    EXPECT_GT(steps[1], steps[2]);
    EXPECT_GT(steps[2], steps[3]);
    // A drag along a step sets it to where it ends; the curve drawn is the shape's own.
    page.Drag(page.At(0.1, 0.0), page.At(0.1, 1.0));
    EXPECT_DOUBLE_EQ(page.Steps()[0], 1.0);
    EXPECT_NEAR(page.graph().CurvePoint(0.1).y, page.At(0.1, 1.0).y, 1e-9);
    // With a quarter cycle of phase offset the first quarter shows step 1.
    page.TypeValueAt(page.Find("PhaseOffset").bounds().center(), "25");
    ASSERT_DOUBLE_EQ(page.lfo().shape().phaseOffset(), 0.25);
    page.Drag(page.At(0.1, -0.5), page.At(0.1, -0.5));
    steps = page.Steps();
    EXPECT_DOUBLE_EQ(steps[1], -0.5);
    EXPECT_DOUBLE_EQ(steps[0], 1.0);
    page.TypeValueAt(page.graph().BarPoint(2), "-0.25");
    EXPECT_DOUBLE_EQ(page.Steps()[2], -0.25);
    for (int i = 0; i < 40; ++i)
        page.editor->ChangeCount(1);
    page.Tick();
    ASSERT_EQ(page.Steps().size(), static_cast<size_t>(ZSignalGenerator::kMaxSteps));
    EXPECT_EQ(page.Steps()[4], 0.0);
}

TEST(ShapeEditor, HarmonicsAreBarsUnderTheCurveAndTheLFOsPositionShowsOnIt)
{
    ShapePage page;
    page.ChooseFamily("Harmonics");
    page.Click(page.Find("ShapeCountUp"));
    page.Click(page.Find("ShapeCountUp"));
    ASSERT_EQ(page.lfo().shape().harmonics().size(), 3u);
    EXPECT_EQ(page.Find("ShapeCount").Text(), "3 harmonics");
    page.Drag(page.At(0.5, 0.5), page.At(0.5, 0.5));
    EXPECT_NEAR(page.lfo().shape().harmonics()[1], 0.5, 0.03);
    EXPECT_EQ(page.lfo().shape().harmonics()[0], 1.0);
    ZSignalGenerator square = page.lfo().shape();
    square.setFamily(Family::Square);
    page.lfo().setShape(square);
    page.Tick();
    EXPECT_EQ(page.Find("Family").Text(), "Square");
    EXPECT_FALSE(page.Find("ShapeCount").visible());
    // The running LFO's phase is marked, polled at every tick.
    EXPECT_FALSE(page.graph().shownPosition().has_value());
    page.core->SetSampleRate(48000.0);
    page.core->SetMaxBlockSize(480);
    page.core->InitProcessing();
    page.lfo().setEnabledByUser(true);
    std::vector<float> left(480), right(480);
    float* io[2] = {left.data(), right.data()};
    for (int i = 0; i < 25; ++i)
        page.core->ProcessBlock(io, io, 480, true);
    page.Tick();
    ASSERT_TRUE(page.graph().shownPosition().has_value());
    EXPECT_NEAR(*page.graph().shownPosition(), page.lfo().phase(), 1e-12);
    EXPECT_GT(page.lfo().phase(), 0.0);
}

TEST(ShapeEditor, PresetsAreSavedLoadedAndSteppedAndErrorsShowInTheStatusLine)
{
    {
        ShapePage page;
        page.Click(page.Find("SaveShapePreset"));
        page.Type(*page.root->overlays().back(), "Mine");
        EXPECT_EQ(page.Find("ShapePresetStatus").Text(), "There is no folder for the user's presets.");
    }
    const std::string folder = testing::TempDir() + "halvern_shape_presets";
    std::filesystem::remove_all(folder);
    ShapePage page(folder);
    for (const char* family : {"Triangle", "Square"}) {
        page.ChooseFamily(family);
        page.Click(page.Find("SaveShapePreset"));
        page.Type(*page.root->overlays().back(), family);
        EXPECT_EQ(page.Find("ShapePresetStatus").Text(), std::string("Saved \u201C") + family + "\u201D");
    }
    page.ChooseFamily("Sine");
    page.Click(page.Find("LoadShapePreset"));
    auto* window = dynamic_cast<ZPresetWindow*>(TopDialog(*page.root));
    ASSERT_NE(window, nullptr);
    const auto& rows = window->tree().nodes();
    const auto triangle = std::find_if(rows.begin(), rows.end(), [](const ZPresetNode& row) { return row.name == "Triangle"; });
    ASSERT_NE(triangle, rows.end());
    page.ClickAt(window->tree().RowRect(static_cast<int>(triangle - rows.begin())).center());
    page.Click(*window->FindByName("Load"));
    EXPECT_EQ(page.lfo().shape().family(), Family::Triangle);
    page.Click(*window->FindByName("Close"));
    EXPECT_EQ(page.Find("ShapePresetStatus").Text(), "Triangle");
    page.Click(page.Find("NextShapePreset"));
    EXPECT_EQ(page.lfo().shape().family(), Family::Square);
    page.Click(page.Find("PreviousShapePreset"));
    EXPECT_EQ(page.lfo().shape().family(), Family::Triangle);
    std::filesystem::remove_all(folder);
}

TEST(ShapeEditor, ShapesComeFromSoundFilesOrLeaveTheShapeAlone)
{
    ShapePage page;
    const std::string sine = (std::filesystem::temp_directory_path() / "shape_editor_sine.wav").string();
    ZAudioData audio{48000.0, {std::vector<float>(24000)}};
    for (size_t n = 0; n < audio.channels[0].size(); ++n)
        audio.channels[0][n] = static_cast<float>(0.5 * std::sin(2.0 * std::numbers::pi * 300.0 * n / 48000.0));
    WriteAudioFile(sine, audio);
    EXPECT_NE(page.editor->LoadShapeFromSound(sine + ".missing", ZShapeSource::Cycle), "");
    EXPECT_EQ(page.lfo().shape().family(), Family::Sine);
    EXPECT_EQ(page.editor->LoadShapeFromSound(sine, ZShapeSource::Cycle), "");
    page.Tick();
    EXPECT_EQ(page.Find("ShapeCount").Text(), "32 steps");
    for (double x : {0.25, 0.6}) // smoothly joined steps redraw the sine
        EXPECT_NEAR(page.lfo().shape().shape(x), std::sin(2.0 * std::numbers::pi * x), 0.02) << x;
    std::filesystem::remove(sine);
}

} // namespace
} // namespace halvern
