#pragma once

// The row under the editor's header: the A-H slots with copy and paste, the buttons that open the bottom area's pages (the morph pad, the equalizer,
// the decay display, the MIDI settings) and the modulators' menu, and undo and redo,
// which a right-click on the toolbar also offers as a menu.

#include "editor/modulator_editor_context.h"
#include "ui/view.h"

#include <functional>
#include <memory>
#include <vector>

namespace halvern {

class ZButton;

struct ZToolbarActions {
    // Opens a page of the bottom area, or closes it when it is open.
    std::function<void(ZModulatorSelection::Kind)> togglePage;
    std::function<ZModulatorSelection::Kind()> openPage;
    std::function<void(ZRect anchor)> openModulatorsMenu;
    std::function<void()> undo;
    std::function<void()> redo;
    std::function<bool()> canUndo;
    std::function<bool()> canRedo;
};

class ZEditorToolbar : public ZView {
public:
    ZEditorToolbar(std::unique_ptr<ZView> slots, ZToolbarActions actions);

    void Layout() override;
    void Refresh() override;
    bool AcceptsMouse() const override { return true; }
    bool OnMouseDown(const ZMouseEvent& event) override;

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    struct PageButton {
        ZModulatorSelection::Kind kind;
        ZButton* button;
    };
    ZButton* addButton(const std::string& text, const std::string& name, const std::string& help,
                       std::function<void()> onClick);

    ZToolbarActions actions_;
    ZView* slots_ = nullptr;
    std::vector<PageButton> pages_;
    ZButton* modulators_ = nullptr;
    ZButton* undo_ = nullptr;
    ZButton* redo_ = nullptr;
};

} // namespace halvern
