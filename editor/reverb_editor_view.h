#pragma once

// The reverb editor's view tree: a header with the plug-in's name, the bypass switch and
// the input and output meters; the "Position" panel with the position editor; the
// reverb's panels built from its parameter records; the modulator area at the bottom
// (the "MultiParameters" and "LFOs" containers, or one modulator's editor); and a help
// panel that shows the help of whatever the pointer rests on.

#include "core/plugin_editor.h"
#include "editor/host_parameter_binding.h"
#include "editor/modulator_area.h"
#include "editor/modulator_editor_context.h"
#include "reverb/halvern_audio_effect_plugin.h"
#include "state/quessane_audio_effect_plugin.h"
#include "ui/panel.h"
#include "ui/view.h"

namespace halvern {

class ZMarkupView;

class ZReverbEditorView : public ZView, private ZBindingObserver {
public:
    static constexpr double kTickSeconds = 1.0 / 60.0;

    // The modulator area's pages and menus come from the given functions (the menu of no
    // modulator in particular is the modulators' menu).
    ZReverbEditorView(ZQuessaneAudioEffectPlugin& core, HalvernAudioEffectPlugin& effect, ZEditorHost& host,
                      std::function<std::unique_ptr<ZView>(ZModulatorEditorContext&, ZModulatorSelection)> buildPage,
                      std::function<void(ZModulatorEditorContext&, ZModulatorSelection, ZRect)> openMenu);

    // The pages go first: they hand back the Learn listener through the context.
    ~ZReverbEditorView() override { ClearChildren(); }

    void Layout() override;
    void Refresh() override;
    // Shows a help text in the help panel (empty: the panel's hint).
    void ShowHelp(const std::string& help);
    ZModulatorArea& modulatorArea() { return *area_; }
    ZModulatorEditorContext& modulatorContext() { return context_; }

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    class Header;

    void buildPanels();
    std::unique_ptr<ZView> controlFor(int32_t index, const std::string& label = {});
    ZRect helpArea() const;
    void GestureEnded(int32_t index, double from, double to) override;
    std::optional<std::pair<double, double>> RangeOn(int32_t index) const override;
    bool targetsChanged();

    ZQuessaneAudioEffectPlugin& core_;
    HalvernAudioEffectPlugin& effect_;
    ZEditorHost& host_;
    ZModulatorEditorContext context_;
    ZLearnListener* learn_ = nullptr;
    ZView* header_ = nullptr;
    ZModulatorArea* area_ = nullptr;
    ZMarkupView* help_ = nullptr;
    std::vector<ZPanel*> panels_;
    std::vector<ZModulatorTarget> shownTargets_; // the selected modulator's, as its ranges show
};

} // namespace halvern
