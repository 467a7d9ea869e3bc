#include "editor/offscreen_editor.h"
#include "editor/position_editor.h"
#include "editor/reverb_editor_view.h"
#include "ui/controls/parameter_control.h"
#include "editor/halvern_editor.h"
#include "reverb/halvern_audio_effect_plugin.h"
#include "state/plugin_state_block.h"
#include "state/zml_element.h"
#include "state/quessane_audio_effect_plugin.h"
#include "ui/panel.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace halvern {
namespace {

using Core = ZQuessaneAudioEffectPlugin;

std::unique_ptr<Core> NewReverb() { return std::make_unique<Core>(std::make_unique<HalvernAudioEffectPlugin>()); }

int IndexOf(Core& core, const std::string& idOrName)
{
    for (int index = 0; index < core.GetParameterCount(); ++index)
        if (core.GetParameterID(index) == idOrName || core.GetParameterName(index) == idOrName)
            return index;
    ADD_FAILURE() << "no parameter " << idOrName;
    return 0;
}

// The host parameters the reverb editor shows with a control of their own: the reverb's
// records with a value, bypass, the MultiParameters and the LFOs' three each.
std::vector<int> ShownParameters(Core& core)
{
    std::vector<int> shown;
    for (int i = 0; i < ZReverbParameters::kCount; ++i)
        if (core.GetParameterType(i) != ZParameterType::Panel)
            shown.push_back(i);
    shown.push_back(core.bypassIndex());
    for (int i = 0; i < 4; ++i)
        shown.push_back(core.multiParameterIndex(i));
    for (int i = 0; i < 4 * 3; ++i)
        shown.push_back(core.lfoParameterIndex(0) + i);
    return shown;
}

TEST(ReverbEditor, EveryShownParameterHasOneControlInItsPanelWithItsTextAndNothingOverlapsOrIsCut)
{
    auto core = NewReverb();
    ASSERT_TRUE(core->SetParameterFromDisplayText(IndexOf(*core, "ReverbTime"), "2500"));
    ASSERT_TRUE(core->SetParameterFromDisplayText(IndexOf(*core, "ReverbMode"), "Mode 3"));
    ZOffscreenEditor editor(*core, 2.0);
    editor.RenderAll();
    ZView& content = *editor.root().content();
    const ZRect area{0, 0, kHalvernEditorWidth, kHalvernEditorHeight};
    std::vector<ZView*> controls;
    for (int index : ShownParameters(*core)) {
        const std::string id = core->GetParameterID(index);
        ZView* control = content.FindByName(id);
        ASSERT_NE(control, nullptr) << id;
        EXPECT_NE(control->Text().find(core->GetParameterValueName(index)), std::string::npos)
            << id << " shows \"" << control->Text() << "\"";
        EXPECT_TRUE(area.contains(control->bounds()));
        EXPECT_TRUE(control->parent()->parent()->bounds().contains(control->bounds())) << id;
        EXPECT_LE(editor.root().canvas().TextWidth(control->Text(), editor.root().theme().Value()),
                  control->bounds().width)
            << id << " cannot show \"" << control->Text() << "\"";
        controls.push_back(control);
    }
    EXPECT_NE(content.FindByName("ReverbTime")->Text().find("2.50 s"), std::string::npos);
    ZView* position = content.FindByName("PositionEditor");
    ASSERT_NE(position, nullptr);
    controls.push_back(position);
    for (size_t a = 0; a < controls.size(); ++a)
        for (size_t b = a + 1; b < controls.size(); ++b)
            EXPECT_FALSE(controls[a]->bounds().intersects(controls[b]->bounds()))
                << controls[a]->name() << " overlaps " << controls[b]->name();
    EXPECT_TRUE(editor.WritePNG(::testing::TempDir() + "/halvern_editor.png"));
    for (const char* title : {"Position", "Globals", "Room", "Color", "Gate", "Equalizer", "MultiParameters", "LFOs"})
        ASSERT_NE(dynamic_cast<ZPanel*>(content.FindByName(title + std::string(" panel"))), nullptr) << title;
    auto* gate = dynamic_cast<ZPanel*>(content.FindByName("Gate panel"));
    ASSERT_NE(gate->titleControl(), nullptr);
    EXPECT_EQ(gate->titleControl()->name(), "Gate");
}

TEST(ReverbEditor, PositionEditorPlacesSourceAndMicrophoneAndEditsTheOutline)
{
    auto core = NewReverb();
    auto& effect = dynamic_cast<HalvernAudioEffectPlugin&>(core->effect());
    ZOffscreenEditor editor(*core, 1.0);
    editor.RenderAll();
    ZUIRoot& root = editor.root();
    auto* position = dynamic_cast<ZPositionEditor*>(root.content()->FindByName("PositionEditor"));
    ASSERT_NE(position, nullptr);
    const auto drag = [&](ZPoint from, ZPoint to) {
        root.MouseMove({from});
        root.MouseDown({from});
        root.MouseMove({to});
        root.MouseUp({to});
    };
    // The source moves through host gestures; the microphone is placed directly.
    drag(position->ToView(0.5, 0.5), position->ToView(0.25, 0.75));
    EXPECT_NEAR(core->GetParameter(IndexOf(*core, "Position X")), 0.25, 1e-9);
    EXPECT_NEAR(core->GetParameter(IndexOf(*core, "Position Y")), 0.75, 1e-9);
    EXPECT_EQ(editor.host().openGestures(), 0);
    drag(position->ToView(0.5, 1.0), position->ToView(0.8, 0.9));
    EXPECT_NEAR(effect.positions().microphoneX, 0.8, 1e-9);
    EXPECT_NEAR(effect.positions().microphoneY, 0.9, 1e-9);
    // A double click on an edge adds a corner, a drag moves it, the state keeps it.
    const ZPoint onEdge = position->ToView(0.5, 0.0);
    root.MouseDown({onEdge});
    root.MouseUp({onEdge});
    EXPECT_EQ(effect.RoomOutline(), ZRoomOutline::Rectangle()); // a single press changes nothing
    root.MouseDown({onEdge, ZMouseButton::Left, kModifierNone, 2});
    root.MouseUp({onEdge});
    ASSERT_EQ(effect.RoomOutline().size(), 5u);
    drag(onEdge, position->ToView(0.5, 0.1));
    EXPECT_NEAR(effect.RoomOutline()[1].y, 0.1, 1e-9);
    ZMLElement state("settings");
    StorePluginState(*core, state);
    auto other = NewReverb();
    ApplyPluginState(*other, state);
    const auto outline = dynamic_cast<HalvernAudioEffectPlugin&>(other->effect()).RoomOutline();
    ASSERT_EQ(outline.size(), 5u);
    EXPECT_NEAR(outline[1].y, 0.1, 1e-6);
    const ZPoint corner = position->ToView(0.5, 0.1);
    root.MouseDown({corner, ZMouseButton::Left, kModifierNone, 2});
    root.MouseUp({corner});
    EXPECT_EQ(effect.RoomOutline(), ZRoomOutline::Rectangle());
}

TEST(ReverbEditor, GesturesReachLearnAndTheSelectedModulatorsRangesShowOnItsTargets)
{
    auto core = NewReverb();
    ZOffscreenEditor editor(*core, 1.0);
    editor.RenderAll();
    ZUIRoot& root = editor.root();
    auto& view = dynamic_cast<ZReverbEditorView&>(*root.content());
    struct Recorder : ZLearnListener {
        std::vector<std::tuple<int32_t, double, double>> touched;
        void ParameterTouched(int32_t index, double from, double to) override { touched.emplace_back(index, from, to); }
    } recorder;
    view.modulatorContext().setLearnListener(&recorder);
    auto* knob = dynamic_cast<ZParameterControl*>(root.content()->FindByName("Diffusion"));
    ASSERT_NE(knob, nullptr);
    const ZPoint at = knob->bounds().center();
    root.MouseMove({at});
    root.MouseDown({at});
    root.MouseMove({{at.x, at.y + 100}}); // half the range down: 100 % to 50 %
    root.MouseUp({{at.x, at.y + 100}});
    ASSERT_EQ(recorder.touched.size(), 1u);
    EXPECT_EQ(std::get<0>(recorder.touched[0]), IndexOf(*core, "Diffusion"));
    EXPECT_NEAR(std::get<2>(recorder.touched[0]), 0.5, 1e-9);
    view.modulatorContext().setLearnListener(nullptr);
    // "Up and down" around 40 % with 50 % depth sweeps 15 % to 65 %.
    ZModulatorTarget target;
    target.parameter = IndexOf(*core, "Diffusion");
    target.value = 0.4;
    target.range = 0.5;
    core->lfo(0).targets().replaceAll({target});
    EXPECT_FALSE(knob->binding().ModulationRange());
    view.modulatorArea().Select({ZModulatorSelection::Kind::LFO, 0});
    const auto range = knob->binding().ModulationRange();
    ASSERT_TRUE(range);
    EXPECT_NEAR(range->first, 0.15, 1e-9);
    EXPECT_NEAR(range->second, 0.65, 1e-9);
    EXPECT_FALSE(dynamic_cast<ZParameterControl*>(root.content()->FindByName("Size"))->binding().ModulationRange());
}

TEST(ReverbEditor, StyleFileOverridesItemByItemAndADamagedOneChangesNothing)
{
    const std::string path = ::testing::TempDir() + "/Style.cfg";
    const auto write = [&](const std::string& text) { std::ofstream(path) << text; };
    ZTheme theme = ZTheme::Default();
    std::string error;
    write("<style><color name=\"accent\" value=\"#102030\"/><size name=\"knobSize\" value=\"52\"/></style>");
    ASSERT_TRUE(LoadStyleFile(path, theme, error)) << error;
    EXPECT_NEAR(theme.accent.g, 0x20 / 255.0, 1e-12);
    EXPECT_EQ(theme.knobSize, 52.0);
    EXPECT_EQ(theme.text.r, ZTheme::Default().text.r);
    const ZTheme before = theme;
    for (const char* damaged : {"<style><color name=\"accent\" value=\"#fff\"/></style>",
                                "<style><size name=\"knobSize\" value=\"5000\"/></style>",
                                "<style><size", "\x01\x02garbage"}) {
        write(damaged);
        error.clear();
        EXPECT_FALSE(LoadStyleFile(path, theme, error)) << damaged;
        EXPECT_NE(error.find(path), std::string::npos);
        EXPECT_EQ(theme.knobSize, before.knobSize);
        EXPECT_EQ(theme.accent.g, before.accent.g);
    }
    std::filesystem::remove(path);
    EXPECT_TRUE(LoadStyleFile(path, theme, error)); // no file: the theme as it is
}

} // namespace
} // namespace halvern
