#include "modulation/multi_parameter.h"

#include "core/value_displays.h"

#include <algorithm>
#include <utility>

namespace halvern {
namespace {

// A 0..1 value as a modulator output in [-1, 1].
double OutputOf(double fraction)
{
    return 2.0 * fraction - 1.0;
}

} // namespace

ZMultiParameter::ZMultiParameter(ZLock& processingLock, ZModulatorTarget firstTarget, int number)
    : processingLock_(processingLock),
      number_(number),
      valueObject_(&value_, 0.0, 1.0, 0.0, 0.01),
      defaultValueObject_(&defaultValue_, 0.0, 1.0, 0.0, 0.01),
      modeObject_(&mode_, ZMultiParameterMode::Normal),
      valueModeObject_(&valueMode_, ZMultiParameterValueMode::Percents),
      switchTimeObject_(&switchTime_, kMinSwitchTime, kMaxSwitchTime, 1.0, 0.001),
      targets_(processingLock, std::move(firstTarget)),
      banks_(processingLock, kDefaultBankCount, targetCentres())
{
    valueObject_.setFormatter([this](double value) { return valueText(value); });
    valueObject_.setParser(ParsePercent);
    defaultValueObject_.setFormatter(FormatPercent);
    defaultValueObject_.setParser(ParsePercent);
    switchTimeObject_.setFormatter(FormatTime);
    switchTimeObject_.setParser(ParseTime);
}

void ZMultiParameter::setEnabled(bool enabled)
{
    ZLockHolder hold(processingLock_, -1);
    if (!enabled)
        tookOver_ = false;
    enabled_ = enabled;
}

void ZMultiParameter::setValueBackup(std::vector<double> values)
{
    const bool taken = !values.empty();
    targets_.setBackup(std::move(values));
    ZLockHolder hold(processingLock_, -1);
    tookOver_ = taken;
}

void ZMultiParameter::takeOver(const ZParameterRegistry& registry)
{
    if (tookOver_)
        return;
    targets_.backupValues(registry);
    tookOver_ = true;
}

void ZMultiParameter::setInterpolate(bool interpolate)
{
    ZLockHolder hold(processingLock_, -1);
    interpolate_ = interpolate;
}

std::string ZMultiParameter::displayName() const
{
    return name_.empty() ? "MultiParameter " + std::to_string(number_) : name_;
}

void ZMultiParameter::addTarget(const ZModulatorTarget& target)
{
    targets_.add(target);
    banks_.fitTargets(targetCentres());
}

void ZMultiParameter::removeTarget(int index)
{
    targets_.remove(index); // throws before the banks change when it is the last target
    banks_.removeTarget(index);
}

void ZMultiParameter::replaceTargets(std::vector<ZModulatorTarget> targets)
{
    targets_.replaceAll(std::move(targets));
    banks_.fitTargets(targetCentres());
}

std::vector<double> ZMultiParameter::targetCentres() const
{
    std::vector<double> centres;
    for (const ZModulatorTarget& target : targets_.targets())
        centres.push_back(target.value);
    return centres;
}

void ZMultiParameter::setBankCount(int count)
{
    banks_.setCount(std::clamp(count, 1, kMaxBankCount));
}

bool ZMultiParameter::isBank(int bank) const
{
    return bank >= 0 && bank < bankCount();
}

void ZMultiParameter::saveBank(int bank, const ZParameterRegistry& registry)
{
    if (!isBank(bank))
        return;
    std::vector<double> values = banks_.banks()[static_cast<size_t>(bank)];
    const std::vector<ZModulatorTarget>& targets = targets_.targets();
    for (size_t i = 0; i < targets.size(); ++i)
        if (registry.isValidIndex(targets[i].parameter))
            values[i] = registry.normalized(targets[i].parameter);
    banks_.setBank(bank, std::move(values));
}

void ZMultiParameter::loadBank(int bank, ZParameterRegistry& registry) const
{
    if (!isBank(bank))
        return;
    const std::vector<double>& values = banks_.banks()[static_cast<size_t>(bank)];
    const std::vector<ZModulatorTarget>& targets = targets_.targets();
    for (size_t i = 0; i < targets.size(); ++i)
        if (targets[i].enabled && registry.isValidIndex(targets[i].parameter))
            registry.park(targets[i].parameter, values[i]);
}

void ZMultiParameter::randomizeBank(int bank, std::mt19937& random)
{
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    std::vector<double> values(static_cast<size_t>(targets_.size()));
    for (double& value : values)
        value = uniform(random);
    banks_.setBank(bank, std::move(values));
}

bool ZMultiParameter::takeValueChange()
{
    const bool changed = valueObject_.isChanged();
    valueObject_.clearChanged();
    return changed;
}

bool ZMultiParameter::isSwitchMode() const
{
    return mode() == ZMultiParameterMode::Switch || mode() == ZMultiParameterMode::Trigger;
}

void ZMultiParameter::processSwitch(int n, double sampleRate, ZParameterRegistry& registry)
{
    if (!enabled_ || !isSwitchMode())
        return;
    const double stroke = n / (sampleRate * std::max(switchTime_, kMinSwitchTime));
    const bool trigger = mode() == ZMultiParameterMode::Trigger;
    if (!switch_.process(trigger, value_ >= 0.5, stroke))
        return;
    takeOver(registry);
    targets_.apply(OutputOf(switch_.position()), registry);
}

void ZMultiParameter::applyValue(ZParameterRegistry& registry)
{
    if (!enabled_ || isSwitchMode())
        return;
    takeOver(registry);
    if (mode() == ZMultiParameterMode::Normal)
        targets_.apply(OutputOf(value_), registry);
    else
        applyBanks(registry);
}

void ZMultiParameter::applyBanks(ZParameterRegistry& registry) const
{
    // A target edit publishes the targets and the banks one after the other; a block that
    // falls between the two sees different counts and leaves the targets alone rather than
    // give a target the values of its neighbour.
    const std::vector<ZModulatorTarget>& targets = targets_.targets();
    if (banks_.targetCount() != targets_.size())
        return;
    for (size_t i = 0; i < targets.size(); ++i)
        if (targets[i].enabled)
            WriteModulatedValue(registry, targets[i].parameter,
                                banks_.valueAt(value_, static_cast<int>(i), interpolate_));
}

std::string ZMultiParameter::valueText(double value) const
{
    const ZValue* first = firstTargetValue();
    if (valueMode() != ZMultiParameterValueMode::ByFirstParameter || first == nullptr)
        return FormatPercent(value);
    const ZModulatorTarget& target = targets_.targets().front();
    switch (mode()) {
    case ZMultiParameterMode::Normal:
        return first->displayTextAt(TargetValueFor(target, target, OutputOf(value)));
    case ZMultiParameterMode::Banks:
        return first->displayTextAt(banks_.valueAt(value, 0, interpolate_));
    default:
        return first->getDisplayText(); // the targets follow the switch, not the value
    }
}

const ZValue* ZMultiParameter::firstTargetValue() const
{
    const int index = targets_.targets().front().parameter;
    if (registry_ == nullptr || !registry_->isValidIndex(index))
        return nullptr;
    return registry_->value(index);
}

} // namespace halvern
