#pragma once

// A root of the editor's size for dialogs, driven by synthetic events: ticks, clicks,
// keys, and the views of the dialog on top found by name.

#include "ui/dialog.h"
#include "ui/theme.h"
#include "ui/ui_root.h"

#include <memory>
#include <stdexcept>
#include <string>

namespace halvern {

struct ZDialogRootFixture {
    ZTheme theme = ZTheme::Default();
    ZUIRoot root;
    double now = 0.0;

    explicit ZDialogRootFixture(double scale = 1.0) : root(1200, 840, scale, theme)
    {
        root.SetContent(std::make_unique<ZView>());
    }
    void Tick()
    {
        root.Tick(now += 1.0 / 60.0);
        root.Paint();
    }
    void ClickAt(ZPoint at, int clicks = 1)
    {
        for (int count = 1; count <= clicks; ++count) {
            root.MouseMove({at});
            root.MouseDown({at, ZMouseButton::Left, kModifierNone, count});
            root.MouseUp({at});
        }
        Tick();
    }
    ZView& Find(const std::string& name)
    {
        ZView* found = TopDialog(root) != nullptr ? TopDialog(root)->FindByName(name) : nullptr;
        if (found == nullptr)
            throw std::runtime_error("no view named " + name + " in the top dialog");
        return *found;
    }
    void Click(const std::string& name) { ClickAt(Find(name).bounds().center()); }
    void Press(ZKey key, const std::string& text = {})
    {
        ZKeyEvent event;
        event.key = key;
        event.text = text;
        root.Key(event);
        Tick();
    }
    void Type(const std::string& text) { Press(ZKey::Character, text); }
};

} // namespace halvern
