// The VST 2.4 entry: builds one plug-in instance (effect, core, adapter) for a host.

#include "host/instance_creation.h"
#include "host/plugin_exports.h"
#include "host/vst2/z_audio_plugin_vst_adapter.h"

extern "C" {

HALVERN_EXPORT AEffect* VSTPluginMain(audioMasterCallback host)
{
    if (host == nullptr || host(nullptr, audioMasterVersion, 0, 0, nullptr, 0.0f) == 0)
        return nullptr;
    auto* adapter = halvern::CreateInstance<halvern::ZAudioPluginVSTAdapter>("VST Plugin main", host);
    return adapter != nullptr ? adapter->getAeffect() : nullptr;
}

// The same entry under its older name.
HALVERN_EXPORT AEffect* VSTPluginMainAlias(audioMasterCallback host) __asm__("main")
    __attribute__((alias("VSTPluginMain")));

} // extern "C"
