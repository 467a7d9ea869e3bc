#pragma once

// The ABCD morphing pad: a square whose corners are slots A (top left), B (top right),
// C (bottom left) and D (bottom right). Dragging the point blends every automatable
// parameter between the four slots' values (the plug-in's morph), and each move is a
// host gesture on the pad's two parameters, so the host records it as automation.
// Beside the pad: what it does, the pad's position and the "AGC" switch.
//
// Morphing changes the live slot. When that slot is one of A-D the user is asked first,
// with the plug-in's warning and the offer to switch to a slot outside the square.

#include "core/plugin_editor.h"
#include "state/quessane_audio_effect_plugin.h"
#include "ui/view.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace halvern {

class ZLabel;
class ZXYPad;

class ABCDEditor : public ZView {
public:
    // Shows a question with answers; answered gets the index of the answer chosen, or -1.
    using Asker = std::function<void(const std::string& question, const std::vector<std::string>& answers,
                                     std::function<void(int)> answered)>;

    // selectSlot switches slots as the slot selector does; agc is the "AGC" switch.
    ABCDEditor(ZQuessaneAudioEffectPlugin& core, ZEditorHost& host, std::function<void(int)> selectSlot,
               std::unique_ptr<ZView> agc, Asker ask);

    ZXYPad& pad() const { return *pad_; }
    // The question asked before the first move in a slot of A-D (empty for other slots).
    std::string Question() const;

    void Layout() override;
    void Refresh() override;

protected:
    void PaintSelf(ZCanvas& canvas) override;

private:
    class MorphPad;
    // True when the pad may move now; otherwise asks and answers later.
    bool mayMorph();
    static int SlotOutsideSquare();

    ZQuessaneAudioEffectPlugin& core_;
    std::function<void(int)> selectSlot_;
    Asker ask_;
    ZXYPad* pad_ = nullptr;
    ZView* agc_ = nullptr;
    ZLabel* agcLabel_ = nullptr;
    ZLabel* position_ = nullptr;
    ZView* about_ = nullptr;
    int confirmedSlot_ = -1; // the slot of A-D the user agreed to morph in
    int shownLive_ = -1;
};

} // namespace halvern
