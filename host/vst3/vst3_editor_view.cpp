#include "host/vst3/vst3_editor_view.h"

#include "core/exception_frame.h"

#include <cstdint>
#include <cstring>

namespace halvern {

using namespace Steinberg;

ZVST3EditorView* ZVST3EditorView::Create(Vst::EditController& controller, ZAudioPlugin& core)
{
    auto* view = new ZVST3EditorView(controller);
    view->editor_ = core.CreateEditor(*view);
    if (!view->editor_) {
        view->release();
        return nullptr;
    }
    return view;
}

ZVST3EditorView::ZVST3EditorView(Vst::EditController& controller) : controller_(controller)
{
    controller_.addRef();
}

ZVST3EditorView::~ZVST3EditorView()
{
    GuardedVoid("ZVST3EditorView::~ZVST3EditorView", [&] {
        detach();
        editor_.reset();
    });
    controller_.release();
}

tresult PLUGIN_API ZVST3EditorView::isPlatformTypeSupported(FIDString type)
{
    return type != nullptr && std::strcmp(type, kPlatformTypeX11EmbedWindowID) == 0 ? kResultTrue : kResultFalse;
}

tresult PLUGIN_API ZVST3EditorView::attached(void* parent, FIDString type)
{
    return Guarded("ZVST3EditorView::attached", tresult{kResultFalse}, [&]() -> tresult {
        if (parent == nullptr || isPlatformTypeSupported(type) != kResultTrue || isAttached() || plugFrame == nullptr)
            return kResultFalse;
        Linux::IRunLoop* runLoop = nullptr;
        if (plugFrame->queryInterface(Linux::IRunLoop::iid, reinterpret_cast<void**>(&runLoop)) != kResultOk ||
            runLoop == nullptr)
            return kResultFalse;
        runLoop_ = owned(runLoop);
        if (!editor_->Open(reinterpret_cast<uintptr_t>(parent))) {
            runLoop_ = nullptr;
            return kResultFalse;
        }
        runLoop_->registerEventHandler(this, editor_->ConnectionFileDescriptor());
        runLoop_->registerTimer(this, kTimerInterval);
        return CPluginView::attached(parent, type);
    });
}

tresult PLUGIN_API ZVST3EditorView::removed()
{
    GuardedVoid("ZVST3EditorView::removed", [&] { detach(); });
    return CPluginView::removed();
}

void ZVST3EditorView::detach()
{
    if (runLoop_) {
        runLoop_->unregisterEventHandler(this);
        runLoop_->unregisterTimer(this);
        runLoop_ = nullptr;
    }
    if (editor_)
        editor_->Close();
}

tresult PLUGIN_API ZVST3EditorView::getSize(ViewRect* size)
{
    return Guarded("ZVST3EditorView::getSize", tresult{kResultFalse}, [&]() -> tresult {
        if (size == nullptr)
            return kInvalidArgument;
        const ZEditorSize editorSize = editor_->Size();
        *size = ViewRect(0, 0, editorSize.width, editorSize.height);
        rect = *size;
        return kResultTrue;
    });
}

tresult PLUGIN_API ZVST3EditorView::onSize(ViewRect* newSize)
{
    return Guarded("ZVST3EditorView::onSize", tresult{kResultFalse}, [&]() -> tresult {
        if (newSize == nullptr)
            return kInvalidArgument;
        editor_->SetSize({newSize->getWidth(), newSize->getHeight()});
        return CPluginView::onSize(newSize);
    });
}

tresult PLUGIN_API ZVST3EditorView::checkSizeConstraint(ViewRect* wanted)
{
    return Guarded("ZVST3EditorView::checkSizeConstraint", tresult{kResultFalse}, [&]() -> tresult {
        if (wanted == nullptr)
            return kInvalidArgument;
        const ZEditorSize size = editor_->ConstrainSize({wanted->getWidth(), wanted->getHeight()});
        wanted->right = wanted->left + size.width;
        wanted->bottom = wanted->top + size.height;
        return kResultTrue;
    });
}

tresult PLUGIN_API ZVST3EditorView::setContentScaleFactor(ScaleFactor factor)
{
    return Guarded("ZVST3EditorView::setContentScaleFactor", tresult{kResultFalse}, [&]() -> tresult {
        editor_->SetContentScale(factor);
        return kResultTrue;
    });
}

void PLUGIN_API ZVST3EditorView::onFDIsSet(Linux::FileDescriptor) { idle(); }

void PLUGIN_API ZVST3EditorView::onTimer() { idle(); }

void ZVST3EditorView::idle()
{
    GuardedVoid("ZVST3EditorView::idle", [&] { editor_->Idle(); });
}

void ZVST3EditorView::BeginEdit(int32_t index) { controller_.beginEdit(static_cast<Vst::ParamID>(index)); }

// The controller's own path for a value: the core takes it at once, then the host hears of it.
void ZVST3EditorView::PerformEdit(int32_t index, double normalized)
{
    controller_.setParamNormalized(static_cast<Vst::ParamID>(index), normalized);
    controller_.performEdit(static_cast<Vst::ParamID>(index), normalized);
}

void ZVST3EditorView::EndEdit(int32_t index) { controller_.endEdit(static_cast<Vst::ParamID>(index)); }

bool ZVST3EditorView::RequestResize(ZEditorSize size)
{
    if (plugFrame == nullptr)
        return false;
    ViewRect wanted(0, 0, size.width, size.height);
    return plugFrame->resizeView(this, &wanted) == kResultTrue;
}

} // namespace halvern
