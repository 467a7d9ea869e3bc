#include "modulation/modulator_target_list.h"

#include "core/z_exception.h"

#include <algorithm>
#include <utility>

namespace halvern {
namespace {

[[noreturn]] void refuseEmpty()
{
    throw ZException("There must be at least one parameter for each modulator.");
}

} // namespace

ZModulatorTargetList::ZModulatorTargetList(ZLock& processingLock, ZModulatorTarget first)
    : processingLock_(processingLock), targets_{first}, backup_(1, 0.0)
{
}

void ZModulatorTargetList::publish(std::vector<ZModulatorTarget> targets)
{
    std::vector<double> backup = backup_;
    backup.resize(targets.size(), 0.0);
    {
        ZLockHolder hold(processingLock_, -1);
        targets_.swap(targets);
        backup_.swap(backup);
    }
    // The previous lists are released here, outside the lock.
}

void ZModulatorTargetList::add(const ZModulatorTarget& target)
{
    std::vector<ZModulatorTarget> next = targets_;
    next.push_back(target);
    publish(std::move(next));
}

void ZModulatorTargetList::remove(int index)
{
    if (index < 0 || index >= size())
        return;
    if (size() == 1)
        refuseEmpty();
    std::vector<ZModulatorTarget> next = targets_;
    next.erase(next.begin() + index);
    publish(std::move(next));
}

void ZModulatorTargetList::set(int index, const ZModulatorTarget& target)
{
    if (index < 0 || index >= size())
        return;
    std::vector<ZModulatorTarget> next = targets_;
    next[static_cast<size_t>(index)] = target;
    publish(std::move(next));
}

void ZModulatorTargetList::replaceAll(std::vector<ZModulatorTarget> targets)
{
    if (targets.empty())
        refuseEmpty();
    publish(std::move(targets));
}

void ZModulatorTargetList::apply(double m, ZParameterRegistry& registry) const
{
    const ZModulatorTarget& first = targets_.front();
    for (const ZModulatorTarget& target : targets_)
        if (target.enabled)
            WriteModulatedValue(registry, target.parameter, TargetValueFor(target, first, m));
}

void ZModulatorTargetList::setBackup(std::vector<double> values)
{
    values.resize(targets_.size(), 0.0);
    for (double& value : values)
        value = std::clamp(value, 0.0, 1.0);
    ZLockHolder hold(processingLock_, -1);
    backup_.swap(values);
}

void ZModulatorTargetList::backupValues(const ZParameterRegistry& registry)
{
    for (size_t i = 0; i < targets_.size(); ++i)
        if (registry.isValidIndex(targets_[i].parameter))
            backup_[i] = registry.normalized(targets_[i].parameter);
}

void ZModulatorTargetList::restoreValues(ZParameterRegistry& registry) const
{
    for (size_t i = 0; i < targets_.size(); ++i)
        if (targets_[i].enabled)
            WriteModulatedValue(registry, targets_[i].parameter, backup_[i]);
}

void WriteModulatedValue(ZParameterRegistry& registry, int index, double normalized)
{
    if (!registry.isValidIndex(index) || registry.value(index) == nullptr)
        return;
    if (registry.normalized(index) == normalized)
        return;
    registry.setNow(index, normalized);
    registry.markForHost(index);
}

} // namespace halvern
