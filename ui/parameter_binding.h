#pragma once

// What a control knows of the value it edits: a normalised 0..1 value with its texts,
// default and help, and the gesture that changes it. The editor implements it over the
// plug-in's parameters; the toolkit knows nothing more of the plug-in.

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace halvern {

class ZParameterBinding {
public:
    virtual ~ZParameterBinding() = default;

    virtual std::string Name() const = 0;
    // Help text in the markup of the text renderer (<name>, <p>, ...); may be empty.
    virtual std::string HelpText() const = 0;

    virtual double Value() const = 0; // normalised 0..1
    virtual double DefaultValue() const = 0;
    // 0 for a continuous value; otherwise the number of steps (a switch has 1).
    virtual int StepCount() const = 0;
    // The item texts of an enumeration, in order; empty for other values.
    virtual std::vector<std::string> ItemNames() const { return {}; }

    // The display text of a value, with its unit ("2.50 s", "250 Hz", "On").
    virtual std::string DisplayText(double normalized) const = 0;
    // A typed text in the value's own units; nothing when it is not a value.
    virtual std::optional<double> Parse(const std::string& text) const = 0;

    // The range [low, high] a modulator sweeps the value over, when one is to be shown.
    virtual std::optional<std::pair<double, double>> ModulationRange() const { return std::nullopt; }

    // A gesture: BeginEdit, any number of SetValue, EndEdit. Every change is inside one.
    virtual void BeginEdit() = 0;
    virtual void SetValue(double normalized) = 0;
    virtual void EndEdit() = 0;
};

// Sets a value as one whole gesture.
inline void SetValueAsGesture(ZParameterBinding& binding, double normalized)
{
    binding.BeginEdit();
    binding.SetValue(normalized);
    binding.EndEdit();
}

} // namespace halvern
