#include "editor/function_binding.h"

#include "core/value_displays.h"
#include "core/z_format.h"

#include <algorithm>
#include <cmath>

namespace halvern {

ZFunctionBinding::ZFunctionBinding(std::string name, std::string help, Getter get, Setter set)
    : name_(std::move(name)), help_(std::move(help)), get_(std::move(get)), set_(std::move(set))
{
}

std::shared_ptr<ZFunctionBinding> ZFunctionBinding::Switch(std::string name, std::string help,
                                                           std::function<bool()> get, std::function<void(bool)> set)
{
    return Choice(std::move(name), std::move(help), {"Off", "On"}, [get = std::move(get)] { return get() ? 1 : 0; },
                  [set = std::move(set)](int index) { set(index != 0); });
}

std::shared_ptr<ZFunctionBinding> ZFunctionBinding::Choice(std::string name, std::string help,
                                                           std::vector<std::string> items, std::function<int()> get,
                                                           std::function<void(int)> set)
{
    const int steps = std::max(static_cast<int>(items.size()) - 1, 1);
    auto binding = std::make_shared<ZFunctionBinding>(
        std::move(name), std::move(help), [get = std::move(get), steps] { return static_cast<double>(get()) / steps; },
        [set = std::move(set), steps](double normalized) { set(static_cast<int>(std::lround(normalized * steps))); });
    binding->items_ = std::move(items);
    binding->steps_ = steps;
    return binding;
}

void ZFunctionBinding::SetTexts(Display display, Parser parse)
{
    display_ = std::move(display);
    parse_ = std::move(parse);
}

void ZFunctionBinding::SetSteps(int steps) { steps_ = std::max(steps, 0); }

int ZFunctionBinding::indexOf(double normalized) const
{
    return static_cast<int>(std::lround(std::clamp(normalized, 0.0, 1.0) * steps_));
}

std::string ZFunctionBinding::DisplayText(double normalized) const
{
    if (!items_.empty())
        return items_[static_cast<size_t>(std::min(indexOf(normalized), static_cast<int>(items_.size()) - 1))];
    if (display_)
        return display_(normalized);
    return FormatPercent(normalized);
}

std::optional<double> ZFunctionBinding::Parse(const std::string& text) const
{
    for (size_t i = 0; i < items_.size(); ++i)
        if (ZEqualsIgnoringCase(ZTrimmed(text), items_[i]))
            return static_cast<double>(i) / steps_;
    if (!items_.empty())
        return std::nullopt;
    if (parse_)
        return parse_(text);
    double fraction = 0.0;
    if (!ParsePercent(text, fraction))
        return std::nullopt;
    return std::clamp(fraction, 0.0, 1.0);
}

void ZFunctionBinding::SetValue(double normalized)
{
    normalized = std::clamp(normalized, 0.0, 1.0);
    if (steps_ > 0)
        normalized = static_cast<double>(indexOf(normalized)) / steps_;
    set_(normalized);
}

} // namespace halvern
