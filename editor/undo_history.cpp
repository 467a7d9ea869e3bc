#include "editor/undo_history.h"

#include "core/exception_frame.h"
#include "state/plugin_state_block.h"

namespace halvern {

ZUndoHistory::ZUndoHistory(ZAudioPlugin& core) : core_(core) { snapshots_.push_back(take()); }

ZUndoHistory::Snapshot ZUndoHistory::take() const
{
    ZMemoryStream block = SavePluginState(core_);
    const uint8_t* bytes = block.data();
    return Snapshot(bytes, bytes + (bytes != nullptr ? block.size() : 0));
}

bool ZUndoHistory::Record()
{
    Snapshot now = take();
    if (now == snapshots_[current_])
        return false;
    snapshots_.erase(snapshots_.begin() + static_cast<std::ptrdiff_t>(current_) + 1, snapshots_.end());
    snapshots_.push_back(std::move(now));
    if (snapshots_.size() > kMaxSteps + 1)
        snapshots_.pop_front();
    current_ = snapshots_.size() - 1;
    return true;
}

bool ZUndoHistory::Undo() { return CanUndo() && moveTo(current_ - 1); }

bool ZUndoHistory::Redo() { return CanRedo() && moveTo(current_ + 1); }

bool ZUndoHistory::moveTo(size_t index)
{
    const Snapshot& state = snapshots_[index];
    const bool loaded = Guarded("ZUndoHistory::moveTo", false, [&] {
        LoadPluginState(core_, state.data(), static_cast<int32_t>(state.size()));
        core_.StateChanged();
        return true;
    });
    if (loaded)
        current_ = index;
    return loaded;
}

} // namespace halvern
