#include "editor/multi_parameter_editor.h"
#include "tests/editor/modulator_page_fixture.h"
#include "ui/controls/button.h"
#include "ui/controls/list_view.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace halvern {
namespace {

// The views that show something of their own: visible, with no visible children.
void CollectLeaves(ZView& view, std::vector<ZView*>& leaves)
{
    if (!view.visible())
        return;
    bool shownChildren = false;
    for (const auto& child : view.children())
        if (child->visible()) {
            shownChildren = true;
            CollectLeaves(*child, leaves);
        }
    if (!shownChildren)
        leaves.push_back(&view);
}

// Every leaf lies inside the page, and no two overlap.
void ExpectLaidOutCleanly(ZView& page)
{
    std::vector<ZView*> leaves;
    CollectLeaves(page, leaves);
    for (size_t a = 0; a < leaves.size(); ++a) {
        EXPECT_TRUE(page.bounds().contains(leaves[a]->bounds())) << leaves[a]->name() << " leaves the page";
        for (size_t b = a + 1; b < leaves.size(); ++b)
            EXPECT_FALSE(leaves[a]->bounds().intersects(leaves[b]->bounds()))
                << leaves[a]->name() << " \"" << leaves[a]->Text() << "\" overlaps " << leaves[b]->name() << " \""
                << leaves[b]->Text() << "\"";
    }
}

class MultiParameterEditorTest : public ::testing::Test, public ZModulatorPageFixture {
protected:
    ZMultiParameterEditor& page() { return dynamic_cast<ZMultiParameterEditor&>(*root->content()); }
    void ShowPage(int index = 0, double scale = 1.0) { Show(BuildMultiParameterEditor(context, index), scale); }
    void SetMode(ZMultiParameterMode mode)
    {
        Click(Find("Mode"));
        Choose(ZEnumNames<ZMultiParameterMode>::names()[static_cast<size_t>(mode)]);
        Tick();
    }
};

TEST_F(MultiParameterEditorTest, EveryModeShowsItsOwnSettingsWhole)
{
    const std::vector<std::string> always = {"Enabled", "Name", "Group", "Info", "Mode", "ValueMode",
                                             "presetprevious", "presetnext", "LoadPreset", "SavePreset",
                                             "Value", "DefaultValue", "SetCurrentValueAsDefault", "TargetList"};
    const std::vector<std::pair<ZMultiParameterMode, std::vector<std::string>>> modes = {
        {ZMultiParameterMode::Normal, {}},
        {ZMultiParameterMode::Switch, {"SwitchTime"}},
        {ZMultiParameterMode::Banks, {"BankCount", "Interpolate", "BankList", "AutoGain"}},
    };
    const std::vector<std::string> modeOnly = {"SwitchTime", "BankCount", "Interpolate", "BankList", "AutoGain"};
    ShowPage(0);
    for (const auto& [mode, own] : modes) {
        SetMode(mode);
        EXPECT_EQ(core->multiParameter(0).mode(), mode);
        for (const std::string& name : always)
            EXPECT_NO_THROW(Find(name)) << name;
        for (const std::string& name : modeOnly) {
            const bool shown = std::find(own.begin(), own.end(), name) != own.end();
            EXPECT_EQ(root->content()->FindByName(name) != nullptr, shown) << name;
        }
        for (const char* name : {"SetCurrentValueAsDefault", "SavePreset", "Clear & Learn"}) {
            const ZView& button = Find(name);
            const double needed = root->canvas().TextWidth(button.Text(), theme.Text()) + 2 * theme.textInset;
            EXPECT_LE(needed, button.bounds().width) << name << " cuts \"" << button.Text() << "\"";
        }
        ExpectLaidOutCleanly(*root->content());
    }
    EXPECT_FALSE(dynamic_cast<const ZButton&>(Find("AutoGain")).enabled());
}

TEST_F(MultiParameterEditorTest, SettingsBanksAndPresetsEditTheMultiParameterAndChangesFromElsewhereShow)
{
    ZMultiParameter& multi = core->multiParameter(1);
    const std::string folder = ::testing::TempDir() + "/halvern_multiparameter_presets";
    std::filesystem::remove_all(folder);
    core->SetPresets({}, folder);
    ShowPage(1);
    Type(Find("Name"), "Width");
    Type(Find("Group"), "Room");
    EXPECT_EQ(multi.name(), "Width");
    EXPECT_EQ(multi.group(), "Room");
    Click(Find("Enabled"));
    EXPECT_TRUE(multi.enabled());
    Click(Find("ValueMode"));
    Choose("By first parameter");
    EXPECT_EQ(multi.valueMode(), ZMultiParameterValueMode::ByFirstParameter);
    multi.setInfo("Wider with time");
    multi.modeObject().setNormalized(1.0);
    Tick();
    EXPECT_EQ(Find("Info").Text(), "Wider with time");
    EXPECT_EQ(multi.mode(), ZMultiParameterMode::Banks);
    EXPECT_NO_THROW(Find("Banks panel"));
    ZWheelEvent notch;
    notch.position = Find("BankCount").bounds().center();
    notch.steps = 1.0;
    root->Wheel(notch);
    Tick();
    ASSERT_EQ(multi.bankCount(), 3);
    auto& list = dynamic_cast<ZListView&>(Find("BankList"));
    ASSERT_EQ(list.rows(), (std::vector<std::string>{"Bank 1", "Bank 2", "Bank 3"}));
    const int target = multi.targets().targets().front().parameter;
    core->parameters().setNow(target, 0.25);
    ClickAt(list.RowRect(2).center());
    EXPECT_EQ(page().selectedBank(), 2);
    Click(Find("SaveBank"));
    EXPECT_EQ(multi.banks()[2][0], 0.25);
    Click(Find("ReverseBanks"));
    EXPECT_EQ(multi.banks()[0][0], 0.25);
    Click(Find("SortDecreasing"));
    EXPECT_EQ(multi.banks()[2][0], 0.25);
    Click(Find("SortIncreasing"));
    EXPECT_EQ(multi.banks()[0][0], 0.25);
    const auto table = multi.banks();
    ClickAt(list.RowRect(1).center());
    Click(Find("RandomBank"));
    EXPECT_NE(multi.banks()[1], table[1]);
    EXPECT_EQ(multi.banks()[0], table[0]);
    core->parameters().setNow(target, 0.9);
    ClickAt(list.RowRect(0).center());
    Click(Find("LoadBank"));
    EXPECT_EQ(core->parameters().normalized(target), 0.25);
    Click(Find("SavePreset"));
    EXPECT_EQ(page().message(), "Saved as \"Width\".");
    EXPECT_TRUE(std::filesystem::exists(folder + "/MultiParameter/presets.xml"));
    Type(Find("Name"), "Other");
    multi.modeObject().setNormalized(0.0);
    Click(Find("LoadPreset"));
    Choose("Width");
    EXPECT_EQ(multi.name(), "Width");
    EXPECT_EQ(multi.mode(), ZMultiParameterMode::Banks);
    EXPECT_EQ(multi.banks()[0][0], 0.25);
    Tick();
    EXPECT_EQ(Find("PresetName").Text(), "Width");
    std::filesystem::remove_all(folder);
}

} // namespace
} // namespace halvern
