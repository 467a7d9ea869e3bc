#include "editor/modulator_pages.h"

#include "editor/lfo_editor.h"
#include "editor/midi_settings_editor.h"
#include "editor/multi_parameter_editor.h"

namespace halvern {

std::unique_ptr<ZView> BuildModulatorPage(ZModulatorEditorContext& context, ZModulatorSelection which)
{
    switch (which.kind) {
    case ZModulatorSelection::Kind::LFO:
        return BuildLFOEditor(context, which.index);
    case ZModulatorSelection::Kind::MultiParameter:
        return BuildMultiParameterEditor(context, which.index);
    case ZModulatorSelection::Kind::MIDI:
        return BuildMIDISettingsEditor(context);
    default:
        break;
    }
    return nullptr;
}

} // namespace halvern
