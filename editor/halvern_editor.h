#pragma once

// The reverb's editor: the parameters' panels, the position editor, meters, bypass and
// the places of the modulators' editors, in a window the host gives.

#include "core/plugin_editor.h"
#include "ui/view.h"

#include <memory>

namespace halvern {

class ZAudioPlugin;
class ZUIRoot;

// The editor's natural size in logical units (scale 1).
inline constexpr double kHalvernEditorWidth = 1200.0;
inline constexpr double kHalvernEditorHeight = 840.0;

// The editor of a Halvern core, as the core's editor factory.
std::unique_ptr<ZPluginEditor> CreateHalvernEditor(ZAudioPlugin& core, ZEditorHost& host);

// The editor's view tree for a core, without any window (off-screen pictures, tests).
std::unique_ptr<ZView> BuildHalvernEditorView(ZAudioPlugin& core, ZEditorHost& host, ZUIRoot& root);

} // namespace halvern
