#include "tools/vst2_render_target.h"

#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace halvern::tools {

namespace {

using EntryFunction = AEffect* (*)(audioMasterCallback);

// The target whose effect is being created: the entry point calls back (for the host
// version) before the renderer can tie the new record to its target.
thread_local Vst2RenderTarget* constructing = nullptr;

constexpr double kTempo = 120.0;

} // namespace

Vst2RenderTarget::Library::~Library()
{
    if (handle != nullptr)
        dlclose(handle);
}

Vst2RenderTarget::Vst2RenderTarget(const std::string& libraryPath)
{
    library_.handle = dlopen(libraryPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library_.handle == nullptr)
        throw std::runtime_error("cannot load " + libraryPath + ": " + dlerror());
    auto entry = reinterpret_cast<EntryFunction>(dlsym(library_.handle, "VSTPluginMain"));
    if (entry == nullptr)
        entry = reinterpret_cast<EntryFunction>(dlsym(library_.handle, "main"));
    if (entry == nullptr)
        throw std::runtime_error(libraryPath + " has no VST 2.4 entry point");

    constructing = this;
    effect_ = entry(HostCallback);
    constructing = nullptr;
    if (effect_ == nullptr || effect_->magic != kEffectMagic)
        throw std::runtime_error(libraryPath + " did not create an effect");
    effect_->resvd1 = reinterpret_cast<VstIntPtr>(this);
    if ((effect_->flags & effFlagsCanReplacing) == 0 || effect_->numOutputs < 1) {
        dispatch(effClose);
        throw std::runtime_error(libraryPath + " does not process audio in replacing mode");
    }
    dispatch(effOpen);
}

Vst2RenderTarget::~Vst2RenderTarget()
{
    if (started_) {
        dispatch(effStopProcess);
        dispatch(effMainsChanged, 0, 0);
    }
    dispatch(effClose);
}

VstIntPtr Vst2RenderTarget::HostCallback(AEffect* effect, VstInt32 opcode, VstInt32, VstIntPtr, void*, float)
{
    Vst2RenderTarget* target = effect != nullptr && effect->resvd1 != 0 ? reinterpret_cast<Vst2RenderTarget*>(effect->resvd1)
                                                                       : constructing;
    if (opcode == audioMasterVersion)
        return 2400;
    return target != nullptr ? target->answer(opcode) : 0;
}

VstIntPtr Vst2RenderTarget::answer(VstInt32 opcode)
{
    switch (opcode) {
    case audioMasterGetTime:
        return reinterpret_cast<VstIntPtr>(&time_);
    case audioMasterGetSampleRate:
        return static_cast<VstIntPtr>(time_.sampleRate);
    case audioMasterGetBlockSize:
        return maxBlock_;
    case audioMasterGetCurrentProcessLevel:
        return kVstProcessLevelOffline;
    default:
        return 0;
    }
}

VstIntPtr Vst2RenderTarget::dispatch(VstInt32 opcode, VstInt32 index, VstIntPtr value, void* ptr, float opt)
{
    return effect_->dispatcher(effect_, opcode, index, value, ptr, opt);
}

int Vst2RenderTarget::parameterCount() { return effect_->numParams; }

std::string Vst2RenderTarget::parameterKey(int index)
{
    char name[256] = {};
    dispatch(effGetParamName, index, 0, name);
    return std::string(name, strnlen(name, sizeof name - 1));
}

bool Vst2RenderTarget::setFromText(int index, const std::string& text)
{
    std::vector<char> buffer(text.begin(), text.end());
    buffer.push_back('\0');
    return dispatch(effString2Parameter, index, 0, buffer.data()) != 0;
}

void Vst2RenderTarget::setNormalized(int index, double normalized)
{
    effect_->setParameter(effect_, index, static_cast<float>(normalized));
}

void Vst2RenderTarget::setup(double sampleRate, int maxBlock)
{
    maxBlock_ = maxBlock;
    time_ = VstTimeInfo{};
    time_.sampleRate = sampleRate;
    time_.tempo = kTempo;
    time_.timeSigNumerator = time_.timeSigDenominator = 4;
    time_.flags = kVstTransportPlaying | kVstPpqPosValid | kVstTempoValid | kVstBarsValid | kVstTimeSigValid;
    dispatch(effSetSampleRate, 0, 0, nullptr, static_cast<float>(sampleRate));
    dispatch(effSetBlockSize, 0, maxBlock);

    const size_t block = static_cast<size_t>(maxBlock);
    silence_.assign(block, 0.0f);
    scratch_.assign(block * static_cast<size_t>(std::max(effect_->numOutputs, 2)), 0.0f);
    inputs_.assign(static_cast<size_t>(std::max(effect_->numInputs, 0)), silence_.data());
    outputs_.resize(static_cast<size_t>(effect_->numOutputs));
    for (size_t channel = 0; channel < outputs_.size(); ++channel)
        outputs_[channel] = scratch_.data() + channel * block;
}

void Vst2RenderTarget::start()
{
    dispatch(effMainsChanged, 0, 1);
    dispatch(effStartProcess);
    started_ = true;
}

void Vst2RenderTarget::process(float* const* inputs, float* const* outputs, int n)
{
    for (size_t channel = 0; channel < inputs_.size(); ++channel)
        inputs_[channel] = channel < 2 ? inputs[channel] : silence_.data();
    // A mono plug-in writes the left output; the right one copies it below.
    for (size_t channel = 0; channel < std::min<size_t>(outputs_.size(), 2); ++channel)
        outputs_[channel] = outputs[channel];
    effect_->processReplacing(effect_, inputs_.data(), outputs_.data(), n);
    if (outputs_.size() == 1)
        std::copy(outputs[0], outputs[0] + n, outputs[1]);

    time_.samplePos += n;
    time_.ppqPos = time_.samplePos / time_.sampleRate * kTempo / 60.0;
    time_.barStartPos = std::floor(time_.ppqPos / 4.0) * 4.0;
}

int Vst2RenderTarget::tailLength()
{
    // 0 means "not reported", 1 "no tail".
    const VstIntPtr samples = dispatch(effGetTailSize);
    return samples > 1 ? static_cast<int>(std::min<VstIntPtr>(samples, 1 << 30)) : 0;
}

} // namespace halvern::tools
