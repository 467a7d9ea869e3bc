#pragma once

// The right-click menu of a modulator (its strip, its button, its page's title) and the
// menu of all modulators. A modulator is copied to the clipboard as its stored element,
// written as markup under its kind's type tag, so that pasting it into any instance
// gives the same modulator; text that is not a modulator of that kind pastes nothing.

#include "editor/modulator_editor_context.h"
#include "ui/controls/popup_menu.h"
#include "ui/geometry.h"

#include <string>
#include <string_view>
#include <vector>

namespace halvern {

class ZUIRoot;

inline constexpr std::string_view kLFOClipboardTag = "QuessaneModulator";
inline constexpr std::string_view kMultiParameterClipboardTag = "QuessaneMultiParameter";

// The clipboard text of an LFO or a MultiParameter.
std::string CopyModulator(ZQuessaneAudioEffectPlugin& core, ZModulatorSelection which);
// Reads copied text into an LFO or a MultiParameter; false, changing nothing, when the
// text is not a modulator of that kind.
bool PasteModulator(ZQuessaneAudioEffectPlugin& core, ZModulatorSelection which, const std::string& text);
// "Reorder": the two MultiParameters trade their whole states, so the one at `from` now
// stands at `to`.
void SwapMultiParameters(ZQuessaneAudioEffectPlugin& core, int from, int to);
// "Learn" and "Clear & Learn" of a modulator: its page opens when it is not shown, and
// its target list learns.
void LearnTargets(ZModulatorEditorContext& context, ZUIRoot& root, ZModulatorSelection which, bool clearFirst);

// The menus' items, in the order they are shown; anchor is where their own menus open
// ("Presets" lists the modulators there).
std::vector<ZMenuItem> ModulatorMenuItems(ZModulatorEditorContext& context, ZUIRoot& root, ZModulatorSelection which,
                                          ZRect anchor);
std::vector<ZMenuItem> ModulatorsMenuItems(ZModulatorEditorContext& context, ZUIRoot& root, ZRect anchor);

void ShowModulatorMenu(ZModulatorEditorContext& context, ZUIRoot& root, ZModulatorSelection which, ZRect anchor);
void ShowModulatorsMenu(ZModulatorEditorContext& context, ZUIRoot& root, ZRect anchor);

} // namespace halvern
