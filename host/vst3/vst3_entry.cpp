// The VST 3 entry: the class factory with Halvern's one class, and the function that
// builds an instance (effect, core, adapter) for a host.

#include "core/exception_frame.h"
#include "host/instance_creation.h"
#include "host/plugin_exports.h"
#include "host/vst3/vst3_plugin_factory.h"
#include "host/vst3/z_audio_plugin_vst3_adapter.h"

#include <pluginterfaces/vst/ivstaudioprocessor.h>

namespace {

using namespace Steinberg;

constexpr const char* kLocation = "VST3 Plugin main";

// 'Ques' 'sane' 'ZAer' 'ZAer'; the last two words are the VST 2.4 unique ID. On this
// platform the SDK lays the words out most significant byte first ("QuessaneZAerZAer").
const FUID kClassID(0x51756573, 0x73616E65, 0x5A416572, 0x5A416572);

FUnknown* CreateVST3Instance(void*)
{
    auto* adapter = halvern::CreateInstance<halvern::ZAudioPluginVST3Adapter>(kLocation);
    return adapter != nullptr ? static_cast<Vst::IAudioProcessor*>(adapter) : nullptr;
}

const PClassInfo2& ClassRecord()
{
    static const PClassInfo2 record(kClassID.toTUID(), PClassInfo::kManyInstances, kVstAudioEffectClass, "Halvern", 0,
                                    "Fx|Reverb", "", "7.10", "VST 3.5.2");
    return record;
}

halvern::ZVST3PluginFactory* Factory = nullptr;

} // namespace

extern "C" {

// The factory is made on the first call and kept for the library's life; every later
// call adds a reference for its caller.
IPluginFactory* GetPluginFactory()
{
    return halvern::Guarded("GetPluginFactory", static_cast<IPluginFactory*>(nullptr), []() -> IPluginFactory* {
        if (Factory != nullptr) {
            Factory->addRef();
            return Factory;
        }
        const PFactoryInfo info("Quessane", "https://quessane.example/halvern", "support@quessane.example",
                                PFactoryInfo::kUnicode);
        Factory = new halvern::ZVST3PluginFactory(info);
        Factory->registerClass(ClassRecord(), CreateVST3Instance, nullptr);
        return Factory;
    });
}

} // extern "C"
