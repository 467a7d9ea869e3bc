#include "vst3_test_host.h"

#include <dlfcn.h>

#include <stdexcept>

namespace vst3host {

using namespace Steinberg;
using namespace Steinberg::Vst;

tresult PLUGIN_API ParamValueQueue::getPoint(int32 index, int32& offset, ParamValue& value)
{
    if (index < 0 || index >= getPointCount())
        return kInvalidArgument;
    offset = points_[static_cast<size_t>(index)].first;
    value = points_[static_cast<size_t>(index)].second;
    return kResultOk;
}

tresult PLUGIN_API ParamValueQueue::addPoint(int32 offset, ParamValue value, int32& index)
{
    index = getPointCount();
    points_.emplace_back(offset, value);
    return kResultOk;
}

void ParameterChanges::add(ParamID id, int32 offset, ParamValue value)
{
    int32 queue = 0, point = 0;
    addParameterData(id, queue)->addPoint(offset, value, point);
}

ParamValue ParameterChanges::last(ParamID id)
{
    for (auto& queue : queues_) {
        int32 offset = 0;
        ParamValue value = -1.0;
        if (queue.getParameterId() == id && queue.getPoint(queue.getPointCount() - 1, offset, value) == kResultOk)
            return value;
    }
    return -1.0;
}

IParamValueQueue* PLUGIN_API ParameterChanges::getParameterData(int32 index)
{
    return index >= 0 && index < getParameterCount() ? &queues_[static_cast<size_t>(index)] : nullptr;
}

IParamValueQueue* PLUGIN_API ParameterChanges::addParameterData(const ParamID& id, int32& index)
{
    for (size_t i = 0; i < queues_.size(); ++i)
        if (queues_[i].getParameterId() == id) {
            index = static_cast<int32>(i);
            return &queues_[i];
        }
    queues_.reserve(64); // keeps the queues handed out in place
    index = getParameterCount();
    queues_.emplace_back(id);
    return &queues_.back();
}

Module& Module::Load(const char* path)
{
    static Module module = [path] {
        Module loaded;
        loaded.handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
        if (loaded.handle == nullptr)
            throw std::runtime_error(dlerror());
        auto entry = reinterpret_cast<bool (*)(void*)>(dlsym(loaded.handle, "ModuleEntry"));
        if (entry == nullptr || !entry(loaded.handle))
            throw std::runtime_error("ModuleEntry failed");
        loaded.getFactory = reinterpret_cast<IPluginFactory* (*)()>(dlsym(loaded.handle, "GetPluginFactory"));
        return loaded;
    }();
    return module;
}

Instance::Instance(IPluginFactory* factory)
{
    PClassInfo info;
    if (factory->getClassInfo(0, &info) != kResultOk ||
        factory->createInstance(info.cid, IComponent::iid, reinterpret_cast<void**>(&component_)) != kResultOk)
        throw std::runtime_error("the factory made no component");
    if (component_->initialize(static_cast<IHostApplication*>(&host_)) != kResultOk)
        throw std::runtime_error("the component did not initialise");
    component_->queryInterface(IAudioProcessor::iid, reinterpret_cast<void**>(&processor_));
    component_->queryInterface(IEditController::iid, reinterpret_cast<void**>(&controller_));
    if (processor_ == nullptr || controller_ == nullptr)
        throw std::runtime_error("the component is not processor and controller");
}

Instance::~Instance()
{
    stop();
    controller_->release();
    processor_->release();
    component_->terminate();
    component_->release();
}

tresult Instance::start(double rate, int32 maxBlock, int32 inputChannels, int32 outputChannels)
{
    SpeakerArrangement input = inputChannels == 1 ? SpeakerArr::kMono : SpeakerArr::kStereo;
    SpeakerArrangement output = outputChannels == 1 ? SpeakerArr::kMono : SpeakerArr::kStereo;
    if (processor_->setBusArrangements(&input, 1, &output, 1) != kResultTrue)
        return kResultFalse;
    ProcessSetup setup{kRealtime, kSample32, maxBlock, rate};
    if (processor_->setupProcessing(setup) != kResultOk || component_->setActive(true) != kResultOk)
        return kResultFalse;
    active_ = true;
    return processor_->setProcessing(true);
}

void Instance::stop()
{
    if (!active_)
        return;
    processor_->setProcessing(false);
    component_->setActive(false);
    active_ = false;
}

tresult Instance::process(Channels& in, Channels& out, ParameterChanges* changes, ParameterChanges* outputChanges,
                          uint64 inputSilence, uint64* silence)
{
    std::vector<float*> inputs, outputs;
    for (auto& channel : in)
        inputs.push_back(channel.data());
    for (auto& channel : out)
        outputs.push_back(channel.data());
    AudioBusBuffers inputBus{};
    inputBus.numChannels = static_cast<int32>(inputs.size());
    inputBus.silenceFlags = inputSilence;
    inputBus.channelBuffers32 = inputs.data();
    AudioBusBuffers outputBus{};
    outputBus.numChannels = static_cast<int32>(outputs.size());
    outputBus.channelBuffers32 = outputs.data();
    ProcessData data{};
    data.processMode = kRealtime;
    data.symbolicSampleSize = kSample32;
    data.numSamples = static_cast<int32>(out.at(0).size());
    data.numInputs = in.empty() ? 0 : 1;
    data.numOutputs = 1;
    data.inputs = in.empty() ? nullptr : &inputBus;
    data.outputs = &outputBus;
    data.inputParameterChanges = changes;
    data.outputParameterChanges = outputChanges;
    const tresult result = processor_->process(data);
    if (silence != nullptr)
        *silence = outputBus.silenceFlags;
    return result;
}

tresult Instance::flush(ParameterChanges& changes)
{
    ProcessData data{};
    data.processMode = kRealtime;
    data.symbolicSampleSize = kSample32;
    data.inputParameterChanges = &changes;
    return processor_->process(data);
}

std::vector<uint8_t> Instance::state()
{
    MemoryStream stream;
    if (component_->getState(&stream) != kResultOk)
        return {};
    const char* data = stream.getData();
    return std::vector<uint8_t>(data, data + stream.getSize());
}

tresult Instance::setState(const std::vector<uint8_t>& bytes)
{
    MemoryStream stream(const_cast<uint8_t*>(bytes.data()), static_cast<TSize>(bytes.size()));
    const tresult result = component_->setState(&stream);
    stream.seek(0, IBStream::kIBSeekSet, nullptr);
    return result == kResultOk ? controller_->setComponentState(&stream) : result;
}

std::vector<ParamValue> Instance::parameters()
{
    std::vector<ParamValue> values;
    for (int32 i = 0; i < controller_->getParameterCount(); ++i)
        values.push_back(controller_->getParamNormalized(static_cast<ParamID>(i)));
    return values;
}

} // namespace vst3host
