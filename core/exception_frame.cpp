#include "core/exception_frame.h"

#include "core/z_format.h"

namespace halvern {

void ReportFrameworkException(const ZException& error, const char* location) noexcept
{
    try {
        Trace(error.message(), location);
    } catch (...) {
    }
}

void ReportSystemException(const char* what, const char* location) noexcept
{
    try {
        Trace(ZFormat("SYSTEM EXCEPTION! {0}").arg(what).text(), location);
    } catch (...) {
    }
}

} // namespace halvern
