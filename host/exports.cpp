// The library's exported functions other than the plug-in standards' own entries.

#include "core/exception_frame.h"
#include "host/library_module.h"
#include "host/plugin_exports.h"


extern "C" {

halvern::ZModule* ZLibraryDLLInitialize(const halvern::ZLibrarySettings* settings)
{
    return halvern::Guarded("ZLibraryDLLInitialize", static_cast<halvern::ZModule*>(nullptr), [&] {
        const halvern::ZLibrarySettings none;
        const halvern::ZLibrarySettings& given = settings != nullptr ? *settings : none;
        return halvern::InitializeModuleForHost(given.sharedState, given.sharedValue, given.name);
    });
}

bool InitDll()
{
    return true;
}

bool ExitDll() __attribute__((alias("InitDll")));

// Linux VST 3 hosts call these around their use of the library; nothing needs doing.
bool ModuleEntry(void*)
{
    return true;
}

bool ModuleExit()
{
    return true;
}

} // extern "C"
