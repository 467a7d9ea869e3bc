#pragma once

// ZShapeEditor: the editor of an LFO's signal-generator shape ("Modulator shape"). Its
// family, phase offset and smoothing; the graph of one cycle with the steps or harmonics
// to draw and the LFO's live position; the number of steps or harmonics; and the shape
// presets of the signal generator's preset manager: previous, next, load and save as,
// with the current preset's name or the last message in the status line; and shapes
// taken from sound files. Every change goes to the LFO through its setShape, under the
// processing lock.

#include "analysis/shape_from_sound.h"
#include "editor/modulator_editor_context.h"
#include "modulation/signal_generator.h"
#include "ui/view.h"

#include <memory>
#include <string>

namespace halvern {

class ZButton;
class ZLabel;
class ZShapeGraph;
class ZShapePresets;
template <class Snapshot>
class ZSettingMirror;

class ZShapeEditor : public ZView {
public:
    ZShapeEditor(ZModulatorEditorContext& context, int lfoIndex);
    ~ZShapeEditor() override;

    ZShapeGraph& graph() const { return *graph_; }
    // Adds or removes a step or a harmonic (the family's count, within its limits).
    void ChangeCount(int change);
    // The preset commands, as their buttons give them.
    void StepPreset(int direction);
    void OpenPresetWindow();
    // The menu of "From sound…": one cycle's waveform or the envelope.
    void OpenSoundMenu();
    void OpenSaveAs();
    // Takes the shape from a sound file: one cycle of its waveform or its envelope, as
    // smoothly joined steps. Returns why it could not, or empty; a failure changes nothing.
    std::string LoadShapeFromSound(const std::string& path, ZShapeSource source);
    // The same through a file chooser for sound files; an error is shown in a message.
    void ChooseShapeFromSound(ZShapeSource source);

    void Layout() override;
    void Refresh() override;

private:
    void showCount();

    ZLFO& lfo_;
    ZLock& lock_;
    std::shared_ptr<ZShapePresets> presets_;
    ZView* family_;
    ZButton* fewer_;
    ZLabel* count_;
    ZButton* more_;
    ZShapeGraph* graph_;
    ZView* phaseOffset_;
    ZView* smoothing_;
    ZButton* previous_;
    ZLabel* status_;
    ZButton* next_;
    ZButton* fromSound_;
    ZButton* load_;
    ZButton* saveAs_;
    std::shared_ptr<ZSettingMirror<ZSignalGenerator>> values_; // family, phase offset, smoothing
};

} // namespace halvern
