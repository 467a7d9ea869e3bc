#include "core/audio_effect_plugin.h"

namespace halvern {

intptr_t ZAudioEffectPlugin::HandleMessage(int32_t code, const ZPluginMessage& message)
{
    switch (code) {
    case kMessageCreate:
        return reinterpret_cast<intptr_t>(this);
    case kMessagePrepare:
        return PrepareFromMessage(message.argument(1), message.argument(2));
    case kMessageProcess:
        Process(static_cast<const ZHostTimeInfo*>(message.pointer(1)), static_cast<float* const*>(message.pointer(2)),
                static_cast<float* const*>(message.pointer(3)), message.argument(4));
        return 0;
    case kMessageTailLength:
        return GetTailLength();
    case kMessageLatency:
        return GetLatency();
    case kMessageSetActive:
        SetActive(message.argument(1) != 0);
        return 0;
    case kMessageProcessingFlags:
        return GetProcessingFlags();
    case kMessageReset:
        Reset();
        return 0;
    case kMessageUpdate:
        Update();
        return 0;
    default:
        return ZPlugin::HandleMessage(code, message);
    }
}

void ZAudioEffectPlugin::Update() {}
void ZAudioEffectPlugin::Process(const ZHostTimeInfo*, float* const*, float* const*, int32_t) {}
void ZAudioEffectPlugin::Reset() {}
int32_t ZAudioEffectPlugin::GetTailLength() { return 0; }
int32_t ZAudioEffectPlugin::GetRingingLength() { return 0; }
int32_t ZAudioEffectPlugin::GetLatency() { return 0; }
int32_t ZAudioEffectPlugin::GetProcessingFlags() { return 0; }

void ZAudioEffectPlugin::SetActive(bool active)
{
    if (active)
        Reset();
}

void ZAudioEffectPlugin::Prepare(double sampleRate, int32_t maxBlockSize)
{
    sampleRate_ = sampleRate;
    maxBlockSize_ = maxBlockSize;
}

void ZAudioEffectPlugin::RegisterParameters(ZAudioPlugin&) {}
bool ZAudioEffectPlugin::TakeParameterChanges() { return false; }

void ZAudioEffectPlugin::SerializeAdditionalState(const ZSerializationContext&) {}

int32_t ZAudioEffectPlugin::PrepareFromMessage(int32_t sampleRate, int32_t maxBlockSize)
{
    Prepare(static_cast<double>(sampleRate), maxBlockSize);
    return 0;
}

} // namespace halvern
