#include "editor/midi_settings_editor.h"
#include "tests/editor/modulator_page_fixture.h"
#include "ui/controls/button.h"
#include "ui/controls/list_view.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace halvern {
namespace {

// Whether a view is drawn: it and every view around it visible.
bool Shown(const ZView& view)
{
    for (const ZView* v = &view; v != nullptr; v = v->parent())
        if (!v->visible())
            return false;
    return true;
}

struct MIDIPage : ZModulatorPageFixture {
    ZMIDIControllers& midi() { return core->midiControllers(); }
    ZMIDISettingsEditor& editor() { return dynamic_cast<ZMIDISettingsEditor&>(*root->content()); }
    ZView& In(const std::string& panel, const std::string& name) { return Find(name, &Find(panel)); }
    ZView& Controllers(const std::string& name) { return In("MIDI controllers panel", name); }
    ZView& Notes(const std::string& name) { return In("Note controllers panel", name); }
    ZView& PresetSwitch(const std::string& name) { return In("PreviousNextPresetController", name); }
    void TypeInto(ZView& control, const std::string& text)
    {
        ClickAt(control.bounds().center(), ZMouseButton::Right);
        Choose("Type a value\u2026");
        Type(*root->overlays().back(), text);
    }
    // What the audio thread receives: a controller message through the core's MIDI entry.
    void ReceiveController(int channel, int controller, int value)
    {
        core->ProcessMIDIMessage(static_cast<uint8_t>(0xB0 | channel), static_cast<uint8_t>(controller),
                                 static_cast<uint8_t>(value), 0);
    }
};

TEST(MIDISettingsEditor, ShowsEveryListsSettingsWithTheirTextsWithoutOverlaps)
{
    MIDIPage page;
    const int dryWet = page.IndexOf("Dry/wet");
    ZMIDIControllerAssignment controller;
    controller.controller = 7;
    controller.target.parameter = dryWet;
    page.midi().setControllers({controller});
    ZNoteController note;
    note.mode = ZNoteControllerMode::OnOff;
    note.note = 62;
    note.parameter = dryWet;
    page.midi().setNoteControllers({note});
    page.midi().setPresetSwitch({true, 64, 2});
    page.Show(BuildMIDISettingsEditor(page.context));
    const std::vector<std::pair<ZView*, std::string>> shown = {
        {&page.Controllers("Controllers"), "CC 7 \u2192 Dry/wet"},
        {&page.Controllers("Controller"), "CC 7"},
        {&page.Controllers("Channel"), "Any"},
        {&page.Controllers("FullRange"), "Up and down"},
        {&page.Controllers("Value"), "50.0 %"},
        {&page.Controllers("Parameter"), "Dry/wet"},
        {&page.Notes("NoteControllers"), "D4 \u2192 Dry/wet"},
        {&page.Notes("Mode"), "On/Off"},
        {&page.Notes("Note"), "D4"},
        {&page.PresetSwitch("Controller"), "CC 64"},
        {&page.PresetSwitch("Channel"), "2"},
    };
    const ZRect area{0, 0, ZModulatorPageFixture::kWidth, ZModulatorPageFixture::kHeight};
    for (const auto& [view, text] : shown) {
        EXPECT_EQ(view->Text(), text) << view->name();
        EXPECT_TRUE(Shown(*view)) << view->name();
        EXPECT_TRUE(area.contains(view->bounds())) << view->name();
        EXPECT_TRUE(dynamic_cast<ZListView*>(view) != nullptr ||
                    page.root->canvas().TextWidth(text, page.root->theme().Value()) <= view->bounds().width)
            << view->name() << " cannot show \"" << text << "\"";
    }
    for (size_t a = 0; a < shown.size(); ++a)
        for (size_t b = a + 1; b < shown.size(); ++b)
            EXPECT_FALSE(shown[a].first->bounds().intersects(shown[b].first->bounds()))
                << shown[a].first->name() << " overlaps " << shown[b].first->name();
    EXPECT_TRUE(page.root->canvas().WritePNG(testing::TempDir() + "midi_settings_editor.png"));
}

TEST(MIDISettingsEditor, ControlsChangeTheControllersWhichThenDriveTheirParameters)
{
    MIDIPage page;
    page.Show(BuildMIDISettingsEditor(page.context));
    EXPECT_FALSE(Shown(page.Controllers("Source"))) << "no controller, no settings";
    page.Click(page.Controllers("AddController"));
    ASSERT_EQ(page.midi().controllers().size(), 1u);
    EXPECT_TRUE(page.midi().controllersEnabled()) << "a controller added is meant to work";
    page.Click(page.Controllers("Parameter"));
    page.Choose("Room  \u203A");
    page.Choose("Size");
    const int size = page.IndexOf("Size");
    EXPECT_EQ(page.midi().controllers()[0].target.parameter, size);
    page.Click(page.Controllers("FullRange"));
    page.Choose("Interval");
    page.TypeInto(page.Controllers("Value"), page.core->GetParameterValueNameFrom01(size, 0.25));
    page.TypeInto(page.Controllers("MaxValue"), page.core->GetParameterValueNameFrom01(size, 0.75));
    page.TypeInto(page.Controllers("Controller"), "74");
    page.Click(page.Controllers("Channel"));
    page.Choose("3");
    ZMIDIControllerAssignment set = page.midi().controllers()[0];
    EXPECT_EQ(set.controller, 74);
    EXPECT_EQ(set.channel, 3);
    EXPECT_EQ(set.target.rangeMode, ZRangeMode::Interval);
    EXPECT_NEAR(set.target.value, 0.25, 0.01);
    EXPECT_NEAR(set.target.maxValue, 0.75, 0.01);
    // Controller 74 at full travel on channel 3 (2 on the wire) sets Size to MaxValue.
    page.ReceiveController(2, 74, 127);
    EXPECT_NEAR(page.core->GetParameter(size), set.target.maxValue, 1e-9);
    // Another source leaves no room for a controller number.
    page.Click(page.Controllers("Source"));
    page.Choose("Pitch-bend");
    EXPECT_EQ(page.midi().controllers()[0].controller, static_cast<int32_t>(ZMIDISource::PitchBend));
    EXPECT_FALSE(Shown(page.Controllers("Controller")));
    EXPECT_EQ(page.Controllers("Controllers").Text(), "Pitch-bend \u2192 Size");
    // Note controllers: a mode that follows every note has no note to choose.
    page.Click(page.Notes("AddNoteController"));
    ASSERT_EQ(page.midi().noteControllers().size(), 1u);
    EXPECT_FALSE(Shown(page.Notes("Note")));
    page.Click(page.Notes("Mode"));
    page.Choose("Switch (all octaves)");
    EXPECT_EQ(page.midi().noteControllers()[0].mode, ZNoteControllerMode::SwitchAllOctaves);
    ASSERT_TRUE(Shown(page.Notes("Note")));
    page.TypeInto(page.Notes("Note"), "A3");
    EXPECT_EQ(page.midi().noteControllers()[0].note, 57);
    page.Click(page.Notes("RemoveNoteController"));
    EXPECT_TRUE(page.midi().noteControllers().empty());
    page.Click(page.Controllers("RemoveController"));
    EXPECT_TRUE(page.midi().controllers().empty());
}

TEST(MIDISettingsEditor, LearnTakesTheNextControllerReceivedAndAnItemGoneIsRefused)
{
    MIDIPage page;
    page.Show(BuildMIDISettingsEditor(page.context));
    page.ReceiveController(0, 1, 10); // received before learning: not taken
    page.Click(page.Controllers("AddController"));
    page.Click(page.Controllers("Learn"));
    EXPECT_TRUE(page.editor().learning());
    page.Tick();
    EXPECT_EQ(page.midi().controllers()[0].controller, 1) << "nothing received yet";
    page.ReceiveController(3, 74, 100);
    page.Tick();
    EXPECT_EQ(page.midi().controllers()[0].controller, 74);
    EXPECT_EQ(page.midi().controllers()[0].channel, 4);
    EXPECT_FALSE(page.editor().learning());
    EXPECT_EQ(page.Find("Status").Text(), "Learned CC 74 on channel 4.");
    // The preset switch listens to continuous controllers only.
    page.Click(page.PresetSwitch("Learn"));
    page.core->ProcessMIDIMessage(0xE0, 0, 64, 0);
    page.Tick();
    EXPECT_TRUE(page.editor().learning());
    page.ReceiveController(0, 74, 1); // the same controller again is a new message
    page.Tick();
    EXPECT_EQ(page.midi().presetSwitch().controller, 74);
    EXPECT_EQ(page.midi().presetSwitch().channel, 1);
    EXPECT_FALSE(page.editor().learning());
    // The list goes (a state loaded elsewhere) while the page shows its item.
    page.midi().setControllers({});
    page.Click(page.Controllers("Invert"));
    EXPECT_EQ(page.Find("Status").Text(), "Unknown item to set.");
    EXPECT_TRUE(page.midi().controllers().empty());
    EXPECT_FALSE(Shown(page.Controllers("Invert")));
}

} // namespace
} // namespace halvern
