// The library's exported functions other than the plug-in standards' own entries.

#include "core/exception_frame.h"
#include "host/library_module.h"
#include "host/plugin_exports.h"
#include "reverb/halvern_audio_effect_plugin.h"


using halvern::ZPlugin;
using halvern::ZPluginMessage;

extern "C" {

intptr_t HalvernAudioEffectPluginInterface(ZPlugin* object, int32_t operation, const ZPluginMessage* message)
{
    return halvern::Guarded("HalvernAudioEffectPluginInterface", intptr_t{0}, [&]() -> intptr_t {
        if (object == nullptr)
            object = new halvern::HalvernAudioEffectPlugin();
        if (operation == halvern::ZAudioEffectPlugin::kMessageCreate)
            return reinterpret_cast<intptr_t>(object);
        const ZPluginMessage empty;
        return object->HandleMessage(operation, message != nullptr ? *message : empty);
    });
}

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
