#include "vst3_editor_host.h"

#include <poll.h>

#include <algorithm>
#include <stdexcept>

namespace editorhost {

using namespace Steinberg;

namespace {

bool Is(const TUID iid, const TUID other) { return FUnknownPrivate::iidEqual(iid, other); }

template <class Entries, class Handler>
void Forget(Entries& entries, Handler* handler)
{
    for (auto it = entries.begin(); it != entries.end();) {
        if (it->first == handler) {
            it->first->release();
            it = entries.erase(it);
        } else {
            ++it;
        }
    }
}

} // namespace

tresult PLUGIN_API ComponentHandler::beginEdit(Vst::ParamID id)
{
    calls_.push_back({HostCall::Kind::Begin, static_cast<int>(id)});
    return kResultOk;
}

tresult PLUGIN_API ComponentHandler::performEdit(Vst::ParamID id, Vst::ParamValue value)
{
    calls_.push_back({HostCall::Kind::Perform, static_cast<int>(id), value});
    return kResultOk;
}

tresult PLUGIN_API ComponentHandler::endEdit(Vst::ParamID id)
{
    calls_.push_back({HostCall::Kind::End, static_cast<int>(id)});
    return kResultOk;
}

tresult PLUGIN_API ComponentHandler::queryInterface(const TUID iid, void** object)
{
    if (Is(iid, Vst::IComponentHandler::iid) || Is(iid, FUnknown::iid)) {
        *object = this;
        return kResultOk;
    }
    *object = nullptr;
    return kNoInterface;
}

RunLoopFrame::~RunLoopFrame()
{
    for (auto& [handler, fd] : eventHandlers_)
        handler->release();
    for (auto& [handler, interval] : timers_)
        handler->release();
}

void RunLoopFrame::pump()
{
    const auto handlers = eventHandlers_; // a handler may unregister itself
    for (auto& [handler, fd] : handlers) {
        pollfd readable{fd, POLLIN, 0};
        if (poll(&readable, 1, 0) > 0)
            handler->onFDIsSet(fd);
    }
    const auto timers = timers_;
    for (auto& [handler, interval] : timers)
        handler->onTimer();
}

tresult PLUGIN_API RunLoopFrame::resizeView(IPlugView* view, ViewRect* newSize)
{
    calls_.push_back({HostCall::Kind::Resize, 0, 0, newSize->getWidth(), newSize->getHeight()});
    if (parent_ != 0)
        display_.Resize(parent_, newSize->getWidth(), newSize->getHeight());
    return view->onSize(newSize);
}

tresult PLUGIN_API RunLoopFrame::registerEventHandler(Linux::IEventHandler* handler, int fd)
{
    handler->addRef();
    eventHandlers_.emplace_back(handler, fd);
    return kResultOk;
}

tresult PLUGIN_API RunLoopFrame::unregisterEventHandler(Linux::IEventHandler* handler)
{
    Forget(eventHandlers_, handler);
    return kResultOk;
}

tresult PLUGIN_API RunLoopFrame::registerTimer(Linux::ITimerHandler* handler, Linux::TimerInterval milliseconds)
{
    handler->addRef();
    timers_.emplace_back(handler, milliseconds);
    return kResultOk;
}

tresult PLUGIN_API RunLoopFrame::unregisterTimer(Linux::ITimerHandler* handler)
{
    Forget(timers_, handler);
    return kResultOk;
}

tresult PLUGIN_API RunLoopFrame::queryInterface(const TUID iid, void** object)
{
    if (Is(iid, IPlugFrame::iid) || Is(iid, FUnknown::iid)) {
        *object = static_cast<IPlugFrame*>(this);
        return kResultOk;
    }
    if (offersRunLoop_ && Is(iid, Linux::IRunLoop::iid)) {
        *object = static_cast<Linux::IRunLoop*>(this);
        return kResultOk;
    }
    *object = nullptr;
    return kNoInterface;
}

Vst3EditorHost::Vst3EditorHost(TestDisplay& display, bool offersRunLoop)
    : display_(display), instance_(vst3host::Module::Load(HALVERN_VST3_MODULE_PATH).getFactory()), handler_(calls),
      frame_(calls, display, offersRunLoop)
{
    instance_.controller()->setComponentHandler(&handler_);
    view_ = instance_.controller()->createView(Vst::ViewType::kEditor);
    if (view_ == nullptr)
        throw std::runtime_error("the controller made no editor view");
    view_->setFrame(&frame_);
}

Vst3EditorHost::~Vst3EditorHost()
{
    remove();
    view_->setFrame(nullptr);
    view_->release();
    instance_.controller()->setComponentHandler(nullptr);
    if (parent_ != 0)
        display_.Destroy(parent_);
}

tresult Vst3EditorHost::attach()
{
    ViewRect size;
    view_->getSize(&size);
    if (parent_ == 0)
        parent_ = display_.CreateParent(0, 0, size.getWidth(), size.getHeight());
    frame_.setParent(parent_);
    const tresult result = view_->attached(reinterpret_cast<void*>(parent_), kPlatformTypeX11EmbedWindowID);
    attached_ = result == kResultOk;
    return result;
}

void Vst3EditorHost::remove()
{
    if (attached_)
        view_->removed();
    attached_ = false;
}

Window Vst3EditorHost::editorWindow()
{
    const std::vector<Window> children = parent_ != 0 ? display_.Children(parent_) : std::vector<Window>{};
    return children.empty() ? 0 : children.front();
}

} // namespace editorhost
