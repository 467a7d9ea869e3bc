#include "editor/offscreen_editor.h"

#include "core/audio_plugin.h"
#include "core/z_exception.h"
#include "editor/halvern_editor.h"
#include "editor/reverb_editor_view.h"

namespace halvern {

void ZOffscreenEditorHost::PerformEdit(int32_t index, double normalized) { core_.SetParameter(index, normalized); }

ZOffscreenEditor::ZOffscreenEditor(ZAudioPlugin& core, double scale)
    : theme_(ZTheme::Default()), host_(core),
      root_(std::make_unique<ZUIRoot>(kHalvernEditorWidth, kHalvernEditorHeight, scale, theme_))
{
    auto view = BuildHalvernEditorView(core, host_, *root_);
    if (!view)
        throw ZException("This plug-in has no reverb editor.");
    root_->SetContent(std::move(view));
}

ZOffscreenEditor::~ZOffscreenEditor() = default;

ZReverbEditorView& ZOffscreenEditor::view() { return *static_cast<ZReverbEditorView*>(root_->content()); }

void ZOffscreenEditor::Open(ZModulatorSelection which) { view().modulatorArea().Select(which); }

void ZOffscreenEditor::Tick(int ticks)
{
    for (int i = 0; i < ticks; ++i) {
        now_ += ZReverbEditorView::kTickSeconds;
        root_->Tick(now_);
        root_->Paint();
    }
}

void ZOffscreenEditor::RenderAll()
{
    now_ += ZReverbEditorView::kTickSeconds;
    root_->Tick(now_);
    root_->InvalidateAll();
    root_->Paint();
}

bool ZOffscreenEditor::WritePNG(const std::string& path)
{
    RenderAll();
    return root_->canvas().WritePNG(path);
}

} // namespace halvern
