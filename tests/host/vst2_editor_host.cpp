#include "vst2_editor_host.h"

#include <dlfcn.h>

#include <map>
#include <stdexcept>

namespace editorhost {
namespace {

using EntryFunction = AEffect* (*)(audioMasterCallback);

// The hosts by their effects; the one being made is known before its effect is.
std::map<AEffect*, Vst2EditorHost*>& Hosts()
{
    static std::map<AEffect*, Vst2EditorHost*> hosts;
    return hosts;
}

EntryFunction Entry(const char* path)
{
    static void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        throw std::runtime_error(dlerror());
    return reinterpret_cast<EntryFunction>(dlsym(library, "VSTPluginMain"));
}

} // namespace

Vst2EditorHost::Vst2EditorHost(const char* path, TestDisplay& display) : display_(display)
{
    effect_ = Entry(path)(&Vst2EditorHost::callback);
    if (effect_ == nullptr)
        throw std::runtime_error("VSTPluginMain made no instance");
    Hosts()[effect_] = this;
    dispatch(effOpen);
}

Vst2EditorHost::~Vst2EditorHost()
{
    dispatch(effClose);
    Hosts().erase(effect_);
    if (parent_ != 0)
        display_.Destroy(parent_);
}

VstIntPtr Vst2EditorHost::dispatch(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt)
{
    return effect_->dispatcher(effect_, opcode, index, value, ptr, opt);
}

std::pair<int, int> Vst2EditorHost::editorSize()
{
    ERect* rect = nullptr;
    if (dispatch(effEditGetRect, 0, 0, &rect) == 0 || rect == nullptr)
        return {0, 0};
    return {rect->right - rect->left, rect->bottom - rect->top};
}

bool Vst2EditorHost::open(int x, int y)
{
    const auto [width, height] = editorSize();
    if (parent_ == 0)
        parent_ = display_.CreateParent(x, y, width, height);
    return dispatch(effEditOpen, 0, 0, reinterpret_cast<void*>(parent_)) != 0;
}

Window Vst2EditorHost::editorWindow()
{
    const std::vector<Window> children = parent_ != 0 ? display_.Children(parent_) : std::vector<Window>{};
    return children.empty() ? 0 : children.front();
}

VstIntPtr Vst2EditorHost::callback(AEffect* effect, VstInt32 opcode, VstInt32 index, VstIntPtr value, void*, float opt)
{
    if (opcode == audioMasterVersion)
        return 2400;
    const auto host = Hosts().find(effect);
    return host != Hosts().end() ? host->second->answer(opcode, index, value, opt) : 0;
}

HostCalls Vst2EditorHost::Calls()
{
    std::lock_guard<std::mutex> hold(callsLock_);
    return calls;
}

VstIntPtr Vst2EditorHost::answer(VstInt32 opcode, VstInt32 index, VstIntPtr value, float opt)
{
    std::lock_guard<std::mutex> hold(callsLock_);
    switch (opcode) {
    case audioMasterBeginEdit:
        calls.push_back({HostCall::Kind::Begin, index});
        return 1;
    case audioMasterAutomate:
        calls.push_back({HostCall::Kind::Perform, index, opt});
        return 1;
    case audioMasterEndEdit:
        calls.push_back({HostCall::Kind::End, index});
        return 1;
    case audioMasterSizeWindow:
        calls.push_back({HostCall::Kind::Resize, 0, 0, index, static_cast<int>(value)});
        if (parent_ != 0)
            display_.Resize(parent_, index, static_cast<int>(value));
        return 1;
    default:
        return 0;
    }
}

} // namespace editorhost
