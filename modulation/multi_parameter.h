#pragma once

// A MultiParameter: one automatable value that drives several effect parameters at once.
// In "Normal" mode the value is a modulator output that each target maps through its own
// range; in "Banks" mode the value moves between stored sets of target values; in
// "Switch" and "Trigger" modes the value is a button (pressed from 50 %) that starts a
// timed move, and the targets follow the moving position instead of the value.

#include "core/modulation_enums.h"
#include "core/parameter_registry.h"
#include "core/z_lock.h"
#include "core/z_value_enum.h"
#include "core/z_value_number.h"
#include "modulation/modulator_target_list.h"
#include "modulation/multi_parameter_banks.h"
#include "modulation/multi_parameter_switch.h"

#include <random>
#include <string>
#include <vector>

namespace halvern {

class ZMultiParameter {
public:
    static constexpr int kMaxBankCount = 64;
    static constexpr int kDefaultBankCount = 2;
    // "SwitchTime" is in seconds, 1 ms to 60 s, 1 s by default.
    static constexpr double kMinSwitchTime = 0.001;
    static constexpr double kMaxSwitchTime = 60.0;

    // number is the MultiParameter's place, 1 to 4. It starts disabled at 0 %.
    ZMultiParameter(ZLock& processingLock, ZModulatorTarget firstTarget, int number);
    ZMultiParameter(const ZMultiParameter&) = delete;
    ZMultiParameter& operator=(const ZMultiParameter&) = delete;

    // The registry that holds the targets; the "By first parameter" display reads the
    // first target's text from it.
    void attach(const ZParameterRegistry& registry) { registry_ = &registry; }

    // The value objects that the host and the editor see. "Value" is the automatable one.
    ZValueDouble& valueObject() { return valueObject_; }
    ZValueDouble& defaultValueObject() { return defaultValueObject_; }
    ZValueEnum<ZMultiParameterMode>& modeObject() { return modeObject_; }
    ZValueEnum<ZMultiParameterValueMode>& valueModeObject() { return valueModeObject_; }
    ZValueDouble& switchTimeObject() { return switchTimeObject_; }

    double value() const { return value_; }
    double defaultValue() const { return defaultValue_; }
    ZMultiParameterMode mode() const { return static_cast<ZMultiParameterMode>(mode_); }
    ZMultiParameterValueMode valueMode() const { return static_cast<ZMultiParameterValueMode>(valueMode_); }
    double switchTime() const { return switchTime_; }
    // "Set current value as defaut".
    void setCurrentValueAsDefault() { defaultValueObject_.setNormalized(value_); }
    // Gives the value back its default.
    void resetValue() { valueObject_.setNormalized(defaultValue_); }

    bool enabled() const { return enabled_; }
    // Both switches are read by the audio thread: they change under the processing lock.
    void setEnabled(bool enabled);
    bool interpolate() const { return interpolate_; }
    void setInterpolate(bool interpolate);
    const std::string& group() const { return group_; }
    void setGroup(std::string group) { group_ = std::move(group); }
    const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }
    const std::string& info() const { return info_; }
    void setInfo(std::string info) { info_ = std::move(info); }

    int number() const { return number_; }
    // A name beginning with '*' marks a MultiParameter for internal use.
    bool hidden() const { return !name_.empty() && name_.front() == '*'; }
    // The name, or "MultiParameter N" while it has none.
    std::string displayName() const;

    // The targets. Edits go through the MultiParameter so that the banks keep one value
    // per target; removing the last target is refused as by the target list.
    const ZModulatorTargetList& targets() const { return targets_; }
    void addTarget(const ZModulatorTarget& target);
    void removeTarget(int index);
    void setTarget(int index, const ZModulatorTarget& target) { targets_.set(index, target); }
    void replaceTargets(std::vector<ZModulatorTarget> targets);
    // "ValueBackup": the targets' values from before the MultiParameter took them over,
    // taken with its first write to them after it was enabled; empty until then.
    std::vector<double> valueBackup() const { return tookOver_ ? targets_.backup() : std::vector<double>{}; }
    // A stored backup; an empty one leaves the next write to take it.
    void setValueBackup(std::vector<double> values);

    // The banks, bank by bank, one normalised value per target. Editor thread.
    const std::vector<std::vector<double>>& banks() const { return banks_.banks(); }
    int bankCount() const { return banks_.count(); }
    // Limited to 1..kMaxBankCount; new banks start as copies of the last one.
    void setBankCount(int count);
    // A loaded table; banks are fitted to the targets, missing values taken from each
    // target's "Value".
    void replaceBanks(std::vector<std::vector<double>> banks) { banks_.replaceAll(std::move(banks), targetCentres()); }
    // Bank tools; a bank index outside the table changes nothing.
    // Stores the targets' current values in a bank.
    void saveBank(int bank, const ZParameterRegistry& registry);
    // Hands a bank's values to the enabled targets, taken over by the next block.
    void loadBank(int bank, ZParameterRegistry& registry) const;
    // "R": random values into a bank.
    void randomizeBank(int bank, std::mt19937& random);
    void reverseBanks() { banks_.reverse(); }
    void sortBanks(int target, bool increasing) { banks_.sortBy(target, increasing); }

    // Audio thread, once per block, in this order.
    // True when the value was written since the last call.
    bool takeValueChange();
    // "Switch" and "Trigger" modes: the threshold check, then, while moving, one step of
    // n samples, after which the targets follow the position.
    void processSwitch(int n, double sampleRate, ZParameterRegistry& registry);
    // "Normal" and "Banks" modes: writes the targets for the current value.
    void applyValue(ZParameterRegistry& registry);

    // Stops a running switch where it is (a state load).
    void stopSwitch() { switch_.stop(); }
    double switchPosition() const { return switch_.position(); }
    bool switchMoving() const { return switch_.moving(); }
    double switchDirection() const { return switch_.direction(); }

private:
    bool isSwitchMode() const;
    bool isBank(int bank) const;
    void applyBanks(ZParameterRegistry& registry) const;
    std::vector<double> targetCentres() const;
    // Backs the targets' values up before the first write after the MultiParameter was
    // enabled. Audio thread.
    void takeOver(const ZParameterRegistry& registry);
    std::string valueText(double value) const;
    const ZValue* firstTargetValue() const;

    ZLock& processingLock_;
    int number_;
    bool enabled_ = false;
    bool tookOver_ = false; // the targets' values from before are in the backup
    double value_ = 0.0;
    double defaultValue_ = 0.0;
    int32_t mode_ = static_cast<int32_t>(ZMultiParameterMode::Normal);
    int32_t valueMode_ = static_cast<int32_t>(ZMultiParameterValueMode::Percents);
    double switchTime_ = 1.0;
    bool interpolate_ = true;
    std::string group_;
    std::string name_;
    std::string info_;

    ZValueDouble valueObject_;
    ZValueDouble defaultValueObject_;
    ZValueEnum<ZMultiParameterMode> modeObject_;
    ZValueEnum<ZMultiParameterValueMode> valueModeObject_;
    ZValueDouble switchTimeObject_;

    ZModulatorTargetList targets_;
    ZMultiParameterBanks banks_;
    ZMultiParameterSwitch switch_;
    const ZParameterRegistry* registry_ = nullptr;
};

} // namespace halvern
