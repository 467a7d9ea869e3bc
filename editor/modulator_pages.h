#pragma once

// The pages the modulator area opens, by what is selected.

#include "editor/modulator_editor_context.h"
#include "ui/view.h"

#include <memory>

namespace halvern {

// The LFO's, the MultiParameter's or the MIDI settings' page; null for none.
std::unique_ptr<ZView> BuildModulatorPage(ZModulatorEditorContext& context, ZModulatorSelection which);

} // namespace halvern
