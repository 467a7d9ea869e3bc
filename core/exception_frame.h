#pragma once

// The exception frame every host-reachable operation runs in. A ZException ends the
// call with the neutral result (its message goes to the trace sink under the
// location); any other exception is reported as "SYSTEM EXCEPTION! {0}" with the
// location. Nothing escapes.

#include "core/trace.h"
#include "core/z_exception.h"

#include <exception>
#include <string>
#include <utility>

namespace halvern {

void ReportSystemException(const char* what, const char* location) noexcept;
void ReportFrameworkException(const ZException& error, const char* location) noexcept;

template <typename Result, typename Body>
Result Guarded(const char* location, Result neutral, Body&& body) noexcept
{
    try {
        return std::forward<Body>(body)();
    } catch (const ZException& error) {
        ReportFrameworkException(error, location);
    } catch (const std::exception& error) {
        ReportSystemException(error.what(), location);
    } catch (...) {
        ReportSystemException("unknown", location);
    }
    return neutral;
}

template <typename Body>
void GuardedVoid(const char* location, Body&& body) noexcept
{
    Guarded(location, 0, [&] {
        std::forward<Body>(body)();
        return 0;
    });
}

} // namespace halvern
