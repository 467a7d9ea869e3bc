// The VST 2.4 entry: builds one plug-in instance (effect, core, adapter) for a host.

#include "core/exception_frame.h"
#include "core/trace.h"
#include "core/z_exception.h"
#include "host/library_module.h"
#include "host/plugin_exports.h"
#include "host/vst2/z_audio_plugin_vst_adapter.h"

#include <exception>
#include <memory>
#include <new>

namespace {

constexpr const char* kLocation = "VST Plugin main";

halvern::ZAudioPluginVSTAdapter* CreateVST2Instance(audioMasterCallback host)
{
    using namespace halvern;
    try {
        EnsureModuleInstance();
        std::unique_ptr<ZAudioPlugin> core(CreatePluginCore());
        if (!core)
            return nullptr;
        auto* adapter = new (std::nothrow) ZAudioPluginVSTAdapter(host, std::move(core));
        if (adapter == nullptr)
            Trace("Error creating Vst plugin object.", kLocation);
        return adapter;
    } catch (const ZException&) {
        return nullptr;
    } catch (const std::exception& error) {
        ReportSystemException(error.what(), kLocation);
    } catch (...) {
        ReportSystemException("unknown exception", kLocation);
    }
    return nullptr;
}

} // namespace

extern "C" {

HALVERN_EXPORT AEffect* VSTPluginMain(audioMasterCallback host)
{
    if (host == nullptr || host(nullptr, audioMasterVersion, 0, 0, nullptr, 0.0f) == 0)
        return nullptr;
    halvern::ZAudioPluginVSTAdapter* adapter = CreateVST2Instance(host);
    return adapter != nullptr ? adapter->getAeffect() : nullptr;
}

// The same entry under its older name.
HALVERN_EXPORT AEffect* VSTPluginMainAlias(audioMasterCallback host) __asm__("main")
    __attribute__((alias("VSTPluginMain")));

} // extern "C"
