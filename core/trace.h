#pragma once

// The framework's diagnostic output. A message is written to standard error only when
// the environment variable HALVERN_TRACE is set; otherwise it is discarded. Tests may
// install a capture function to see what was traced.

#include <functional>
#include <string_view>

namespace halvern {

void Trace(std::string_view text, std::string_view location);

// Replaces the output of the sink (nullptr restores the default); returns the previous one.
using TraceSink = std::function<void(std::string_view text, std::string_view location)>;
TraceSink SetTraceSink(TraceSink sink);

} // namespace halvern
