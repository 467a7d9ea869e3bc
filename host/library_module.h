#pragma once

// What one loaded copy of the library holds for all its plug-in instances: the module
// instance with its creation lock, the processor features read at load time, the live
// instance counters of both host standards, and the creation of a plug-in core.
//
// The module instance is made by the first instance creation and destroyed when the
// live count of either standard falls below 1 in an adapter's destructor (each
// standard checks only its own count) or when the library is unloaded; the next
// creation makes a new one.

#include "host/z_module.h"
#include "state/preset_collection.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace halvern {

class ZAudioPlugin;

struct ZProcessorFeatures {
    bool sse = false;    // leaf 1, EDX bit 25
    bool sse2 = false;   // EDX bit 26
    bool sse3 = false;   // ECX bit 0
    bool ssse3 = false;  // ECX bit 9
    bool sse41 = false;  // ECX bit 19
    bool sse42 = false;  // ECX bit 20
};

// Read once when the library is loaded.
const ZProcessorFeatures& ProcessorFeatures();

// Creates the module instance under the module creation lock when there is none, loads
// the built-in data blocks into it and initialises it.
void EnsureModuleInstance();
// The module instance, or null.
ZModule* CurrentModule();
// A framework host's initialisation: keeps its five words of shared state (when given)
// and its further word, creates the module instance without the lock and the built-in
// blocks when there is none, named `name`, and returns it.
ZModule* InitializeModuleForHost(const int32_t* sharedState, int32_t sharedValue, const char* name);

// Live adapter counts. Each Released call destroys the module instance when its count
// falls below 1.
void VST2InstanceCreated();
void VST2InstanceReleased();
void VST3InstanceCreated();
void VST3InstanceReleased();

// The built-in data blocks, registered by static initialisation in the library: the
// first is read into the module's store, the second is handed to it as it lies.
void RegisterBuiltInStore(std::span<const uint8_t> block);
void RegisterBuiltInResource(std::span<const uint8_t> block);

// The factory preset collection of the current module instance (its built-in store);
// empty while there is none.
ZPresetCollection FactoryPresets();

// A new plug-in core (the whole effect chain) with its preset manager on the factory
// presets and the user's folder, or null when it cannot be made. Throws ZException
// "Error creating plugin." when the effect cannot be created.
ZAudioPlugin* CreatePluginCore();

} // namespace halvern
