#pragma once

// The reverb editor's view tree: a header with the plug-in's name, the bypass switch and
// the input and output meters; the "Position" panel with the position editor; the
// reverb's panels built from its parameter records; the modulators' places at the bottom
// ("MultiParameters" and "LFOs"); and a help panel that shows the help of whatever the
// pointer rests on.

#include "core/plugin_editor.h"
#include "reverb/halvern_audio_effect_plugin.h"
#include "state/quessane_audio_effect_plugin.h"
#include "ui/panel.h"
#include "ui/view.h"

namespace halvern {

class ZMarkupView;

class ZReverbEditorView : public ZView {
public:
    static constexpr double kTickSeconds = 1.0 / 60.0;

    ZReverbEditorView(ZQuessaneAudioEffectPlugin& core, HalvernAudioEffectPlugin& effect, ZEditorHost& host);

    void Layout() override;
    // Shows a help text in the help panel (empty: the panel's hint).
    void ShowHelp(const std::string& help);

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    class Header;

    void buildPanels();
    void buildModulators();
    std::unique_ptr<ZView> controlFor(int32_t index, const std::string& label = {});
    ZRect helpArea() const;

    ZQuessaneAudioEffectPlugin& core_;
    HalvernAudioEffectPlugin& effect_;
    ZEditorHost& host_;
    ZView* header_ = nullptr;
    ZMarkupView* help_ = nullptr;
    std::vector<ZPanel*> panels_;
};

} // namespace halvern
