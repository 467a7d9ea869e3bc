// The effect's interface function: how framework hosts, and the plug-in core itself,
// create the bare effect and reach its operations.

#include "core/exception_frame.h"
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

} // extern "C"
