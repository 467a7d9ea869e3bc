#pragma once

// The A-H slot selector: eight buttons, the live slot's lit, a dot under each slot whose
// state differs from the defaults, and "copy" and "paste" of the live slot's state
// through the clipboard (so a slot can go to another slot, or another instance).
// Selecting a slot switches at once and is one host gesture on the "AH" parameter, so
// the host records it as automation.

#include "core/plugin_editor.h"
#include "state/quessane_audio_effect_plugin.h"
#include "ui/view.h"

#include <array>
#include <functional>
#include <string>

namespace halvern {

class ZButton;

class ZSlotBar : public ZView {
public:
    // notify shows a message to the user (a paste that failed).
    ZSlotBar(ZQuessaneAudioEffectPlugin& core, ZEditorHost& host, std::function<void(const std::string&)> notify);

    void Select(int slot);
    void Copy();
    void Paste();

    void Layout() override;
    void Refresh() override;
    ZPoint PreferredSize() const override;

private:
    class SlotButton;
    void showSlots();

    ZQuessaneAudioEffectPlugin& core_;
    ZEditorHost& host_;
    std::function<void(const std::string&)> notify_;
    std::array<SlotButton*, ZStateSlots::kCount> buttons_{};
    ZButton* copy_ = nullptr;
    ZButton* paste_ = nullptr;
    uint64_t shownChanges_ = ~uint64_t{0};
    int ticksToCheck_ = 0;
};

} // namespace halvern
