#include "state/serialization_context.h"

#include "core/z_format.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace halvern {

std::string ZShortestText(double value)
{
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
    return {buffer, result.ptr};
}

const std::string* ZSerializationContext::text(std::string_view name) const
{
    return element_.findAttribute(name);
}

void ZSerializationContext::item(std::string_view name, int32_t& value, int32_t defaultValue, int32_t minimum,
                                 int32_t maximum) const
{
    if (storing_) {
        if (value != defaultValue)
            element_.setAttributeInt(name, value);
        return;
    }
    double number = 0.0;
    const std::string* stored = text(name);
    if (stored == nullptr || !ZParseNumber(*stored, number)) {
        value = defaultValue;
        return;
    }
    value = static_cast<int32_t>(std::clamp(std::trunc(number), static_cast<double>(minimum), static_cast<double>(maximum)));
}

void ZSerializationContext::item(std::string_view name, bool& value, bool defaultValue) const
{
    int32_t number = value ? 1 : 0;
    item(name, number, defaultValue ? 1 : 0);
    value = number != 0;
}

void ZSerializationContext::item(std::string_view name, double& value, double defaultValue) const
{
    if (storing_) {
        if (value != defaultValue && std::isfinite(value))
            element_.setAttribute(name, ZShortestText(value));
        return;
    }
    const std::string* stored = text(name);
    if (stored == nullptr || !ZParseNumber(*stored, value))
        value = defaultValue;
}

void ZSerializationContext::item(std::string_view name, std::string& value, std::string_view defaultValue) const
{
    if (storing_) {
        if (value != defaultValue)
            element_.setAttribute(name, value);
        return;
    }
    const std::string* stored = text(name);
    value = stored != nullptr ? *stored : std::string(defaultValue);
}

void ZSerializationContext::item(std::string_view name, std::vector<double>& values) const
{
    if (storing_) {
        if (values.empty())
            return;
        std::string joined;
        for (const double value : values) {
            if (!joined.empty())
                joined += ' ';
            joined += ZShortestText(std::isfinite(value) ? value : 0.0);
        }
        element_.setAttribute(name, joined);
        return;
    }
    values.clear();
    const std::string* stored = text(name);
    if (stored == nullptr)
        return;
    std::string_view rest = *stored;
    while (!rest.empty()) {
        const size_t end = std::min(rest.find(' '), rest.size());
        double number = 0.0;
        if (ZParseNumber(rest.substr(0, end), number))
            values.push_back(number);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

void ZSerializationContext::kept(std::string_view name, int32_t& value) const
{
    if (storing_) {
        element_.setAttributeInt(name, value);
        return;
    }
    double number = 0.0;
    if (const std::string* stored = text(name); stored != nullptr && ZParseNumber(*stored, number))
        value = static_cast<int32_t>(std::clamp(std::trunc(number), -2147483648.0, 2147483647.0));
}

void ZSerializationContext::kept(std::string_view name, std::string& value) const
{
    if (storing_)
        element_.setAttribute(name, value);
    else if (const std::string* stored = text(name))
        value = *stored;
}

ZMLElement* ZSerializationContext::child(std::string_view name) const
{
    if (storing_)
        return &element_.addChild(std::string(name));
    return element_.findChild(name);
}

std::vector<ZMLElement*> ZSerializationContext::children(std::string_view name) const
{
    std::vector<ZMLElement*> found;
    for (const auto& child : element_.children())
        if (child->name() == name)
            found.push_back(child.get());
    return found;
}

} // namespace halvern
