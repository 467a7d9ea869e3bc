#include "host/vst3/vst3_audio_effect.h"

#include <pluginterfaces/vst/ivstprocesscontext.h>
#include <pluginterfaces/vst/vstspeaker.h>

namespace halvern {

using namespace Steinberg;
using namespace Steinberg::Vst;

ZVST3AudioEffect::ZVST3AudioEffect()
{
    processSetup_.processMode = kRealtime;
    processSetup_.symbolicSampleSize = kSample32;
    processSetup_.maxSamplesPerBlock = 1024;
    processSetup_.sampleRate = 44100.0;
}

AudioBus* ZVST3AudioEffect::addAudioInput(const TChar* name, SpeakerArrangement arrangement)
{
    auto* bus = new AudioBus(name, kMain, BusInfo::kDefaultActive, arrangement);
    audioInputs.push_back(IPtr<Vst::Bus>(bus, false));
    return bus;
}

AudioBus* ZVST3AudioEffect::addAudioOutput(const TChar* name, SpeakerArrangement arrangement)
{
    auto* bus = new AudioBus(name, kMain, BusInfo::kDefaultActive, arrangement);
    audioOutputs.push_back(IPtr<Vst::Bus>(bus, false));
    return bus;
}

EventBus* ZVST3AudioEffect::addEventInput(const TChar* name, int32 channels)
{
    auto* bus = new EventBus(name, kMain, BusInfo::kDefaultActive, channels);
    eventInputs.push_back(IPtr<Vst::Bus>(bus, false));
    return bus;
}

int ZVST3AudioEffect::channelCount(BusDirection direction, int32 index)
{
    BusList* list = getBusList(kAudio, direction);
    if (list == nullptr || index < 0 || index >= static_cast<int32>(list->size()))
        return 0;
    auto* bus = FCast<AudioBus>(list->at(static_cast<size_t>(index)));
    return bus != nullptr ? SpeakerArr::getChannelCount(bus->getArrangement()) : 0;
}

bool ZVST3AudioEffect::acceptsArrangement(SpeakerArrangement arrangement)
{
    return arrangement == SpeakerArr::kStereo || arrangement == SpeakerArr::kMono;
}

tresult PLUGIN_API ZVST3AudioEffect::setBusArrangements(SpeakerArrangement* inputs, int32 inputCount,
                                                        SpeakerArrangement* outputs, int32 outputCount)
{
    if (active_ || inputCount != static_cast<int32>(audioInputs.size()) ||
        outputCount != static_cast<int32>(audioOutputs.size()) || (inputCount > 0 && inputs == nullptr) ||
        (outputCount > 0 && outputs == nullptr))
        return kResultFalse;
    for (int32 i = 0; i < inputCount; ++i)
        if (!acceptsArrangement(inputs[i]))
            return kResultFalse;
    for (int32 i = 0; i < outputCount; ++i)
        if (!acceptsArrangement(outputs[i]))
            return kResultFalse;
    for (int32 i = 0; i < inputCount; ++i)
        FCast<AudioBus>(audioInputs.at(static_cast<size_t>(i)))->setArrangement(inputs[i]);
    for (int32 i = 0; i < outputCount; ++i)
        FCast<AudioBus>(audioOutputs.at(static_cast<size_t>(i)))->setArrangement(outputs[i]);
    return kResultTrue;
}

tresult PLUGIN_API ZVST3AudioEffect::getBusArrangement(BusDirection direction, int32 index, SpeakerArrangement& arrangement)
{
    BusList* list = getBusList(kAudio, direction);
    if (list == nullptr || index < 0 || index >= static_cast<int32>(list->size()))
        return kInvalidArgument;
    auto* bus = FCast<AudioBus>(list->at(static_cast<size_t>(index)));
    if (bus == nullptr)
        return kInvalidArgument;
    arrangement = bus->getArrangement();
    return kResultTrue;
}

tresult PLUGIN_API ZVST3AudioEffect::canProcessSampleSize(int32 symbolicSampleSize)
{
    return symbolicSampleSize == kSample32 ? kResultTrue : kResultFalse;
}

tresult PLUGIN_API ZVST3AudioEffect::setupProcessing(ProcessSetup& setup)
{
    if (active_ || setup.symbolicSampleSize != kSample32 || !(setup.sampleRate > 0.0) || setup.maxSamplesPerBlock <= 0)
        return kResultFalse;
    processSetup_ = setup;
    return kResultOk;
}

tresult PLUGIN_API ZVST3AudioEffect::setActive(TBool state)
{
    active_ = state != 0;
    return Component::setActive(state);
}

uint32 PLUGIN_API ZVST3AudioEffect::getProcessContextRequirements()
{
    using Flags = IProcessContextRequirements::Flags;
    return Flags::kNeedProjectTimeMusic | Flags::kNeedBarPositionMusic | Flags::kNeedTempo | Flags::kNeedTimeSignature |
           Flags::kNeedTransportState;
}

} // namespace halvern
