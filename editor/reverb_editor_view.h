#pragma once

// The reverb editor's view tree: a header with the plug-in's name, the current preset,
// the bypass switch and the input and output meters; a toolbar with the A-H slots, the
// buttons of the bottom area's pages and undo/redo; the "Position" panel with the position editor; the
// reverb's panels built from its parameter records; the modulator area at the bottom
// (the "MultiParameters" and "LFOs" containers, or one modulator's editor, the morph
// pad, the equalizer or the decay display); and a help panel that shows the help of
// whatever the pointer rests on.
//
// Undo: once the user has finished a change of any kind, the whole state is taken as an
// undo step (see ZUndoHistory) a few ticks later, so that changes the plug-in carries out
// on its update thread are in it.

#include "core/plugin_editor.h"
#include "editor/host_parameter_binding.h"
#include "editor/modulator_area.h"
#include "editor/modulator_editor_context.h"
#include "editor/undo_history.h"
#include "reverb/halvern_audio_effect_plugin.h"
#include "state/preset_owners.h"
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
                      std::function<std::unique_ptr<ZView>(ZModulatorEditorContext&, ZModulatorSelection)> buildModulatorPage,
                      std::function<void(ZModulatorEditorContext&, ZModulatorSelection, ZRect)> openMenu);

    // The pages go first: they hand back the Learn listener through the context.
    ~ZReverbEditorView() override { ClearChildren(); }

    void Layout() override;
    void Refresh() override;
    // Shows a help text in the help panel (empty: the panel's hint).
    void ShowHelp(const std::string& help);
    // Shows a notice or an error in a message box.
    void ShowMessage(const std::string& message);
    // The user finished a change: it becomes an undo step within a few ticks.
    void InteractionEnded();
    // The editor's own keys (Ctrl+Z, Ctrl+Shift+Z); true when taken.
    bool Shortcut(const ZKeyEvent& event);
    void Undo();
    void Redo();
    ZUndoHistory& undoHistory() { return undo_; }
    // Opens the presets of the whole plug-in, or of a modulator.
    void OpenPresetWindow();
    void OpenModulatorPresets(ZModulatorSelection which);
    // Opens a page of the bottom area, or closes it when it is the one open.
    void TogglePage(ZModulatorSelection::Kind kind);
    ZModulatorArea& modulatorArea() { return *area_; }
    ZModulatorEditorContext& modulatorContext() { return context_; }

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    class Header;

    void buildPanels();
    std::unique_ptr<ZView> buildPage(ZModulatorSelection which);
    void recordPendingStep();
    void presetLoaded();
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
    ZView* toolbar_ = nullptr;
    class ZSlotBar* slots_ = nullptr;
    ZUndoHistory undo_;
    std::unique_ptr<ZLFOPresetManager> lfoPresets_;
    std::unique_ptr<ZMultiParameterPresetManager> multiParameterPresets_;
    int ticksToRecord_ = 0; // > 0: an undo step is due when it reaches 0
    ZModulatorArea* area_ = nullptr;
    ZMarkupView* help_ = nullptr;
    std::vector<ZPanel*> panels_;
    std::vector<ZModulatorTarget> shownTargets_; // the selected modulator's, as its ranges show
};

} // namespace halvern
