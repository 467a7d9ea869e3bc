#include "core/value_displays.h"

#include "core/z_format.h"

#include <algorithm>
#include <cmath>

namespace halvern {

namespace {

// A number with one of the units that may follow it (case ignored); a bare number takes
// the first unit's factor. False for any other unit.
bool ParseWithUnits(std::string_view text, std::initializer_list<std::pair<std::string_view, double>> units, double& value)
{
    double number = 0.0;
    std::string_view unit;
    if (!ZParseNumber(text, number, &unit))
        return false;
    if (unit.empty()) {
        value = number * units.begin()->second;
        return true;
    }
    for (const auto& [name, factor] : units)
        if (ZEqualsIgnoringCase(unit, name)) {
            value = number * factor;
            return true;
        }
    return false;
}

} // namespace

std::string FormatOnOff(int on)
{
    return on != 0 ? "On" : "Off";
}

std::string FormatPercent(double fraction)
{
    return ZFormat("{0;.1} %").arg(fraction * 100.0).text();
}

bool ParsePercent(std::string_view text, double& fraction)
{
    double percent = 0.0;
    if (!ZParseNumber(text, percent))
        return false;
    fraction = percent * 0.01;
    return true;
}

std::string FormatTime(double seconds)
{
    if (std::fabs(seconds) < 1.0)
        return ZFormat("{0;.1} ms").arg(seconds * 1000.0).text();
    return ZFormat("{0;.2} s").arg(seconds).text();
}

// A bare number is in milliseconds; "ms" and "s" may follow, as the display shows them.
bool ParseTime(std::string_view text, double& seconds)
{
    return ParseWithUnits(text, {{"ms", 0.001}, {"s", 1.0}}, seconds);
}

std::string FormatLogFrequency(double logHertz)
{
    return FormatFrequency(std::pow(10.0, logHertz));
}

// A bare number is in hertz; "Hz" and "kHz" may follow, as the display shows them.
bool ParseLogFrequency(std::string_view text, double& logHertz)
{
    double hertz = 0.0;
    if (!ParseWithUnits(text, {{"Hz", 1.0}, {"kHz", 1000.0}}, hertz) || hertz <= 0.0)
        return false;
    logHertz = std::log10(hertz);
    return true;
}

} // namespace halvern
