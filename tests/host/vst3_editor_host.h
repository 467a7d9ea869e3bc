#pragma once

// A small VST 3 host for the editor tests: one instance of the bundle's module (through
// the VST 3 test host), its "editor" view in a parent window, an IPlugFrame that offers
// a Linux run loop (or not) whose file descriptor handlers and timers the test pumps,
// and a component handler recording the gestures.

#include "editor_host_calls.h"
#include "vst3_test_host.h"
#include "x11_test_display.h"

#include <pluginterfaces/gui/iplugview.h>

#include <utility>
#include <vector>

namespace editorhost {

// Records beginEdit, performEdit and endEdit.
class ComponentHandler : public Steinberg::Vst::IComponentHandler {
public:
    explicit ComponentHandler(HostCalls& calls) : calls_(calls) {}
    Steinberg::tresult PLUGIN_API beginEdit(Steinberg::Vst::ParamID id) override;
    Steinberg::tresult PLUGIN_API performEdit(Steinberg::Vst::ParamID id, Steinberg::Vst::ParamValue value) override;
    Steinberg::tresult PLUGIN_API endEdit(Steinberg::Vst::ParamID id) override;
    Steinberg::tresult PLUGIN_API restartComponent(Steinberg::int32) override { return Steinberg::kResultOk; }
    Steinberg::tresult PLUGIN_API queryInterface(const Steinberg::TUID iid, void** object) override;
    Steinberg::uint32 PLUGIN_API addRef() override { return 1; }
    Steinberg::uint32 PLUGIN_API release() override { return 1; }

private:
    HostCalls& calls_;
};

// The view's frame: grants every resize (the parent window follows, then onSize) and,
// when it has one, offers its run loop. Handlers are held with a reference, as hosts do.
class RunLoopFrame : public Steinberg::IPlugFrame, public Steinberg::Linux::IRunLoop {
public:
    RunLoopFrame(HostCalls& calls, TestDisplay& display, bool offersRunLoop)
        : calls_(calls), display_(display), offersRunLoop_(offersRunLoop)
    {
    }
    ~RunLoopFrame();

    void setParent(Window parent) { parent_ = parent; }
    // Calls every handler whose descriptor is readable, and every timer.
    void pump();
    const std::vector<std::pair<Steinberg::Linux::IEventHandler*, int>>& eventHandlers() const { return eventHandlers_; }
    const std::vector<std::pair<Steinberg::Linux::ITimerHandler*, Steinberg::Linux::TimerInterval>>& timers() const
    {
        return timers_;
    }

    Steinberg::tresult PLUGIN_API resizeView(Steinberg::IPlugView* view, Steinberg::ViewRect* newSize) override;
    Steinberg::tresult PLUGIN_API registerEventHandler(Steinberg::Linux::IEventHandler* handler, int fd) override;
    Steinberg::tresult PLUGIN_API unregisterEventHandler(Steinberg::Linux::IEventHandler* handler) override;
    Steinberg::tresult PLUGIN_API registerTimer(Steinberg::Linux::ITimerHandler* handler,
                                                Steinberg::Linux::TimerInterval milliseconds) override;
    Steinberg::tresult PLUGIN_API unregisterTimer(Steinberg::Linux::ITimerHandler* handler) override;
    Steinberg::tresult PLUGIN_API queryInterface(const Steinberg::TUID iid, void** object) override;
    Steinberg::uint32 PLUGIN_API addRef() override { return 1; }
    Steinberg::uint32 PLUGIN_API release() override { return 1; }

private:
    HostCalls& calls_;
    TestDisplay& display_;
    bool offersRunLoop_;
    Window parent_ = 0;
    std::vector<std::pair<Steinberg::Linux::IEventHandler*, int>> eventHandlers_;
    std::vector<std::pair<Steinberg::Linux::ITimerHandler*, Steinberg::Linux::TimerInterval>> timers_;
};

class Vst3EditorHost {
public:
    Vst3EditorHost(TestDisplay& display, bool offersRunLoop = true);
    ~Vst3EditorHost();
    Vst3EditorHost(const Vst3EditorHost&) = delete;
    Vst3EditorHost& operator=(const Vst3EditorHost&) = delete;

    vst3host::Instance& instance() { return instance_; }
    Steinberg::IPlugView* view() { return view_; }
    RunLoopFrame& frame() { return frame_; }
    // attached() in a new parent window of the view's size.
    Steinberg::tresult attach();
    void remove();
    void pump() { frame_.pump(); }
    Window parent() const { return parent_; }
    // The editor's own window inside the parent, 0 when there is none.
    Window editorWindow();

    HostCalls calls;

private:
    TestDisplay& display_;
    vst3host::Instance instance_;
    ComponentHandler handler_;
    RunLoopFrame frame_;
    Steinberg::IPlugView* view_ = nullptr;
    Window parent_ = 0;
    bool attached_ = false;
};

} // namespace editorhost
