#pragma once

// The functions the library exports, with the calling conventions of the plug-in
// standards that call them. Nothing else is visible outside the library.

#include "core/z_object.h"

#include <cstdint>

#define HALVERN_EXPORT __attribute__((visibility("default")))

namespace Steinberg {
class IPluginFactory;
}

namespace halvern {

class ZModule;

// What a framework host hands to ZLibraryDLLInitialize: five words of shared host
// state, one further word, and the name the module instance takes.
struct ZLibrarySettings {
    const int32_t* sharedState = nullptr;
    int32_t sharedValue = 0;
    const char* name = nullptr;
};

} // namespace halvern

extern "C" {
// The effect's interface function: with a null object a new effect is made; operation 7
// returns the object, any other operation is passed to it as a message.
HALVERN_EXPORT intptr_t HalvernAudioEffectPluginInterface(halvern::ZPlugin* object, int32_t operation,
                                                          const halvern::ZPluginMessage* message);
// A framework host's initialisation; returns the module instance.
HALVERN_EXPORT halvern::ZModule* ZLibraryDLLInitialize(const halvern::ZLibrarySettings* settings);
// The VST 3 entry: the library's class factory, one more reference on each call.
HALVERN_EXPORT Steinberg::IPluginFactory* GetPluginFactory();
// Both return true and do nothing else.
HALVERN_EXPORT bool InitDll();
HALVERN_EXPORT bool ExitDll();
HALVERN_EXPORT bool ModuleEntry(void* sharedLibraryHandle);
HALVERN_EXPORT bool ModuleExit();
}
