#pragma once

// The effect side of the plug-in: what the core wraps and drives. An effect receives
// its processing calls either as virtual calls from the core or as messages through the
// library's interface function; both reach the same operations.

#include "core/z_lock.h"
#include "core/z_object.h"

#include <cstdint>

namespace halvern {

class ZAudioPlugin;
class ZSerializationContext;
struct ZHostTimeInfo;

class ZAudioEffectPlugin : public ZPlugin {
public:
    // Message codes of the plug-in system.
    static constexpr int32_t kMessageCreate = 7;
    static constexpr int32_t kMessagePrepare = 100;          // args: sample rate (Hz), maximal block length
    static constexpr int32_t kMessageProcess = 101;          // args: context, inputs, outputs, sample count
    static constexpr int32_t kMessageTailLength = 102;
    static constexpr int32_t kMessageLatency = 103;
    static constexpr int32_t kMessageSetActive = 104;        // arg: 1 when processing starts, 0 when it stops
    static constexpr int32_t kMessageProcessingFlags = 105;
    static constexpr int32_t kMessageReset = 106;
    static constexpr int32_t kMessageUpdate = 107;

    // Bits of GetProcessingFlags().
    static constexpr int32_t kFlagAddsIntoOutputs = 1;       // outputs must be cleared before Process
    static constexpr int32_t kFlagNeedsSeparateInputs = 2;   // Process cannot run in place

    intptr_t HandleMessage(int32_t code, const ZPluginMessage& message) override;

    // Recomputes everything derived from the parameter values.
    virtual void Update();
    virtual void Process(const ZHostTimeInfo* context, float* const* inputs, float* const* outputs, int32_t sampleCount);
    // Clears the sound state so that the next block starts from silence.
    virtual void Reset();
    // Samples the effect keeps sounding after its input stops.
    virtual int32_t GetTailLength();
    // Samples the current settings take to fall 120 dB below the response's peak, as
    // derived by the last update; 0 when the effect does not know.
    virtual int32_t GetRingingLength();
    virtual int32_t GetLatency();
    virtual int32_t GetProcessingFlags();
    // Told when the host starts (true) or stops (false) processing; starting resets.
    virtual void SetActive(bool active);
    // Stores the rate and block length and sizes everything for them.
    virtual void Prepare(double sampleRate, int32_t maxBlockSize);
    // State that is not plain parameter values, stored after the parameters or read
    // back (then under the plug-in mutex).
    virtual void SerializeAdditionalState(const ZSerializationContext& context);

    // Adds the effect's host-visible parameters (and its automation adapters) to the
    // core; called once, before anything else registers.
    virtual void RegisterParameters(ZAudioPlugin& core);
    // True when a parameter changed since the last call, so that Update must run.
    virtual bool TakeParameterChanges();

    // The message form of Prepare, with an integer sample rate.
    int32_t PrepareFromMessage(int32_t sampleRate, int32_t maxBlockSize);

    double sampleRate() const { return sampleRate_; }
    int32_t maxBlockSize() const { return maxBlockSize_; }
    // Held by update, reset, process and state loading for their whole run.
    ZLock& pluginMutex() { return pluginMutex_; }

private:
    double sampleRate_ = 0.0;
    int32_t maxBlockSize_ = 0;
    ZLock pluginMutex_;
};

} // namespace halvern
