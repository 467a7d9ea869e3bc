#include "editor/modulator_menu.h"
#include "editor/multi_parameter_editor.h"
#include "modulation/modulator_state.h"
#include "state/zml_reader.h"
#include "state/zml_writer.h"
#include "tests/editor/modulator_page_fixture.h"

#include <gtest/gtest.h>

namespace halvern {
namespace {

using Kind = ZModulatorSelection::Kind;

// A modulator's stored element as text, the way the plug-in's state holds it.
std::string StateOf(ZQuessaneAudioEffectPlugin& core, ZModulatorSelection which)
{
    ZMLElement element("Modulator");
    const ZSerializationContext context(element, true);
    if (which.kind == Kind::LFO)
        SerializeLFO(context, core.lfo(which.index), core.modulatorStateScope());
    else
        SerializeMultiParameter(context, core.multiParameter(which.index), core.modulatorStateScope());
    return ZMLDocumentText(element, ZMLLayout::Compact);
}

class ModulatorMenuTest : public ::testing::Test, public ZModulatorPageFixture {
protected:
    void SetUp() override
    {
        pages = [this](ZModulatorSelection which) -> std::unique_ptr<ZView> {
            if (which.kind != Kind::MultiParameter)
                return nullptr;
            return BuildMultiParameterEditor(context, which.index);
        };
        Show(std::make_unique<ZView>());
    }
    void OpenMenu(ZModulatorSelection which) { ShowModulatorMenu(context, *root, which, {10, 10, 80, 22}); }
    // Differs from the defaults in settings, targets and banks.
    void Shape(ZQuessaneAudioEffectPlugin& plugin)
    {
        ZMultiParameter& multi = plugin.multiParameter(0);
        multi.setName("Size");
        multi.setGroup("Room");
        multi.modeObject().setNormalized(1.0);
        ZModulatorTarget target;
        target.parameter = IndexOf("ReverbTime");
        target.rangeMode = ZRangeMode::Interval;
        target.maxValue = 0.3;
        multi.addTarget(target);
        multi.setBankCount(3);
        ZLFOSettings settings = plugin.lfo(1).settings();
        settings.frequency = 3.5;
        settings.mode = static_cast<int32_t>(ZLFOMode::Random);
        plugin.lfo(1).setSettings(settings);
        plugin.lfo(1).targets().add(target);
    }
};

TEST_F(ModulatorMenuTest, CopyAndPasteGiveAnotherInstanceTheSameModulatorAndOtherTextChangesNothing)
{
    Shape(*core);
    ZModulatorPageFixture other;
    other.Show(std::make_unique<ZView>());
    const ZModulatorSelection multi{Kind::MultiParameter, 0}, lfo{Kind::LFO, 1};
    const ZModulatorSelection otherMulti{Kind::MultiParameter, 2}, otherLFO{Kind::LFO, 3};
    ASSERT_NE(StateOf(*other.core, otherMulti), StateOf(*core, multi));
    for (const auto& [from, to, tag] : {std::tuple{multi, otherMulti, kMultiParameterClipboardTag},
                                        std::tuple{lfo, otherLFO, kLFOClipboardTag}}) {
        OpenMenu(from);
        Choose("Copy");
        const std::string copied = root->clipboard().Text();
        EXPECT_EQ(ReadZMLDocument(copied)->name(), tag) << copied;
        other.root->clipboard().SetText(copied);
        ShowModulatorMenu(other.context, *other.root, to, {10, 10, 80, 22});
        other.Choose("Paste");
        EXPECT_EQ(StateOf(*other.core, to), StateOf(*core, from));
    }
    const std::string before = StateOf(*other.core, otherMulti);
    for (const std::string& text : {CopyModulator(*core, lfo), std::string("<QuessaneMultiParameter"),
                                    std::string("Size")}) {
        other.root->clipboard().SetText(text);
        ShowModulatorMenu(other.context, *other.root, otherMulti, {10, 10, 80, 22});
        other.Choose("Paste");
        EXPECT_EQ(StateOf(*other.core, otherMulti), before) << text;
    }
}

TEST_F(ModulatorMenuTest, MenusOfferTheModulatorHostsEntriesAndCarryThemOut)
{
    for (const ZMenuItem& item : ModulatorMenuItems(context, *root, {Kind::LFO, 0}, {}))
        EXPECT_EQ(item.text.find("Reorder"), std::string::npos) << "LFOs have no order to change";
    // "Reorder" trades whole states with the chosen place, and the page follows.
    Shape(*core);
    const std::string first = StateOf(*core, {Kind::MultiParameter, 0});
    const std::string third = StateOf(*core, {Kind::MultiParameter, 2});
    OpenMenu({Kind::MultiParameter, 0});
    Choose("Reorder -> Multiparameter 3");
    EXPECT_EQ(StateOf(*core, {Kind::MultiParameter, 2}), first);
    EXPECT_EQ(StateOf(*core, {Kind::MultiParameter, 0}), third);
    ASSERT_FALSE(opened.empty());
    EXPECT_EQ(opened.back(), (ZModulatorSelection{Kind::MultiParameter, 2}));
    OpenMenu({Kind::MultiParameter, 2});
    Choose("Attach MIDI controller");
    EXPECT_EQ(opened.back().kind, Kind::MIDI);
    // "Learn" opens the page and its list learns; chosen again, it stops.
    Show(std::make_unique<ZView>());
    OpenMenu({Kind::MultiParameter, 3});
    Choose("Learn");
    EXPECT_EQ(opened.back(), (ZModulatorSelection{Kind::MultiParameter, 3}));
    ASSERT_NE(listener, nullptr);
    listener->ParameterTouched(IndexOf("Diffusion"), 0.2, 0.4);
    EXPECT_EQ(core->multiParameter(3).targets().size(), 2);
    OpenMenu({Kind::MultiParameter, 3});
    Choose("Learn");
    EXPECT_EQ(listener, nullptr);
    OpenMenu({Kind::MultiParameter, 3});
    Choose("Clear & Learn");
    ASSERT_NE(listener, nullptr);
    EXPECT_EQ(core->multiParameter(3).targets().size(), 1);
    const bool enabled = core->modulatorsEnabled();
    ShowModulatorsMenu(context, *root, {10, 10, 80, 22});
    Choose("Enable modulators");
    EXPECT_NE(core->modulatorsEnabled(), enabled);
}

} // namespace
} // namespace halvern
