#pragma once

// The reverb editor drawn without any window: for pictures (halvern-render
// --editor-png), layout checks and the repaint benchmark. Its host sets the core's
// values at once and keeps count of the gestures it saw.

#include "core/plugin_editor.h"
#include "editor/modulator_editor_context.h"
#include "ui/theme.h"
#include "ui/ui_root.h"

#include <memory>
#include <string>

namespace halvern {

class ZAudioPlugin;

class ZOffscreenEditorHost : public ZEditorHost {
public:
    explicit ZOffscreenEditorHost(ZAudioPlugin& core) : core_(core) {}
    void BeginEdit(int32_t) override { ++openGestures_; }
    void PerformEdit(int32_t index, double normalized) override;
    void EndEdit(int32_t) override { --openGestures_; }
    bool RequestResize(ZEditorSize) override { return false; }
    // Begins not yet ended (0 when every gesture is balanced).
    int openGestures() const { return openGestures_; }

private:
    ZAudioPlugin& core_;
    int openGestures_ = 0;
};

class ZOffscreenEditor {
public:
    // The editor of a Halvern core at a scale factor; throws ZException when the core has
    // no reverb editor.
    ZOffscreenEditor(ZAudioPlugin& core, double scale);
    ~ZOffscreenEditor();

    ZUIRoot& root() { return *root_; }
    class ZReverbEditorView& view();
    ZOffscreenEditorHost& host() { return host_; }
    // Opens a modulator's page in the modulator area (none: the overview).
    void Open(ZModulatorSelection which);
    // Runs the editor's timer for a number of ticks, repainting what changed.
    void Tick(int ticks = 1);
    // Takes what the plug-in shows now and repaints everything.
    void RenderAll();
    bool WritePNG(const std::string& path);

private:
    ZTheme theme_;
    ZOffscreenEditorHost host_;
    std::unique_ptr<ZUIRoot> root_;
    double now_ = 0.0;
};

} // namespace halvern
