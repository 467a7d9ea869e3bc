#pragma once

// Display texts shared by many parameters, and the reading of what a user types back.

#include <string>
#include <string_view>

namespace halvern {

// "On" or "Off" for a switch.
std::string FormatOnOff(int on);
// A fraction shown as percent with one decimal: 0.255 -> "25.5 %". Typed text is read
// as percent.
std::string FormatPercent(double fraction);
bool ParsePercent(std::string_view text, double& fraction);

// Seconds shown below 1 s in milliseconds ("{0;.1} ms"), from 1 s in seconds
// ("{0;.2} s"). Typed text is read as milliseconds.
std::string FormatTime(double seconds);
bool ParseTime(std::string_view text, double& seconds);

// A frequency stored as log10 of hertz, shown in hertz by the frequency display. Typed
// text is in hertz; 0 or less is not a frequency and is refused.
std::string FormatLogFrequency(double logHertz);
bool ParseLogFrequency(std::string_view text, double& logHertz);

} // namespace halvern
