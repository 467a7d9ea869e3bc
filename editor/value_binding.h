#pragma once

// A control's view of a setting that is not a host parameter (a modulator's speed, a
// MIDI controller's channel): its value object's normalised view, display text, parser
// and steps. Writes happen under the core's processing lock, so the audio thread never
// sees half a change; reads are plain (a double the audio thread only reads).

#include "core/z_lock.h"
#include "core/z_value.h"
#include "ui/parameter_binding.h"

#include <functional>
#include <string>

namespace halvern {

class ZValueBinding : public ZParameterBinding {
public:
    // changed runs after every write, on the UI thread (nothing when empty).
    ZValueBinding(std::string name, std::string help, ZValue& value, ZLock& processingLock,
                  std::function<void()> changed = {});

    std::string Name() const override { return name_; }
    std::string HelpText() const override { return help_; }
    double Value() const override { return value_.getNormalized(); }
    double DefaultValue() const override { return default_; }
    int StepCount() const override;
    std::vector<std::string> ItemNames() const override;
    std::string DisplayText(double normalized) const override { return value_.displayTextAt(normalized); }
    std::optional<double> Parse(const std::string& text) const override;
    void BeginEdit() override {}
    void SetValue(double normalized) override;
    void EndEdit() override {}

private:
    std::string name_;
    std::string help_;
    ZValue& value_;
    ZLock& lock_;
    std::function<void()> changed_;
    double default_ = 0.0;
};

} // namespace halvern
