#pragma once

// The current preset in the editor's header: its name (a click opens the preset window)
// between the arrows that load the previous and the next preset.

#include "state/quessane_audio_effect_plugin.h"
#include "ui/view.h"

#include <functional>
#include <string>

namespace halvern {

class ZButton;

class ZPresetSelector : public ZView {
public:
    // openWindow shows the preset window; loaded runs after a preset was loaded here.
    ZPresetSelector(ZQuessaneAudioEffectPlugin& core, std::function<void()> openWindow, std::function<void()> loaded);

    // Loads the preset after (1) or before (-1) the current one.
    void Step(int direction);
    // The current preset's name; "No preset" before one was loaded.
    std::string PresetName() const;

    void Layout() override;
    void Refresh() override;

private:
    ZQuessaneAudioEffectPlugin& core_;
    std::function<void()> loaded_;
    ZButton* previous_ = nullptr;
    ZButton* name_ = nullptr;
    ZButton* next_ = nullptr;
};

} // namespace halvern
