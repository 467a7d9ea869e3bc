#pragma once

// The framework's exception: a message text. Every failure inside the framework is
// thrown as a ZException; host-facing entry points turn it into a neutral result.

#include <stdexcept>
#include <string>

namespace halvern {

class ZException : public std::runtime_error {
public:
    explicit ZException(const std::string& message) : std::runtime_error(message) {}
    const char* message() const noexcept { return what(); }
};

} // namespace halvern
