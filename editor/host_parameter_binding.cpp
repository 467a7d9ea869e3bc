#include "editor/host_parameter_binding.h"

#include "core/z_value.h"

#include <algorithm>

namespace halvern {

ZHostParameterBinding::ZHostParameterBinding(ZAudioPlugin& core, ZEditorHost& host, int32_t index, std::string label,
                                             ZBindingObserver* observer)
    : core_(core), host_(host), index_(index), label_(std::move(label)), observer_(observer)
{
}

std::string ZHostParameterBinding::Name() const { return label_.empty() ? core_.GetParameterName(index_) : label_; }

std::string ZHostParameterBinding::HelpText() const
{
    return core_.parameters().isValidIndex(index_) ? core_.parameters().info(index_).help : std::string();
}

double ZHostParameterBinding::Value() const { return core_.GetParameter(index_); }

double ZHostParameterBinding::DefaultValue() const { return core_.GetParameterDefaultValue(index_); }

int ZHostParameterBinding::StepCount() const
{
    const ZValue* value = core_.parameters().isValidIndex(index_) ? core_.parameters().value(index_) : nullptr;
    return value != nullptr && value->stepCount() > 1 ? value->stepCount() - 1 : 0;
}

std::vector<std::string> ZHostParameterBinding::ItemNames() const
{
    std::vector<std::string> names;
    if (core_.GetParameterType(index_) != ZParameterType::Enumeration)
        return names;
    const int steps = StepCount();
    for (int i = 0; i <= steps; ++i)
        names.push_back(core_.GetParameterValueNameFrom01(index_, steps > 0 ? double(i) / steps : 0.0));
    return names;
}

std::string ZHostParameterBinding::DisplayText(double normalized) const
{
    std::string text = core_.GetParameterValueNameFrom01(index_, normalized);
    const std::string units = core_.GetParameterUnitsName(index_);
    if (!units.empty() && !text.empty())
        text += " " + units;
    return text;
}

std::optional<double> ZHostParameterBinding::Parse(const std::string& text) const
{
    const ZValue* value = core_.parameters().isValidIndex(index_) ? core_.parameters().value(index_) : nullptr;
    double normalized = 0.0;
    if (value == nullptr || !value->normalizedFromDisplayText(text, normalized))
        return std::nullopt;
    return std::clamp(normalized, 0.0, 1.0);
}

// Gestures nest (a double click inside a drag's press, two bindings of one pad); the host
// hears one begin and one end per parameter.
std::optional<std::pair<double, double>> ZHostParameterBinding::ModulationRange() const
{
    return observer_ != nullptr ? observer_->RangeOn(index_) : std::nullopt;
}

void ZHostParameterBinding::BeginEdit()
{
    if (openGestures_++ == 0) {
        gestureStart_ = Value();
        host_.BeginEdit(index_);
    }
}

void ZHostParameterBinding::SetValue(double normalized)
{
    host_.PerformEdit(index_, std::clamp(normalized, 0.0, 1.0));
}

void ZHostParameterBinding::EndEdit()
{
    if (openGestures_ > 0 && --openGestures_ == 0) {
        host_.EndEdit(index_);
        if (observer_ != nullptr)
            observer_->GestureEnded(index_, gestureStart_, Value());
    }
}

} // namespace halvern
