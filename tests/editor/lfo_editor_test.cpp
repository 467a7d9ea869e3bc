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

const std::vector<std::string> kAlwaysShown = {"Enabled", "Mode", "Frequency", "PhaseSyncGroup", "RestoreWhenDisabled",
                                               "Output", "Family", "ShapeGraph"};

// Representatives of the settings each mode shows beyond the general ones.
std::vector<std::string> ShownIn(ZLFOMode mode)
{
    switch (mode) {
    case ZLFOMode::Envelope:
        return {"Follower.Attack", "Follower.Threshold", "Follower.Q", "LFOAmount", "Project.Interval", "UseSideChain"};
    case ZLFOMode::MidiEnvelope: // the audio thresholds and the side-chain do not apply
        return {"Envelope.EnvelopeMode", "Envelope.ADSR.Release", "LFOAmount", "Project.Interval"};
    case ZLFOMode::Random:
        return {"Random.Speed", "Random.Smoothness", "LFOAmount", "Project.Interval"};
    case ZLFOMode::Pitch:
        return {"MinFrequency", "PitchDetector.Accuracy", "Auto-tune.Depth", "LFOAmount", "UseSideChain"};
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

void ScrollTo(ZModulatorPageFixture& page, ZView& view)
{
    ZScrollArea& scroll = EditorOf(page).scrollArea();
    scroll.ScrollTo(scroll.scrollOffset() + view.bounds().y - scroll.bounds().y - 4);
    page.Tick();
}

void TypeInto(ZModulatorPageFixture& page, ZView& control, const std::string& text)
{
    page.ClickAt(control.bounds().center(), ZMouseButton::Right);
    page.Choose("Type a value\u2026");
    page.Type(*page.root->overlays().back(), text);
}

TEST(LFOEditor, EveryModeShowsItsOwnSettingsWithTheirTextsWithoutOverlaps)
{
    const std::set<std::string> all = [] {
        std::set<std::string> names;
        for (int mode = 0; mode <= static_cast<int>(ZLFOMode::Pitch); ++mode)
            for (const std::string& name : ShownIn(static_cast<ZLFOMode>(mode)))
                names.insert(name);
        return names;
    }();
    for (int mode = 0; mode <= static_cast<int>(ZLFOMode::Pitch); ++mode) {
        SCOPED_TRACE(testing::Message() << "mode " << mode);
        ZModulatorPageFixture page;
        SetMode(page.core->lfo(1), static_cast<ZLFOMode>(mode));
        page.Show(BuildLFOEditor(page.context, 1));
        std::vector<std::string> expected = kAlwaysShown;
        const std::vector<std::string> own = ShownIn(static_cast<ZLFOMode>(mode));
        expected.insert(expected.end(), own.begin(), own.end());
        std::vector<ZView*> controls;
        for (const std::string& name : expected) {
            ZView* control = page.root->content()->FindByName(name);
            ASSERT_NE(control, nullptr) << name;
            controls.push_back(control);
            EXPECT_LE(page.root->canvas().TextWidth(control->Text(), page.root->theme().Value()), control->bounds().width)
                << name << " cannot show \"" << control->Text() << "\"";
            ZView* panel = control;
            while (panel != nullptr && dynamic_cast<ZPanel*>(panel) == nullptr)
                panel = panel->parent();
            ASSERT_NE(panel, nullptr) << name;
            EXPECT_TRUE(panel->bounds().contains(control->bounds())) << name << " sticks out of its panel";
        }
        for (const std::string& name : all)
            EXPECT_TRUE(std::find(expected.begin(), expected.end(), name) != expected.end() ||
                        page.root->content()->FindByName(name) == nullptr)
                << name << " belongs to another mode";
        for (size_t a = 0; a < controls.size(); ++a)
            for (size_t b = a + 1; b < controls.size(); ++b)
                EXPECT_FALSE(controls[a]->bounds().intersects(controls[b]->bounds()))
                    << controls[a]->name() << " overlaps " << controls[b]->name();
        EXPECT_TRUE(page.root->canvas().WritePNG(testing::TempDir() + "lfo_editor_" + std::to_string(mode) + ".png"));
    }
}

TEST(LFOEditor, EditsReachTheLFOAndChangesElsewhereShowAtTheNextTick)
{
    ZModulatorPageFixture page;
    ZLFO& lfo = page.core->lfo(0);
    page.Show(BuildLFOEditor(page.context, 0));
    page.Click(page.Find("Mode"));
    page.Choose("Envelope");
    EXPECT_EQ(lfo.settings().mode, static_cast<int32_t>(ZLFOMode::Envelope));
    ZView& attack = page.Find("Follower.Attack");
    ScrollTo(page, page.Find("Level follower panel"));
    const double attackBefore = lfo.follower().settings().attack;
    page.root->Wheel({attack.bounds().center(), 1.0, kModifierNone});
    EXPECT_GT(lfo.follower().settings().attack, attackBefore);
    TypeInto(page, page.Find("Follower.LevelMin"), "-30");
    EXPECT_DOUBLE_EQ(lfo.follower().settings().levelMin, -30.0);
    TypeInto(page, page.Find("Follower.Minimum"), "2 kHz");
    EXPECT_NEAR(lfo.follower().settings().bandMinimum, 2000.0, 1e-6);
    // A host change between two edits is kept: each edit changes only its own setting.
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
    // The enable switch is a host gesture and a manual switch.
    ScrollTo(page, page.Find("Enabled"));
    page.Click(page.Find("Enabled"));
    EXPECT_TRUE(lfo.enabled());
    EXPECT_EQ(page.core->GetParameter(page.core->lfoParameterIndex(0)), 1.0);
    page.Click(page.Find("Enabled"));
    EXPECT_FALSE(lfo.enabled());
    EXPECT_EQ(page.host.openGestures(), 0);
    page.Click(page.Find("PhaseSyncGroup"));
    page.Choose("Group 2");
    EXPECT_EQ(lfo.settings().syncGroup, 2);
}

} // namespace
} // namespace halvern
