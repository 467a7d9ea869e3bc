#pragma once

// The ordered targets of one modulator. The list is never empty. The editor changes it
// while the audio thread reads it: each change builds the new list first and publishes it
// by a swap under the core's processing lock, which the audio thread holds for the whole
// block, so a block always sees one complete list and never waits for an allocation.

#include "core/parameter_registry.h"
#include "core/z_lock.h"
#include "modulation/range_mapping.h"

#include <vector>

namespace halvern {

class ZModulatorTargetList {
public:
    ZModulatorTargetList(ZLock& processingLock, ZModulatorTarget first);

    // Editor thread.
    void add(const ZModulatorTarget& target);
    // Refuses to remove the last target with "There must be at least one parameter for
    // each modulator."; an index outside the list changes nothing.
    void remove(int index);
    void set(int index, const ZModulatorTarget& target);
    // Replaces the whole list (a loaded state); an empty list is refused like remove.
    void replaceAll(std::vector<ZModulatorTarget> targets);

    // The audio thread (holding the processing lock) and the editor thread.
    const std::vector<ZModulatorTarget>& targets() const { return targets_; }
    int size() const { return static_cast<int>(targets_.size()); }

    // Audio thread: writes the value for output m into every enabled target through the
    // registry, flagging each change for the host.
    void apply(double m, ZParameterRegistry& registry) const;

    // The values the targets had before the modulator took them over, one per target,
    // so that they can be given back when it lets go. Audio thread.
    void backupValues(const ZParameterRegistry& registry);
    void restoreValues(ZParameterRegistry& registry) const;
    const std::vector<double>& backup() const { return backup_; }
    // A loaded backup, fitted to the targets (missing values are 0, each limited to 0..1).
    // Editor thread.
    void setBackup(std::vector<double> values);

private:
    void publish(std::vector<ZModulatorTarget> targets);

    ZLock& processingLock_;
    std::vector<ZModulatorTarget> targets_;
    std::vector<double> backup_; // always as long as targets_, resized only by publish
};

// Writes a normalised value into a parameter when it differs, flagging it for the host.
void WriteModulatedValue(ZParameterRegistry& registry, int index, double normalized);

} // namespace halvern
