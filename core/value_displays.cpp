#include "core/value_displays.h"

#include "core/z_format.h"

#include <cmath>

namespace halvern {

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

bool ParseTime(std::string_view text, double& seconds)
{
    double milliseconds = 0.0;
    if (!ZParseNumber(text, milliseconds))
        return false;
    seconds = milliseconds * 0.001;
    return true;
}

std::string FormatLogFrequency(double logHertz)
{
    return FormatFrequency(std::pow(10.0, logHertz));
}

bool ParseLogFrequency(std::string_view text, double& logHertz)
{
    double hertz = 0.0;
    if (!ZParseNumber(text, hertz) || hertz <= 0.0)
        return false;
    logHertz = std::log10(hertz);
    return true;
}

} // namespace halvern
