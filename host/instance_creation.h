#pragma once

// The creation of one plug-in instance for a host standard, the same for each: the
// module instance, the plug-in core, then the standard's adapter around the core. A
// ZException (such as "Error creating plugin.") gives null; any other exception is
// reported as a system exception at the entry's location and gives null too.

#include "core/audio_plugin.h"
#include "core/exception_frame.h"
#include "core/trace.h"
#include "core/z_exception.h"
#include "host/library_module.h"

#include <exception>
#include <memory>
#include <new>
#include <utility>

namespace halvern {

template <class Adapter, class... Arguments>
Adapter* CreateInstance(const char* location, Arguments&&... arguments)
{
    try {
        EnsureModuleInstance();
        std::unique_ptr<ZAudioPlugin> core(CreatePluginCore());
        if (!core)
            return nullptr;
        auto* adapter = new (std::nothrow) Adapter(std::forward<Arguments>(arguments)..., std::move(core));
        if (adapter == nullptr)
            Trace("Error creating Vst plugin object.", location);
        return adapter;
    } catch (const ZException&) {
        return nullptr;
    } catch (const std::exception& error) {
        ReportSystemException(error.what(), location);
    } catch (...) {
        ReportSystemException("unknown exception", location);
    }
    return nullptr;
}

} // namespace halvern
