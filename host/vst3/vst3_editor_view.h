#pragma once

// ZVST3EditorView: a plug-in core's editor as a VST 3 view, for hosts that embed it in an
// X11 window ("X11EmbedWindowID"). The host's IPlugFrame must offer a run loop
// (Linux::IRunLoop): while attached, the view has an event handler on the editor's
// display connection and a timer every kTimerInterval, both of which run the editor's
// Idle; both are unregistered before the window goes. A frame without a run loop gets no
// editor (attached answers kResultFalse).
//
// The view is the editor's host: gestures go through the edit controller (the core takes
// each value at once, the host hears of it through the component handler) and size
// requests through IPlugFrame::resizeView. The view keeps the controller, and with it the
// core, alive while it exists.

#include "core/audio_plugin.h"
#include "core/plugin_editor.h"

#include <public.sdk/source/common/pluginview.h>
#include <public.sdk/source/vst/vsteditcontroller.h>
#include <pluginterfaces/gui/iplugviewcontentscalesupport.h>

#include <memory>

namespace halvern {

class ZVST3EditorView : public Steinberg::CPluginView,
                        public Steinberg::IPlugViewContentScaleSupport,
                        public Steinberg::Linux::IEventHandler,
                        public Steinberg::Linux::ITimerHandler,
                        public ZEditorHost {
public:
    static constexpr Steinberg::Linux::TimerInterval kTimerInterval = 16; // milliseconds

    // The view of the core's editor, or null when the core builds none. The caller owns
    // the one reference it starts with.
    static ZVST3EditorView* Create(Steinberg::Vst::EditController& controller, ZAudioPlugin& core);
    ~ZVST3EditorView() override;

    // ---- IPlugView ----
    Steinberg::tresult PLUGIN_API isPlatformTypeSupported(Steinberg::FIDString type) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API attached(void* parent, Steinberg::FIDString type) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API removed() SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API getSize(Steinberg::ViewRect* size) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API onSize(Steinberg::ViewRect* newSize) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API canResize() SMTG_OVERRIDE { return Steinberg::kResultTrue; }
    Steinberg::tresult PLUGIN_API checkSizeConstraint(Steinberg::ViewRect* rect) SMTG_OVERRIDE;

    // ---- IPlugViewContentScaleSupport ----
    Steinberg::tresult PLUGIN_API setContentScaleFactor(ScaleFactor factor) SMTG_OVERRIDE;

    // ---- the run loop's handlers ----
    void PLUGIN_API onFDIsSet(Steinberg::Linux::FileDescriptor fd) SMTG_OVERRIDE;
    void PLUGIN_API onTimer() SMTG_OVERRIDE;

    // ---- the editor's calls ----
    void BeginEdit(int32_t index) override;
    void PerformEdit(int32_t index, double normalized) override;
    void EndEdit(int32_t index) override;
    bool RequestResize(ZEditorSize size) override;

    OBJ_METHODS(ZVST3EditorView, Steinberg::CPluginView)
    DEFINE_INTERFACES
        DEF_INTERFACE(Steinberg::IPlugViewContentScaleSupport)
        DEF_INTERFACE(Steinberg::Linux::IEventHandler)
        DEF_INTERFACE(Steinberg::Linux::ITimerHandler)
    END_DEFINE_INTERFACES(Steinberg::CPluginView)
    REFCOUNT_METHODS(Steinberg::CPluginView)

private:
    explicit ZVST3EditorView(Steinberg::Vst::EditController& controller);
    // Leaves the run loop, then closes the editor.
    void detach();
    void idle();

    Steinberg::Vst::EditController& controller_;
    std::unique_ptr<ZPluginEditor> editor_;
    Steinberg::IPtr<Steinberg::Linux::IRunLoop> runLoop_;
};

} // namespace halvern
