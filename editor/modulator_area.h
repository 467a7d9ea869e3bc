#pragma once

// The modulator area at the bottom of the editor: the overview, with the
// "MultiParameters" and "LFOs" containers and one strip per modulator (its name, state
// and live value; clicking the name opens its editor), or the page of the one modulator
// (or the MIDI settings) that is selected, under a title bar with "Back" and the
// modulator's menu. While a modulator is selected, its targets' ranges show on their
// controls in the main editor.

#include "editor/modulator_editor_context.h"
#include "ui/controls/button.h"
#include "ui/panel.h"
#include "ui/view.h"

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace halvern {

class ZModulatorArea : public ZView {
public:
    using PageBuilder = std::function<std::unique_ptr<ZView>(ZModulatorSelection)>;
    using MenuOpener = std::function<void(ZModulatorSelection, ZRect anchor)>;
    using PresetsOpener = std::function<void(ZModulatorSelection)>;
    static constexpr double kTitleHeight = 30.0;

    // control builds a control for a host parameter (with a label, when given).
    // openPresets shows the preset window of the modulator whose page is open.
    ZModulatorArea(ZModulatorEditorContext& context, PageBuilder buildPage, MenuOpener openMenu,
                   PresetsOpener openPresets,
                   std::function<std::unique_ptr<ZView>(int32_t index, const std::string& label)> control);

    void Select(ZModulatorSelection selection);
    const ZModulatorSelection& selection() const { return selection_; }
    // The range [low, high] (normalised) the selected modulator sweeps on a parameter.
    std::optional<std::pair<double, double>> RangeOn(int32_t index) const;

    void Layout() override;
    void Refresh() override;

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    std::string titleOf(ZModulatorSelection selection) const;
    const ZModulatorTargetList* selectedTargets() const;
    void buildOverview(const std::function<std::unique_ptr<ZView>(int32_t, const std::string&)>& control);

    ZModulatorEditorContext& context_;
    PageBuilder buildPage_;
    MenuOpener openMenu_;
    PresetsOpener openPresets_;
    ZModulatorSelection selection_;
    ZView* overview_ = nullptr;
    ZPanel* multiParameters_ = nullptr;
    ZPanel* lfos_ = nullptr;
    ZView* page_ = nullptr;
    ZButton* back_ = nullptr;
    ZButton* menu_ = nullptr;
    ZButton* presets_ = nullptr;
    std::string title_;
};

} // namespace halvern
