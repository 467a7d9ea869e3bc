#include "editor/abcd_editor.h"
#include "editor/offscreen_editor.h"
#include "editor/reverb_editor_view.h"
#include "presets/factory_presets.h"
#include "reverb/halvern_audio_effect_plugin.h"
#include "state/plugin_state_block.h"
#include "state/quessane_audio_effect_plugin.h"
#include "ui/controls/popup_menu.h"
#include "ui/controls/xy_pad.h"
#include "state/zml_writer.h"
#include "ui/dialog.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace halvern {
namespace {

using Core = ZQuessaneAudioEffectPlugin;

std::unique_ptr<Core> NewReverb()
{
    auto core = std::make_unique<Core>(std::make_unique<HalvernAudioEffectPlugin>());
    core->SetPresets(ZPresetCollection::ReadBlock(FactoryPresetBlock()), "");
    return core;
}

struct EditorFixture {
    std::unique_ptr<Core> core = NewReverb();
    ZOffscreenEditor editor{*core, 1.0};

    ZView& Find(const std::string& name)
    {
        ZDialog* dialog = TopDialog(editor.root());
        ZView* view = dialog != nullptr ? dialog->FindByName(name) : editor.root().content()->FindByName(name);
        if (view == nullptr)
            throw std::runtime_error("no view " + name);
        return *view;
    }
    void Drag(ZPoint from, ZPoint to)
    {
        ZUIRoot& root = editor.root();
        root.MouseMove({from});
        root.MouseDown({from});
        root.MouseMove({{(from.x + to.x) / 2, (from.y + to.y) / 2}});
        root.MouseMove({to});
        root.MouseUp({to});
        editor.Tick(10); // the undo step is taken a few ticks after the change
    }
    void Click(const std::string& name)
    {
        const ZPoint at = Find(name).bounds().center();
        Drag(at, at);
    }
    int Index(const std::string& id)
    {
        for (int i = 0; i < core->GetParameterCount(); ++i)
            if (core->GetParameterID(i) == id)
                return i;
        throw std::runtime_error("no parameter " + id);
    }
    std::vector<uint8_t> State()
    {
        ZMemoryStream block = SavePluginState(*core);
        return {block.data(), block.data() + block.size()};
    }
};

TEST(SlotBar, SwitchesCopiesAndPastesSlotsAndTellsTheHost)
{
    EditorFixture f;
    const int size = f.Index("Size");
    f.core->SetParameter(size, 0.9);
    f.Click("SlotCopy");
    f.Click("SlotC");
    EXPECT_EQ(f.core->slots().live(), 2);
    EXPECT_NEAR(f.core->GetParameter(f.core->slotParameterIndex()), 2.0 / 7.0, 1e-9);
    EXPECT_EQ(f.editor.host().openGestures(), 0);
    EXPECT_NE(f.core->GetParameter(size), 0.9); // C keeps the defaults
    f.Click("SlotPaste");
    EXPECT_DOUBLE_EQ(f.core->GetParameter(size), 0.9);
    const auto holds = f.core->SlotsHoldingChanges();
    EXPECT_TRUE(holds[0] && holds[2] && !holds[1]);
    // The same after the host has saved and reloaded the state.
    const std::vector<uint8_t> saved = f.State();
    LoadPluginState(*f.core, saved.data(), static_cast<int32_t>(saved.size()));
    EXPECT_EQ(f.core->SlotsHoldingChanges(), holds);

    // What is not a copied slot changes nothing and says why.
    const std::vector<uint8_t> before = f.State();
    f.editor.root().clipboard().SetText("<settings/>");
    f.Click("SlotPaste");
    EXPECT_EQ(f.State(), before);
    ASSERT_NE(TopDialog(f.editor.root()), nullptr);
    EXPECT_NE(TopDialog(f.editor.root())->FindByName("OK"), nullptr);
}

TEST(MorphPad, AsksInASlotOfTheSquareAndBlendsTheFourSlotsWhereItIsDropped)
{
    EditorFixture f;
    const int size = f.Index("Size");
    const double corners[4] = {0.1, 0.3, 0.5, 0.9};
    for (int slot = 3; slot >= 0; --slot) {
        f.core->SelectSlot(slot);
        f.core->SetParameter(size, corners[slot]);
    }
    f.Click("MorphPage");
    auto& pad = dynamic_cast<ZXYPad&>(f.Find("MorphPad"));
    const ZRect area = pad.bounds();

    // Live slot A: the press asks, and the pad stays where it is.
    f.Drag(area.center(), area.center());
    ZDialog* question = TopDialog(f.editor.root());
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(f.core->GetParameter(f.core->morphParameterIndex(0)), 0.0);
    f.Click("Select slot E");
    EXPECT_EQ(f.core->slots().live(), 4);

    f.Drag(pad.HandlePosition(), area.center());
    EXPECT_NEAR(f.core->GetParameter(f.core->morphParameterIndex(0)), 0.5, 0.02);
    const double u = f.core->GetParameter(f.core->morphParameterIndex(0));
    const double v = f.core->GetParameter(f.core->morphParameterIndex(1));
    const double expected = (1 - v) * ((1 - u) * corners[0] + u * corners[1]) + v * ((1 - u) * corners[2] + u * corners[3]);
    EXPECT_NEAR(f.core->GetParameter(size), expected, 1e-9);
    EXPECT_EQ(f.editor.host().openGestures(), 0);
    // Towards the bottom right corner is towards D.
    f.Drag(pad.HandlePosition(), {area.right(), area.bottom()});
    EXPECT_NEAR(f.core->GetParameter(size), corners[3], 1e-9);
}

TEST(UndoHistory, EachUndoPutsBackTheStateBeforeAndRedoGoesForwardAgain)
{
    EditorFixture f;
    std::vector<std::vector<uint8_t>> states{f.State()};
    const ZPoint knob = f.Find("Size").bounds().center();
    f.Drag(knob, {knob.x, knob.y - 40});
    states.push_back(f.State());
    f.Click("SlotB");
    states.push_back(f.State());
    f.Click("presetnext");
    states.push_back(f.State());
    f.editor.root().clipboard().SetText(ZMLDocumentText(*f.core->CopyLiveSlot(), ZMLLayout::Compact));
    f.Click("SlotA");
    states.push_back(f.State());
    f.Click("SlotPaste");
    states.push_back(f.State());
    ASSERT_EQ(f.editor.view().undoHistory().steps(), states.size() - 1);
    for (size_t i = states.size() - 1; i-- > 0;) {
        f.editor.root().Key({ZKey::Character, "z", kModifierControl});
        EXPECT_EQ(f.State(), states[i]) << "undo to step " << i;
    }
    EXPECT_FALSE(f.editor.view().undoHistory().CanUndo());
    f.editor.Tick();
    for (size_t i = 1; i < states.size(); ++i) {
        f.Click("Redo");
        EXPECT_EQ(f.State(), states[i]) << "redo to step " << i;
    }
    // The toolbar's menu undoes too.
    const ZRect toolbar = f.Find("Toolbar").bounds();
    const ZPoint beside{toolbar.right() - 300, toolbar.center().y};
    f.editor.root().MouseMove({beside});
    f.editor.root().MouseDown({beside, ZMouseButton::Right});
    f.editor.root().MouseUp({beside, ZMouseButton::Right});
    auto* menu = dynamic_cast<ZPopupMenu*>(f.editor.root().overlays().back().get());
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->items().front().text, "Undo");
    menu->items().front().action();
    EXPECT_EQ(f.State(), states[states.size() - 2]);
}

} // namespace
} // namespace halvern
