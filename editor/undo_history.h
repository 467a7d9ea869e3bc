#pragma once

// The editor's undo and redo. Each step is a snapshot of the plug-in's whole state, the
// block a host keeps: taken whenever the user has finished a change (a gesture, a preset
// loaded, a slot pasted or switched), so that undoing puts back exactly what was there
// before, whatever kind of change it was. A snapshot equal to the last one is no step.

#include "core/audio_plugin.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace halvern {

class ZUndoHistory {
public:
    static constexpr size_t kMaxSteps = 200;

    // The state as it is now is the first snapshot.
    explicit ZUndoHistory(ZAudioPlugin& core);

    // Takes the state as it is now; when it differs from the snapshot at hand, it becomes
    // the newest step and the steps that could be redone are gone. Returns true then.
    bool Record();
    bool CanUndo() const { return current_ > 0; }
    bool CanRedo() const { return current_ + 1 < snapshots_.size(); }
    // Puts back the state before the step at hand (after the next one); the host hears
    // every value again. False when there is no such step.
    bool Undo();
    bool Redo();
    size_t steps() const { return snapshots_.size() - 1; }

private:
    using Snapshot = std::vector<uint8_t>;

    Snapshot take() const;
    bool moveTo(size_t index);

    ZAudioPlugin& core_;
    std::deque<Snapshot> snapshots_;
    size_t current_ = 0;
};

} // namespace halvern
