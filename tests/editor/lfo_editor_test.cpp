#include "editor/lfo_editor.h"
#include "editor/shape_editor.h"
#include "tests/editor/modulator_page_fixture.h"
#include "ui/controls/scroll_area.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace halvern {
namespace {

const std::vector<std::string> kAlwaysShown = {"Enabled", "Mode", "Frequency", "Phase", "PhaseSyncGroup", "High-speed",
                                               "Sync", "RestoreWhenDisabled", "Output", "Family", "PhaseOffset",
                                               "Smoothing", "ShapeGraph"};

// The settings each mode shows beyond the general ones.
std::vector<std::string> ShownIn(ZLFOMode mode)
{
    switch (mode) {
    case ZLFOMode::Envelope:
        return {"Follower.Attack",  "Follower.Release",   "Follower.Hold",      "Follower.RMSLength",
                "Follower.LevelMin", "Follower.LevelMax", "Follower.Mode",      "Follower.Threshold",
                "Follower.Maximize", "Follower.BandPass", "Follower.Minimum",   "Follower.Maximum",
                "Follower.Q",        "LFOAmount",         "Project.enabled",    "Project.Phase",
                "Project.Interval",  "UseSideChain"};
    case ZLFOMode::MidiEnvelope: // in its MIDI mode: the audio thresholds and the side-chain do not apply
        return {"Envelope.EnvelopeMode", "Envelope.ADSR.Attack", "Envelope.ADSR.Decay", "Envelope.ADSR.Sustain",
                "Envelope.ADSR.Release", "LFOAmount", "Project.enabled", "Project.Phase", "Project.Interval"};
    case ZLFOMode::Random:
        return {"Random.Speed", "Random.Smoothness", "LFOAmount", "Project.enabled", "Project.Phase",
                "Project.Interval"};
    case ZLFOMode::Pitch:
        return {"MinFrequency",
                "MaxFrequency",
                "Octaves",
                "Semitones",
                "Cents",
                "PitchDetector.MinFrequencyRec",
                "PitchDetector.MaxFrequencyRec",
                "PitchDetector.Threshold",
                "PitchDetector.Stabilization",
                "PitchDetector.Speed",
                "PitchDetector.Accuracy",
                "Auto-tune.Enabled",
                "Auto-tune.Speed",
                "Auto-tune.Depth",
                "LFOAmount",
                "UseSideChain"};
    case ZLFOMode::Normal:
        break;
    }
    return {};
}

void SetMode(ZLFO& lfo, ZLFOMode mode)
{
    ZLFOSettings settings = lfo.settings();
    settings.mode = static_cast<int32_t>(mode);
    lfo.setSettings(settings);
}

ZLFOEditor& EditorOf(ZModulatorPageFixture& page) { return dynamic_cast<ZLFOEditor&>(*page.root->content()); }

// Scrolls the page so that a view shows whole.
void ScrollTo(ZModulatorPageFixture& page, ZView& view)
{
    ZScrollArea& scroll = EditorOf(page).scrollArea();
    scroll.ScrollTo(scroll.scrollOffset() + view.bounds().y - scroll.bounds().y - 4);
    page.Tick();
}

void Drag(ZModulatorPageFixture& page, ZView& view, double up)
{
    const ZPoint from = view.bounds().center();
    page.root->MouseMove({from});
    page.root->MouseDown({from});
    page.root->MouseMove({{from.x, from.y - up}});
    page.root->MouseUp({{from.x, from.y - up}});
    page.Tick();
}

void TypeInto(ZModulatorPageFixture& page, ZView& control, const std::string& text)
{
    page.ClickAt(control.bounds().center(), ZMouseButton::Right);
    page.Choose("Type a value\u2026");
    page.Type(*page.root->overlays().back(), text);
}

TEST(LFOEditor, EveryModeShowsItsOwnSettingsWithTheirTextsAtBothScalesWithoutOverlaps)
{
    const std::set<std::string> all = [] {
        std::set<std::string> names;
        for (int mode = 0; mode <= static_cast<int>(ZLFOMode::Pitch); ++mode)
            for (const std::string& name : ShownIn(static_cast<ZLFOMode>(mode)))
                names.insert(name);
        return names;
    }();
    for (int mode = 0; mode <= static_cast<int>(ZLFOMode::Pitch); ++mode) {
        for (double scale : {1.0, 2.0}) {
            SCOPED_TRACE(testing::Message() << "mode " << mode << " scale " << scale);
            ZModulatorPageFixture page;
            SetMode(page.core->lfo(1), static_cast<ZLFOMode>(mode));
            page.Show(BuildLFOEditor(page.context, 1), scale);
            std::vector<std::string> expected = kAlwaysShown;
            const std::vector<std::string> own = ShownIn(static_cast<ZLFOMode>(mode));
            expected.insert(expected.end(), own.begin(), own.end());
            std::vector<ZView*> controls;
            for (const std::string& name : expected) {
                ZView* control = page.root->content()->FindByName(name);
                ASSERT_NE(control, nullptr) << name;
                controls.push_back(control);
                const ZTextStyle style = page.root->theme().Value();
                EXPECT_LE(page.root->canvas().TextWidth(control->Text(), style), control->bounds().width)
                    << name << " cannot show \"" << control->Text() << "\"";
                ZView* panel = control;
                while (panel != nullptr && dynamic_cast<ZPanel*>(panel) == nullptr)
                    panel = panel->parent();
                ASSERT_NE(panel, nullptr) << name;
                EXPECT_TRUE(panel->bounds().contains(control->bounds())) << name << " sticks out of its panel";
            }
            for (const std::string& name : all) {
                if (std::find(expected.begin(), expected.end(), name) == expected.end()) {
                    EXPECT_EQ(page.root->content()->FindByName(name), nullptr) << name << " belongs to another mode";
                }
            }
            for (size_t a = 0; a < controls.size(); ++a)
                for (size_t b = a + 1; b < controls.size(); ++b)
                    EXPECT_FALSE(controls[a]->bounds().intersects(controls[b]->bounds()))
                        << controls[a]->name() << " overlaps " << controls[b]->name();
            // The mode's panels stand side by side with no gaps between them.
            const std::vector<ZPanel*> panels = EditorOf(page).modePanels();
            EXPECT_EQ(panels.empty(), mode == static_cast<int>(ZLFOMode::Normal));
            for (size_t i = 1; i < panels.size(); ++i)
                EXPECT_NEAR(panels[i]->bounds().x, panels[i - 1]->bounds().right() + page.root->theme().spacing, 1.0);
            ASSERT_NE(page.root->content()->FindByName("Targets panel"), nullptr);

            if (mode == static_cast<int>(ZLFOMode::Normal)) {
                EXPECT_TRUE(page.root->canvas().WritePNG(testing::TempDir() + "lfo_editor_" +
                                                         std::to_string(static_cast<int>(scale)) + ".png"));
            }
        }
    }
}

TEST(LFOEditor, EditsReachTheLFOAndChangesElsewhereShowAtTheNextTick)
{
    ZModulatorPageFixture page;
    ZLFO& lfo = page.core->lfo(0);
    page.Show(BuildLFOEditor(page.context, 0));
    // The page shows the LFO's values at once.
    EXPECT_EQ(page.Find("Mode").Text(), "Normal");
    EXPECT_EQ(page.Find("PhaseSyncGroup").Text(), "Disabled");

    // Choosing a mode shows its settings.
    page.Click(page.Find("Mode"));
    page.Choose("Envelope");
    EXPECT_EQ(lfo.settings().mode, static_cast<int32_t>(ZLFOMode::Envelope));
    ZView& attack = page.Find("Follower.Attack");
    ScrollTo(page, page.Find("Level follower panel"));
    const double attackBefore = lfo.follower().settings().attack;
    Drag(page, attack, 40);
    EXPECT_GT(lfo.follower().settings().attack, attackBefore);
    TypeInto(page, page.Find("Follower.LevelMin"), "-30");
    EXPECT_DOUBLE_EQ(lfo.follower().settings().levelMin, -30.0);
    EXPECT_EQ(page.Find("Follower.LevelMin").Text(), "-30.00 dB");
    page.Click(page.Find("Follower.BandPass"));
    EXPECT_TRUE(lfo.follower().settings().bandPass);
    TypeInto(page, page.Find("Follower.Minimum"), "2 kHz");
    EXPECT_NEAR(lfo.follower().settings().bandMinimum, 2000.0, 1e-6);

    // A change the host makes between two edits is kept: each edit changes only its own setting.
    page.core->SetParameter(page.core->lfoParameterIndex(0) + 1, 0.5);
    const double frequency = lfo.settings().frequency;
    TypeInto(page, page.Find("Project.Interval"), "-2");
    EXPECT_DOUBLE_EQ(lfo.settings().projectInterval, -2.0);
    EXPECT_EQ(lfo.settings().frequency, frequency);

    // Changes made elsewhere show at the next tick, a new mode's panels too.
    ZLevelFollower::Settings follower = lfo.follower().settings();
    follower.threshold = -12.0;
    lfo.setFollowerSettings(follower);
    page.Tick();
    EXPECT_EQ(page.Find("Follower.Threshold").Text(), "-12.00 dB");
    SetMode(lfo, ZLFOMode::Pitch);
    page.Tick();
    EXPECT_EQ(page.root->content()->FindByName("Follower.Threshold"), nullptr);
    TypeInto(page, page.Find("Octaves"), "-2");
    EXPECT_EQ(lfo.settings().octaves, -2.0);
    EXPECT_EQ(page.Find("Octaves").Text(), "-2");

    // The enable switch is a host gesture and a manual switch.
    ScrollTo(page, page.Find("Enabled"));
    page.Click(page.Find("Enabled"));
    EXPECT_TRUE(lfo.enabled());
    EXPECT_EQ(page.core->GetParameter(page.core->lfoParameterIndex(0)), 1.0);
    page.Click(page.Find("Enabled"));
    EXPECT_FALSE(lfo.enabled());
    EXPECT_EQ(page.host.openGestures(), 0);
    page.Click(page.Find("Sync"));
    EXPECT_TRUE(lfo.settings().sync);
    page.Click(page.Find("PhaseSyncGroup"));
    page.Choose("Group 2");
    EXPECT_EQ(lfo.settings().syncGroup, 2);
}

} // namespace
} // namespace halvern
