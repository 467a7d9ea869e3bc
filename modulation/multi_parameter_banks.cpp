#include "modulation/multi_parameter_banks.h"

#include <algorithm>
#include <utility>

namespace halvern {

ZMultiParameterBanks::ZMultiParameterBanks(ZLock& processingLock, int bankCount, const Bank& firstBank)
    : processingLock_(processingLock), banks_(static_cast<size_t>(std::max(bankCount, 1)), firstBank)
{
}

double ZMultiParameterBanks::valueAt(double position, int target, bool interpolate) const
{
    const int last = count() - 1;
    const double p = std::clamp(position, 0.0, 1.0) * last;
    const int lower = std::min(static_cast<int>(p), last);
    const int upper = std::min(lower + 1, last);
    const double fraction = p - lower;
    const double from = banks_[static_cast<size_t>(lower)][static_cast<size_t>(target)];
    const double to = banks_[static_cast<size_t>(upper)][static_cast<size_t>(target)];
    if (interpolate)
        return from + (to - from) * fraction;
    return fraction < 0.5 ? from : to;
}

void ZMultiParameterBanks::publish(std::vector<Bank> banks)
{
    {
        ZLockHolder hold(processingLock_, -1);
        banks_.swap(banks);
    }
    // The previous table is released here, outside the lock.
}

template <class Change>
void ZMultiParameterBanks::edit(Change change)
{
    std::vector<Bank> next = banks_;
    change(next);
    publish(std::move(next));
}

void ZMultiParameterBanks::setCount(int count)
{
    if (count < 1)
        return;
    edit([count](std::vector<Bank>& banks) { banks.resize(static_cast<size_t>(count), banks.back()); });
}

void ZMultiParameterBanks::setBank(int bank, Bank values)
{
    if (bank < 0 || bank >= count())
        return;
    edit([&](std::vector<Bank>& banks) { banks[static_cast<size_t>(bank)] = std::move(values); });
}

void ZMultiParameterBanks::fit(Bank& bank, const Bank& fill)
{
    const auto kept = static_cast<std::ptrdiff_t>(std::min(bank.size(), fill.size()));
    bank.resize(fill.size());
    std::copy(fill.begin() + kept, fill.end(), bank.begin() + kept);
}

void ZMultiParameterBanks::fitTargets(const Bank& fill)
{
    edit([&fill](std::vector<Bank>& banks) {
        for (Bank& bank : banks)
            fit(bank, fill);
    });
}

void ZMultiParameterBanks::removeTarget(int target)
{
    if (target < 0 || target >= targetCount())
        return;
    edit([target](std::vector<Bank>& banks) {
        for (Bank& bank : banks)
            bank.erase(bank.begin() + target);
    });
}

void ZMultiParameterBanks::reverse()
{
    edit([](std::vector<Bank>& banks) { std::reverse(banks.begin(), banks.end()); });
}

void ZMultiParameterBanks::sortBy(int target, bool increasing)
{
    if (target < 0 || target >= targetCount())
        return;
    const auto t = static_cast<size_t>(target);
    edit([t, increasing](std::vector<Bank>& banks) {
        std::stable_sort(banks.begin(), banks.end(), [t, increasing](const Bank& a, const Bank& b) {
            return increasing ? a[t] < b[t] : a[t] > b[t];
        });
    });
}

void ZMultiParameterBanks::replaceAll(std::vector<Bank> banks, const Bank& fill)
{
    if (banks.empty())
        banks.push_back(fill);
    for (Bank& bank : banks)
        fit(bank, fill);
    publish(std::move(banks));
}

} // namespace halvern
