#pragma once

// ZPresetWindow: the preset manager's window for presets of any kind, a large modal
// dialog. On the left the tree of presets: the read-only factory presets and the user's
// folders and presets, with the current preset highlighted; above it the current
// preset's name between the arrows that step to the previous and next preset; on the
// right the commands: load, replace, save the current state as a new preset, new
// folder, rename, delete, export and import of preset files, compress all and mark for
// exchange. Every change to the user's presets is written at once and safely; what went
// wrong shows as a message, and the last result in the line at the bottom.

#include "editor/preset_source.h"
#include "editor/preset_tree.h"
#include "ui/controls/button.h"
#include "ui/controls/label.h"
#include "ui/dialog.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace halvern {

class ZPresetWindow : public ZDialog {
public:
    static constexpr ZPoint kSize{760.0, 560.0};

    ZPresetWindow(std::unique_ptr<ZPresetSource> source, std::string title);

    // Called after the window loaded a preset (from the list or with the arrows).
    void SetOnLoaded(std::function<void()> loaded) { loaded_ = std::move(loaded); }
    ZPresetSource& source() const { return *source_; }
    ZPresetTree& tree() const { return *tree_; }
    // The line that tells the last command's result.
    std::string status() const { return status_->Text(); }

    // Builds the tree again when the presets or the current one changed elsewhere.
    void Refresh() override;
    // Up and Down move the selection, Left and Right close and open a folder, Enter
    // loads a preset or opens a folder, Delete deletes (after asking), Escape closes the
    // window.
    bool OnKey(const ZKeyEvent& event) override;

protected:
    void LayoutBody(const ZRect& body) override;

private:
    struct Command {
        const char* label;
        const char* help;
        void (ZPresetWindow::*run)();
        bool (ZPresetWindow::*enabled)() const;
        bool groupStart; // a gap above it
    };
    static const std::vector<Command>& commands();

    // ---- the tree ----
    void rebuild();
    void addNodes(std::vector<ZPresetNode>& nodes, const ZMLElement& folder, const ZPresetNode& parent,
                  const ZMLElement* current) const;
    bool reveal(const ZMLElement& folder, const std::string& key, const ZMLElement* target);
    void toggle(int row);
    void activate(int row);
    void updateControls();

    // ---- what the commands act on ----
    const ZPresetNode* selected() const { return tree_->selectedNode(); }
    bool presetSelected() const;
    bool userPresetSelected() const;
    bool userItemSelected() const;
    bool always() const { return true; }
    // The user's folder that new presets and folders go into, by its path and key.
    std::vector<int> targetFolder(std::string& key) const;

    // ---- commands ----
    void load();
    void replace();
    void saveNew();
    void newFolder();
    void rename();
    void remove();
    void exportPreset();
    void importPreset();
    void compressAll();
    void markForExchange();
    void step(int direction);

    // Runs a command; what it throws shows as a message.
    void run(const std::function<void()>& command);
    // Writes a change to the user's collection and shows the tree as it is now.
    void save(const ZPresetCollection::Change& change);
    // Asks for a name and runs named with it once it is not blank.
    void askName(const std::string& title, const std::string& prompt, const std::string& suggested,
                 std::function<void(const std::string&)> named);
    void setStatus(const std::string& text) { status_->SetText(text); }

    std::unique_ptr<ZPresetSource> source_;
    std::function<void()> loaded_;
    std::set<std::string> expanded_;
    std::string exchangeFolder_; // where files were last exported to or imported from
    const ZMLElement* shownRoot_ = nullptr;
    int32_t shownCurrent_ = -1;
    ZButton* previous_;
    ZLabel* current_;
    ZButton* next_;
    ZPresetTree* tree_;
    std::vector<ZButton*> buttons_; // in the order of commands()
    ZLabel* status_;
};

// Opens the preset window of a manager over everything the root shows; loaded runs
// after each preset the window loads.
template <class Manager>
ZPresetWindow* ShowPresetWindow(ZUIRoot& root, Manager& manager, std::string title, std::function<void()> loaded = {})
{
    auto window = std::make_unique<ZPresetWindow>(std::make_unique<ZPresetSourceT<Manager>>(manager), std::move(title));
    window->SetOnLoaded(std::move(loaded));
    return ZDialog::Show(root, std::move(window));
}

} // namespace halvern
