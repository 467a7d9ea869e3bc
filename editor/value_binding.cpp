#include "editor/value_binding.h"

#include <algorithm>

namespace halvern {

ZValueBinding::ZValueBinding(std::string name, std::string help, ZValue& value, ZLock& processingLock,
                             std::function<void()> changed)
    : name_(std::move(name)), help_(std::move(help)), value_(value), lock_(processingLock),
      changed_(std::move(changed))
{
    // The value object knows its default only by going there: it does, and comes back,
    // while processing waits.
    ZLockHolder hold(lock_, -1);
    const double current = value_.getNormalized();
    value_.resetToDefault();
    default_ = value_.getNormalized();
    value_.setNormalized(current);
}

int ZValueBinding::StepCount() const { return value_.stepCount() > 1 ? value_.stepCount() - 1 : 0; }

std::vector<std::string> ZValueBinding::ItemNames() const
{
    std::vector<std::string> names;
    const int steps = StepCount();
    for (int i = 0; steps > 0 && i <= steps; ++i)
        names.push_back(value_.displayTextAt(static_cast<double>(i) / steps));
    return names;
}

std::optional<double> ZValueBinding::Parse(const std::string& text) const
{
    double normalized = 0.0;
    if (!value_.normalizedFromDisplayText(text, normalized))
        return std::nullopt;
    return std::clamp(normalized, 0.0, 1.0);
}

void ZValueBinding::SetValue(double normalized)
{
    {
        ZLockHolder hold(lock_, -1);
        value_.setNormalized(std::clamp(normalized, 0.0, 1.0));
    }
    if (changed_)
        changed_();
}

} // namespace halvern
