#pragma once

// The page of one MultiParameter ("MultiParameterEditor"): its general settings with its
// presets, the settings of its current mode (its value, default and, by mode, the switch
// time or the banks with their tools), and its targets. Only the current mode's
// settings are shown; the panels close up around them.

#include "editor/modulator_editor_context.h"
#include "editor/target_list_editor.h"
#include "state/preset_owners.h"
#include "ui/grid_layout.h"
#include "ui/panel.h"
#include "ui/view.h"

#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace halvern {

class ZLabel;
class ZListView;
class ZTextField;

class ZMultiParameterEditor : public ZView {
public:
    ZMultiParameterEditor(ZModulatorEditorContext& context, int index);

    // The bank the bank tools act on.
    int selectedBank() const { return selectedBank_; }
    void SelectBank(int bank);
    // The notice or refusal shown under the general settings; empty when none.
    const std::string& message() const { return message_; }

    void Layout() override;
    void Refresh() override;

private:
    ZPanel* buildGeneral();
    std::unique_ptr<ZView> textRow(const std::string& name, const std::string& help,
                                   std::function<std::string()> read, std::function<void(std::string)> write);
    std::unique_ptr<ZView> presetRow();
    std::unique_ptr<ZView> presetTools();
    // The panel of the current mode, made again whenever the mode changes.
    void buildModePanel();
    std::unique_ptr<ZGridLayout> bankTools();
    void showMenuOfPresets(const ZRect& anchor);
    void savePreset();
    void stepPreset(int direction);
    void showMessage(std::string message);
    std::string presetName();
    void refreshTexts();
    void refreshBanks();

    ZModulatorEditorContext& context_;
    int index_;
    ZMultiParameter& multi_;
    ZMultiParameterPresetManager presets_;
    std::mt19937 random_{std::random_device{}()};
    ZMultiParameterMode shownMode_;
    int selectedBank_ = 0;
    std::string message_;

    ZPanel* general_ = nullptr;
    ZGridLayout* generalRows_ = nullptr;
    ZPanel* mode_ = nullptr;
    ZPanel* targetsPanel_ = nullptr;
    ZTargetListEditor* targets_ = nullptr;
    ZLabel* presetName_ = nullptr;
    ZLabel* messageLabel_ = nullptr;
    ZListView* banks_ = nullptr;
    std::vector<std::pair<ZTextField*, std::function<std::string()>>> textFields_;
};

// The factory of the MultiParameter pages: MultiParameter index 0..3.
std::unique_ptr<ZView> BuildMultiParameterEditor(ZModulatorEditorContext& context, int index);

} // namespace halvern
