#include "host/library_module.h"

#include "core/trace.h"
#include "core/z_lock.h"
#include "editor/halvern_editor.h"
#include "host/plugin_exports.h"
#include "reverb/halvern_audio_effect_plugin.h"
#include "state/quessane_audio_effect_plugin.h"
#include "state/z_memory_stream.h"

#include <cpuid.h>
#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>

namespace halvern {
namespace {

constexpr const char* kFatalMessage = "Fatal exception occured. Please contact the developer.";
constexpr ZEffectDescription kEffectDescription{500, 0};

struct ModuleState {
    ZProcessorFeatures features;
    std::string libraryPath;   // found at load time; the module instance gets it
    std::unique_ptr<ZModule> module;
    std::array<int32_t, 5> sharedHostState{}; // copied in by a framework host
    int32_t sharedHostValue = 0;
    std::atomic<int32_t> liveVST2{0};
    std::atomic<int32_t> liveVST3{0};
    std::span<const uint8_t> builtInStore;
    std::span<const uint8_t> builtInResource;
};

ModuleState& State()
{
    static ModuleState state;
    return state;
}

ZLock& CreationLock()
{
    static ZLock lock;
    return lock;
}

ZProcessorFeatures ReadProcessorFeatures()
{
    ZProcessorFeatures features;
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0)
        return features;
    features.sse = (edx >> 25) & 1u;
    features.sse2 = (edx >> 26) & 1u;
    features.sse3 = ecx & 1u;
    features.ssse3 = (ecx >> 9) & 1u;
    features.sse41 = (ecx >> 19) & 1u;
    features.sse42 = (ecx >> 20) & 1u;
    return features;
}

// The library's own file, found through one of its symbols.
std::string LibraryPath()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&HalvernAudioEffectPluginInterface), &info) != 0 && info.dli_fname != nullptr)
        return info.dli_fname;
    return {};
}

void ReportFatal()
{
    std::fputs(kFatalMessage, stderr);
    std::fputc('\n', stderr);
    Trace(kFatalMessage, "Library");
}

std::unique_ptr<ZModule> CreateModuleInstance()
{
    return std::make_unique<ZModule>(State().libraryPath);
}

void DestroyModuleInstance()
{
    State().module.reset();
}

// Library attach and detach: a static object of the library.
struct LibraryLifetime {
    LibraryLifetime()
    {
        try {
            State().features = ReadProcessorFeatures();
            State().libraryPath = LibraryPath();
        } catch (...) {
            ReportFatal();
        }
    }
    ~LibraryLifetime()
    {
        try {
            DestroyModuleInstance();
        } catch (...) {
            ReportFatal();
        }
    }
};

const LibraryLifetime libraryLifetime;

void Released(std::atomic<int32_t>& count)
{
    if (--count < 1) {
        ZLockHolder hold(CreationLock(), -1);
        DestroyModuleInstance();
    }
}

} // namespace

const ZProcessorFeatures& ProcessorFeatures()
{
    return State().features;
}

void EnsureModuleInstance()
{
    ZLockHolder hold(CreationLock(), -1);
    ModuleState& state = State();
    if (state.module)
        return;
    auto module = CreateModuleInstance();
    if (!state.builtInStore.empty()) {
        ZMemoryStream stream(state.builtInStore.data(), static_cast<int32_t>(state.builtInStore.size()));
        module->LoadBuiltInStore(stream);
    }
    if (!state.builtInResource.empty())
        module->SetBuiltInResource(state.builtInResource);
    module->Initialize();
    state.module = std::move(module);
}

ZModule* CurrentModule()
{
    return State().module.get();
}

ZModule* InitializeModuleForHost(const int32_t* sharedState, int32_t sharedValue, const char* name)
{
    ModuleState& state = State();
    if (sharedState != nullptr)
        std::copy_n(sharedState, state.sharedHostState.size(), state.sharedHostState.begin());
    state.sharedHostValue = sharedValue;
    if (!state.module) {
        auto module = CreateModuleInstance();
        module->SetName(name != nullptr ? name : "");
        module->Initialize();
        state.module = std::move(module);
    }
    return state.module.get();
}

void VST2InstanceCreated() { ++State().liveVST2; }
void VST2InstanceReleased() { Released(State().liveVST2); }
void VST3InstanceCreated() { ++State().liveVST3; }
void VST3InstanceReleased() { Released(State().liveVST3); }

void RegisterBuiltInStore(std::span<const uint8_t> block) { State().builtInStore = block; }
void RegisterBuiltInResource(std::span<const uint8_t> block) { State().builtInResource = block; }

ZPresetCollection FactoryPresets()
{
    const ZModule* module = CurrentModule();
    return module != nullptr ? ZPresetCollection::ReadBlock(module->builtInStore()) : ZPresetCollection();
}

ZAudioPlugin* CreatePluginCore()
{
    auto core = std::make_unique<ZQuessaneAudioEffectPlugin>();
    core->Attach(HalvernAudioEffectPlugin::kProductName, HalvernAudioEffectPlugin::kVendorName,
                 HalvernAudioEffectPluginInterface, kEffectDescription);
    const ZModule* module = CurrentModule();
    core->SetPresets(FactoryPresets(), module != nullptr ? module->userDataFolder() : std::string());
    core->SetEditorFactory(CreateHalvernEditor);
    return core.release();
}

} // namespace halvern
