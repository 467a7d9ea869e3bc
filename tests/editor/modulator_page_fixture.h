#pragma once

// A modulator page shown off-screen in a root of the page's size, with the editor's
// context around it: pages it opens replace it, Learn listeners are kept, and the
// pointer and keyboard are driven by synthetic events.

#include "editor/modulator_editor_context.h"
#include "editor/offscreen_editor.h"
#include "reverb/halvern_audio_effect_plugin.h"
#include "state/quessane_audio_effect_plugin.h"
#include "ui/controls/popup_menu.h"
#include "ui/theme.h"
#include "ui/ui_root.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace halvern {

struct ZModulatorPageFixture {
    static constexpr double kWidth = 1180.0;
    static constexpr double kHeight = 280.0;

    std::unique_ptr<ZQuessaneAudioEffectPlugin> core =
        std::make_unique<ZQuessaneAudioEffectPlugin>(std::make_unique<HalvernAudioEffectPlugin>());
    HalvernAudioEffectPlugin& effect = dynamic_cast<HalvernAudioEffectPlugin&>(core->effect());
    ZOffscreenEditorHost host{*core};
    ZTheme theme = ZTheme::Default();
    std::unique_ptr<ZUIRoot> root;
    ZLearnListener* listener = nullptr;
    std::vector<ZModulatorSelection> opened;
    // Builds the page a selection opens (none: the root keeps what it shows).
    std::function<std::unique_ptr<ZView>(ZModulatorSelection)> pages;
    ZModulatorEditorContext context{*core, effect, host,
                                    [this](ZModulatorSelection which) {
                                        opened.push_back(which);
                                        if (auto page = pages ? pages(which) : nullptr)
                                            root->SetContent(std::move(page));
                                    },
                                    [this](ZLearnListener* learner) { listener = learner; }};
    double now = 0.0;

    void Show(std::unique_ptr<ZView> page, double scale = 1.0)
    {
        root = std::make_unique<ZUIRoot>(kWidth, kHeight, scale, theme);
        root->SetContent(std::move(page));
        Tick();
    }
    // One timer tick and a repaint of what changed.
    void Tick()
    {
        now += 1.0 / 60.0;
        root->Tick(now);
        root->Paint();
    }
    ZView& Find(const std::string& name, ZView* within = nullptr)
    {
        ZView* found = (within != nullptr ? within : root->content())->FindByName(name);
        if (found == nullptr)
            throw std::runtime_error("no view named " + name);
        return *found;
    }
    void ClickAt(ZPoint at, ZMouseButton button = ZMouseButton::Left)
    {
        root->MouseMove({at});
        root->MouseDown({at, button});
        root->MouseUp({at, button});
        Tick();
    }
    void Click(ZView& view) { ClickAt(view.bounds().center()); }
    // Chooses the item with the given text in the topmost menu, as a click would.
    void Choose(const std::string& text)
    {
        auto* menu = root->overlays().empty() ? nullptr : dynamic_cast<ZPopupMenu*>(root->overlays().back().get());
        ASSERT_NE(menu, nullptr) << "no menu to choose \"" << text << "\" from";
        for (int i = 0; i < static_cast<int>(menu->items().size()); ++i)
            if (menu->items()[static_cast<size_t>(i)].text == text)
                return ClickAt(menu->ItemRect(i).center());
        ADD_FAILURE() << "the menu has no \"" << text << "\"";
    }
    void Press(ZKey key, const std::string& text = {})
    {
        ZKeyEvent event;
        event.key = key;
        event.text = text;
        root->Key(event);
    }
    // Replaces a text field's text as typed, ended by Enter.
    void Type(ZView& field, const std::string& text)
    {
        Click(field);
        Press(ZKey::End);
        for (size_t i = 0; i < 64; ++i)
            Press(ZKey::Backspace);
        Press(ZKey::Character, text);
        Press(ZKey::Enter);
        Tick();
    }
    int IndexOf(const std::string& name) const
    {
        for (int index = 0; index < core->GetParameterCount(); ++index)
            if (core->GetParameterID(index) == name || core->GetParameterName(index) == name)
                return index;
        throw std::runtime_error("no parameter " + name);
    }
};

} // namespace halvern
