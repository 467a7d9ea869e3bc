#pragma once

// The banks of a MultiParameter: stored sets of normalised target values, one value per
// target in each bank, that the MultiParameter's value moves between in "Banks" mode. The
// editor changes the table while the audio thread reads it: each change builds the new
// table first and publishes it by a swap under the core's processing lock, which the audio
// thread holds for the whole block. The table always holds at least one bank, and every
// bank holds the same number of values.

#include "core/z_lock.h"

#include <vector>

namespace halvern {

class ZMultiParameterBanks {
public:
    using Bank = std::vector<double>; // one normalised value per target

    // bankCount copies of firstBank.
    ZMultiParameterBanks(ZLock& processingLock, int bankCount, const Bank& firstBank);

    int count() const { return static_cast<int>(banks_.size()); }
    int targetCount() const { return static_cast<int>(banks_.front().size()); }
    const std::vector<Bank>& banks() const { return banks_; }

    // Audio thread: a target's value at a position 0..1 spread evenly over the banks,
    // either interpolated between the two neighbouring banks or taken from the nearest
    // one; exactly half-way between two banks counts as nearer to the upper one.
    double valueAt(double position, int target, bool interpolate) const;

    // Editor thread. Indices outside the table change nothing.
    void setCount(int count); // new banks start as copies of the last one
    void setBank(int bank, Bank values);
    // Gives every bank fill.size() values; values a bank did not have yet come from fill.
    void fitTargets(const Bank& fill);
    void removeTarget(int target);
    void reverse();
    void sortBy(int target, bool increasing);
    // A loaded table, each bank fitted to fill as by fitTargets; an empty table becomes
    // one bank equal to fill.
    void replaceAll(std::vector<Bank> banks, const Bank& fill);

private:
    static void fit(Bank& bank, const Bank& fill);
    template <class Change>
    void edit(Change change);
    void publish(std::vector<Bank> banks);

    ZLock& processingLock_;
    std::vector<Bank> banks_;
};

} // namespace halvern
