#pragma once

// A small VST 3 host for the integration tests: loads a module from its bundle, takes
// its factory, and drives one instance (component, processor and controller) through
// set-up, activation, processing with parameter changes, and state.

#include <public.sdk/source/common/memorystream.h>
#include <public.sdk/source/vst/hosting/hostclasses.h>
#include <pluginterfaces/base/ipluginbase.h>
#include <pluginterfaces/vst/ivstaudioprocessor.h>
#include <pluginterfaces/vst/ivstcomponent.h>
#include <pluginterfaces/vst/ivsteditcontroller.h>
#include <pluginterfaces/vst/ivstparameterchanges.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vst3host {

using Steinberg::int32;
using Steinberg::tresult;
using Steinberg::Vst::ParamID;
using Steinberg::Vst::ParamValue;

// The points of one parameter in one block.
class ParamValueQueue : public Steinberg::Vst::IParamValueQueue {
public:
    explicit ParamValueQueue(ParamID id) : id_(id) {}
    ParamID PLUGIN_API getParameterId() override { return id_; }
    int32 PLUGIN_API getPointCount() override { return static_cast<int32>(points_.size()); }
    tresult PLUGIN_API getPoint(int32 index, int32& offset, ParamValue& value) override;
    tresult PLUGIN_API addPoint(int32 offset, ParamValue value, int32& index) override;
    tresult PLUGIN_API queryInterface(const Steinberg::TUID, void**) override { return Steinberg::kNoInterface; }
    Steinberg::uint32 PLUGIN_API addRef() override { return 1; }
    Steinberg::uint32 PLUGIN_API release() override { return 1; }

private:
    ParamID id_;
    std::vector<std::pair<int32, ParamValue>> points_;
};

// The parameter changes of one block, in either direction.
class ParameterChanges : public Steinberg::Vst::IParameterChanges {
public:
    void add(ParamID id, int32 offset, ParamValue value);
    // The last value given for id, or -1 when there is none.
    ParamValue last(ParamID id);
    int32 PLUGIN_API getParameterCount() override { return static_cast<int32>(queues_.size()); }
    Steinberg::Vst::IParamValueQueue* PLUGIN_API getParameterData(int32 index) override;
    Steinberg::Vst::IParamValueQueue* PLUGIN_API addParameterData(const ParamID& id, int32& index) override;
    tresult PLUGIN_API queryInterface(const Steinberg::TUID, void**) override { return Steinberg::kNoInterface; }
    Steinberg::uint32 PLUGIN_API addRef() override { return 1; }
    Steinberg::uint32 PLUGIN_API release() override { return 1; }

private:
    std::vector<ParamValueQueue> queues_;
};

using Channels = std::vector<std::vector<float>>;

// The loaded module; stays loaded for the life of the test program.
struct Module {
    void* handle = nullptr;
    Steinberg::IPluginFactory* (*getFactory)() = nullptr;
    static Module& Load(const char* path);
};

// One instance made by the factory's first class.
class Instance {
public:
    explicit Instance(Steinberg::IPluginFactory* factory);
    ~Instance();
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    Steinberg::Vst::IComponent* component() { return component_; }
    Steinberg::Vst::IAudioProcessor* processor() { return processor_; }
    Steinberg::Vst::IEditController* controller() { return controller_; }

    // setupProcessing and setActive(true), setProcessing(true).
    tresult start(double rate, int32 maxBlock, int32 inputChannels = 2, int32 outputChannels = 2);
    void stop();
    // Processes one block: out gets as many channels as the output bus has; silence, when
    // given, receives the output bus's silence flags.
    tresult process(Channels& in, Channels& out, ParameterChanges* changes = nullptr, ParameterChanges* outputChanges = nullptr,
                    Steinberg::uint64 inputSilence = 0, Steinberg::uint64* silence = nullptr);
    // A process call without audio that only carries parameter changes.
    tresult flush(ParameterChanges& changes);

    std::vector<uint8_t> state();
    tresult setState(const std::vector<uint8_t>& bytes);
    std::vector<ParamValue> parameters();

private:
    Steinberg::Vst::HostApplication host_;
    Steinberg::Vst::IComponent* component_ = nullptr;
    Steinberg::Vst::IAudioProcessor* processor_ = nullptr;
    Steinberg::Vst::IEditController* controller_ = nullptr;
    bool active_ = false;
};

} // namespace vst3host
