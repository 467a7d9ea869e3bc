#pragma once

// The MIDI settings page ("MIDISettingsEditor"): the MIDI controller assignments (a
// continuous controller, "Aftertouch", "Pitch-bend", "Velocity (on & off)" or
// "Velocity (on)" driving one parameter over a range), the note controllers (a note
// or every note driving a parameter in one of six modes) and the preset switch
// controller ("PreviousNextPresetController"). Each list has its own switch, add and
// remove, and the settings of its selected item beside it; "Learn" takes the next
// controller the plug-in receives. Refusals and notices show in the status line.
//
// Edits build the changed list and hand it to the model, which publishes it under the
// processing lock. MIDI learn reads what the audio thread records of the controllers
// it receives, in one atomic word, on every tick.

#include "editor/midi_items.h"
#include "editor/modulator_editor_context.h"
#include "ui/parameter_binding.h"
#include "ui/view.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace halvern {

class ZButton;
class ZLabel;
class ZListView;
template <class Snapshot>
class ZSettingMirror;

std::unique_ptr<ZView> BuildMIDISettingsEditor(ZModulatorEditorContext& context);

class ZMIDISettingsEditor : public ZView {
public:
    explicit ZMIDISettingsEditor(ZModulatorEditorContext& context);
    ~ZMIDISettingsEditor() override;

    // The selected controller and note controller (-1 for none).
    int selectedController() const;
    int selectedNoteController() const;
    void SelectController(int index);
    void SelectNoteController(int index);

    void AddController();
    void RemoveController();
    void AddNoteController();
    void RemoveNoteController();
    // Takes the next controller received for the selected controller or the preset
    // switch; a second call stops learning.
    void Learn(ZMIDIItemKind kind);
    bool learning() const { return learning_.has_value(); }

    // The status line: the last refusal or notice, empty when none.
    const std::string& message() const;

    void Layout() override;
    void Refresh() override;

private:
    struct State;
    struct Learning {
        ZMIDIItemKind kind;
        int index;
        uint32_t count; // the received controllers' count when learning began
    };
    class Section;

    void buildControllers();
    void buildNoteControllers();
    void buildPresetSwitch();
    std::unique_ptr<ZView> control(const std::shared_ptr<ZParameterBinding>& binding, const std::string& name,
                                   bool menu = false);
    void showRows();
    void showDetails();
    void followLearning();
    void stopLearning();
    // Runs an edit; a refusal shows in the status line instead.
    void attempt(const std::function<void()>& edit);

    ZModulatorEditorContext& context_;
    ZMIDIControllers& midi_;
    std::shared_ptr<State> state_;
    std::vector<int32_t> choices_; // the parameters the "Parameter" menus offer, in order
    std::shared_ptr<ZSettingMirror<ZMIDIControllerAssignment>> controllerValues_;
    std::shared_ptr<ZSettingMirror<ZNoteController>> noteValues_;
    std::shared_ptr<ZSettingMirror<ZPresetSwitchController>> presetSwitchValues_;
    std::optional<Learning> learning_;

    Section* controllers_ = nullptr;
    Section* notes_ = nullptr;
    ZView* presetSwitch_ = nullptr;
    ZView* controllerNumber_ = nullptr;
    ZButton* learnController_ = nullptr;
    ZButton* learnPresetSwitch_ = nullptr;
    ZLabel* status_ = nullptr;
};

} // namespace halvern
