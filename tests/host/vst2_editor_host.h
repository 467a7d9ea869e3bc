#pragma once

// A small VST 2.4 host for the editor tests: loads the built plug-in with dlopen, makes
// instances through VSTPluginMain and records what each instance's editor tells the host
// (audioMasterBeginEdit, audioMasterAutomate, audioMasterEndEdit, audioMasterSizeWindow,
// which it grants by resizing the parent window).

#include "editor_host_calls.h"

#include <mutex>
#include "host/vst2/vst2_abi.h"
#include "x11_test_display.h"

namespace editorhost {

class Vst2EditorHost {
public:
    // One instance of the plug-in at path; throws when it cannot be made.
    Vst2EditorHost(const char* path, TestDisplay& display);
    ~Vst2EditorHost();
    Vst2EditorHost(const Vst2EditorHost&) = delete;
    Vst2EditorHost& operator=(const Vst2EditorHost&) = delete;

    AEffect* effect() { return effect_; }
    VstIntPtr dispatch(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0, void* ptr = nullptr, float opt = 0.0f);
    float parameter(int index) { return effect_->getParameter(effect_, index); }

    // effEditGetRect: the editor's width and height, {0, 0} when it answers none.
    std::pair<int, int> editorSize();
    // effEditOpen into a new parent window of the editor's size at (x, y).
    bool open(int x = 0, int y = 0);
    void idle() { dispatch(effEditIdle); }
    void close() { dispatch(effEditClose); }
    // The parent window of the last open, 0 before.
    Window parent() const { return parent_; }
    // The editor's own window inside the parent, 0 when there is none.
    Window editorWindow();

    // Read calls only while nothing else runs in the plug-in; automation that its update
    // thread sends (a state's values after a preset) is safe to read through Calls().
    HostCalls calls;
    HostCalls Calls();

private:
    static VstIntPtr callback(AEffect* effect, VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt);
    VstIntPtr answer(VstInt32 opcode, VstInt32 index, VstIntPtr value, float opt);

    std::mutex callsLock_;
    TestDisplay& display_;
    AEffect* effect_ = nullptr;
    Window parent_ = 0;
};

} // namespace editorhost
