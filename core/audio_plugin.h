#pragma once

// The host-independent plug-in: what every host adapter drives. It owns the channel
// configuration, the parameter interface, the processing frame that turns one host call
// into calls of the effect (locks, denormal offset, bypass with latency compensation,
// oversampling, channel modes, pieces of at most the maximum sub-block), and the locks
// that keep processing apart from changes of the set-up.

#include "core/audio_plugin_automation.h"
#include "core/bypass_delay_line.h"
#include "core/channel_mode.h"
#include "core/midi_processor.h"
#include "core/oversampler.h"
#include "core/plugin_editor.h"
#include "core/z_value_number.h"
#include "core/z_lock.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace halvern {

class ZSerializationContext;

// Host time information for the current block; the host adapter fills it.
struct ZHostTimeInfo {
    double tempo = 120.0;            // beats per minute
    double sampleRate = 0.0;
    double musicalPosition = 0.0;    // in quarter notes
    bool positionValid = false;      // the host supplied tempo and position
    int timeSigNumerator = 4;
    int timeSigDenominator = 4;
    double barStart = 0.0;           // position of the current bar's start, in quarter notes
};

// The buffers of the block being processed, in one direction.
struct ZBlockBuffers {
    float* const* channels = nullptr;
    int busCount = 0;
    int sampleCount = 0;
    bool isInput = false;
};

class ZAudioPlugin : public ZAudioPluginAutomation<ZMIDIProcessor> {
public:
    static constexpr int kMaxChannels = 16;
    static constexpr int kDefaultSubBlock = 256;
    static constexpr int kDefaultAutomationSubBlock = 64;
    static constexpr float kDenormalOffset = 1.0e-15f;

    ZAudioPlugin();
    ~ZAudioPlugin() override;

    // ---- parameter interface (each runs in an exception frame named after it) ----
    virtual int32_t GetParameterCount();
    virtual void SetParameter(int32_t index, double value);
    virtual void SetParameterIfChanged(int32_t index, double value);
    // A change that belongs at the start of the next block exactly, without the glide
    // (hosts that place each change at its sample).
    void SetParameterAtBlockStart(int32_t index, double value);
    // Called after each change a host made through SetParameter or SetParameterAtBlockStart,
    // on the caller's thread (which may be the audio thread): nothing may block here.
    virtual void HostChangedParameter(int32_t index);
    virtual double GetParameter(int32_t index);
    virtual std::string GetParameterName(int32_t index);
    virtual std::string GetParameterID(int32_t index);
    virtual std::string GetParameterValueName(int32_t index);
    virtual std::string GetParameterValueNameFrom01(int32_t index, double value);
    virtual double ParseParameterValueName(int32_t index, const std::string& text);
    // Sets a parameter from a text in its display units; false, changing nothing, when
    // the text is not a value of the parameter.
    bool SetParameterFromDisplayText(int32_t index, const std::string& text);
    virtual std::string GetParameterUnitsName(int32_t index);
    virtual ZParameterType GetParameterType(int32_t index);
    virtual double GetParameterDefaultValue(int32_t index);

    virtual int32_t GetInputBusCount();
    virtual int32_t GetOutputBusCount();

    // Samples the plug-in keeps sounding after its input stops, latency included.
    virtual int32_t GetTailSamples();

    // The names hosts show for the plug-in and its maker.
    const std::string& productName() const { return productName_; }
    const std::string& vendorName() const { return vendorName_; }
    // Whether the plug-in wants MIDI input, and whether it produces MIDI output.
    virtual bool ReceivesMIDI();
    virtual bool SendsMIDI();
    // The parameter a MIDI controller (0..127, 128 aftertouch, 129 pitch-bend) on a
    // channel (0..15) drives, or -1 when it drives none.
    virtual int32_t GetMIDIControllerParameter(int channel, int controller);

    // ---- the editor ----
    // Whoever composes the instance says how its editor is built.
    void SetEditorFactory(ZEditorFactory factory) { editorFactory_ = factory; }
    bool HasEditor() const { return editorFactory_ != nullptr; }
    // Builds the editor window's object (not yet open); null when the plug-in has none or
    // it cannot be built. UI thread only.
    std::unique_ptr<ZPluginEditor> CreateEditor(ZEditorHost& host);

    // ---- programs: the factory presets as hosts list them ----
    virtual int32_t GetProgramCount();
    virtual std::string GetProgramName(int32_t index);
    // The program loaded last, or -1.
    virtual int32_t GetCurrentProgram();
    // Loads a program at once; not on the audio thread. False when it does not load.
    virtual bool LoadProgram(int32_t index);
    // Asks for a program from any thread, the audio thread included; it is loaded soon
    // after, outside the audio thread, and the host is told the changed values.
    virtual void RequestProgram(int32_t index);

    // Stores the state into, or reads it from, the context's element. Every level of the
    // plug-in chain adds its own items and hands on to its base; this root level has none.
    virtual void Serialize(const ZSerializationContext& context);
    // The state changed as a whole (a slot switch, for one): every parameter is reported
    // to the host again with the next pending automation.
    virtual void StateChanged();

    // Prepares buffers, oversampler and delay lines for the sample rate and maximal block
    // length; runs under the processing lock. Until it completes the instance is
    // unprepared, so a preparation that fails leaves it silent.
    virtual void InitProcessing();
    // Rates above 100 Hz and up to 768 kHz; hosts' other rates are not taken.
    static bool IsUsableSampleRate(double rate);

    // ---- processing hooks ----
    // Limit to which oversampled output is clamped; below 0 means no clamp.
    virtual double GetOutputClampLimit();
    // Called on a channel that a channel mode leads past the effect (dry, latency-aligned).
    virtual void PassThroughChannel(float* channel, int32_t sampleCount, bool secondOfPair);
    virtual void ProcessSubBlock(float* const* inputs, float* const* outputs, int32_t sampleCount);
    virtual void BeforeProcessing(float* const* inputs, float* const* outputs, int32_t sampleCount, bool replacing);
    virtual void AfterProcessing(float* const* inputs, float* const* outputs, int32_t sampleCount, bool replacing);
    virtual void PrepareForProcessingOnce(float* const* inputs, float* const* outputs, int32_t sampleCount);

    // The process entry. Turns away a concurrent call on the same instance with
    // ZException "Could not acquire mutex."; the host adapter catches it.
    void ProcessBlock(float* const* inputs, float* const* outputs, int32_t sampleCount, bool replacing);

    // ---- set-up (host's main thread; each takes the processing lock) ----
    // Total channels per direction, channels per bus, and the distance between the first
    // channels of neighbouring buses in the pointer arrays (0: as many as per bus).
    void SetChannelConfiguration(int inputs, int outputs, int channelsPerBus = 2, int busStride = 0);
    int inputChannelCount() const { return inputChannels_; }
    int outputChannelCount() const { return outputChannels_; }
    int channelsPerBus() const { return channelsPerBus_; }

    void SetSampleRate(double sampleRate);
    double sampleRate() const { return sampleRate_; }
    void SetMaxBlockSize(int samples);
    int maxBlockSize() const { return maxBlockSize_; }

    // The effect's own latency; the reported latency adds the oversampler's.
    void SetLatency(int samples);
    int GetLatency() const { return latency_; }
    void SetOversampling(int factor);
    int oversampling() const { return oversampling_; }
    void SetBypass(bool bypass);
    bool bypass() const { return bypass_; }
    // Adds the bypass switch to the host-visible parameters (at the caller's index).
    void RegisterBypassParameter();
    void SetChannelMode(ZChannelMode mode);
    ZChannelMode channelMode() const { return channelMode_; }
    // Bit i set: channel i goes through the effect in the surround mode.
    void SetSurroundChannelMask(uint32_t mask);
    uint32_t surroundChannelMask() const { return surroundMask_; }
    void SetClearOutputsFirst(bool clear);
    void SetSeparateInputBuffers(bool separate);
    void SetMetering(bool metering);
    bool metering() const { return metering_; }
    // The highest peak of the inputs and of the outputs since the editor last took them
    // (the audio thread raises them, the editor takes and clears them; no lock).
    double inputLevel() const { return inputLevel_.load(std::memory_order_relaxed); }
    double outputLevel() const { return outputLevel_.load(std::memory_order_relaxed); }
    double TakeInputLevel() { return inputLevel_.exchange(0.0, std::memory_order_relaxed); }
    double TakeOutputLevel() { return outputLevel_.exchange(0.0, std::memory_order_relaxed); }
    // Longest run the effect is given in one call; 0 or less means 256.
    void SetMaxSubBlock(int samples);
    int maxSubBlock() const { return maxSubBlock_; }
    // Shorter run used while parameter changes glide across a block.
    void SetAutomationSubBlock(int samples);

    ZHostTimeInfo& hostTime() { return hostTime_; }
    ZLock& processingLock() { return processingLock_; }
    const ZBlockBuffers& currentInputs() const { return currentInputs_; }
    const ZBlockBuffers& currentOutputs() const { return currentOutputs_; }

protected:
    // For a level above whose own preparation failed: the instance stays silent until the
    // next preparation succeeds. Under the processing lock.
    void AbandonPreparation() { prepared_ = false; }
    void SetNames(std::string productName, std::string vendorName);

private:
    using ChannelArray = std::array<float*, kMaxChannels>;

    void addDenormalOffset(float* const* inputs, int channels, int n) const;
    void processFrame(ChannelArray& inputs, ChannelArray& outputs, int n, bool replacing);
    void processDirect(ChannelArray& inputs, ChannelArray& outputs, int n, bool replacing);
    void processOversampled(ChannelArray& inputs, ChannelArray& outputs, int n, bool replacing);
    void processBypass(const ChannelArray& inputs, const ChannelArray& outputs, int n);
    void innerProcess(const ChannelArray& inputs, const ChannelArray& outputs, int n);
    void runPieces(ChannelArray inputs, ChannelArray outputs, int n);
    int pieceLength(int n) const;
    void takeParameterChanges(int n);
    void followBypassSwitch();
    void setParameter(int32_t index, double value, bool jump);

    // Channel modes around the effect, per two-channel bus.
    bool modeApplies(const ChannelArray& inputs, const ChannelArray& outputs, int bus) const;
    int effectiveMode(int bus) const;
    void applyModeBefore(ChannelArray& inputs, ChannelArray& outputs, int n);
    void applyModeAfter(const ChannelArray& dryInputs, const ChannelArray& outputs, int n);

    void gatherChannels(float* const* host, int busCount, int perBus, ChannelArray& into, float* substitute) const;
    double measurePeak(const ChannelArray& channels, int count, int n) const;
    static void raiseLevel(std::atomic<double>& level, double peak);
    void updateLatency();
    template <typename T>
    void setLocked(T& field, T value);
    void allocateBuffers();
    void sizeDelayLines();

    // configuration
    std::string productName_;
    std::string vendorName_;
    int inputChannels_ = 2;
    int outputChannels_ = 2;
    int channelsPerBus_ = 2;
    int busStride_ = 2;
    int effectLatency_ = 0;
    int latency_ = 0;
    int oversampling_ = 1;
    double sampleRate_ = 0.0;
    int maxBlockSize_ = 0;
    // The block length the buffers were last prepared for; a host that announces a
    // longer one without preparing again still gets pieces that fit.
    int preparedBlockSize_ = 0;
    std::atomic<bool> prepared_{false};

    // processing state
    bool bypass_ = false;
    int32_t bypassSwitch_ = 0;
    ZValueInt bypassValue_{&bypassSwitch_, 0, 1, 0, 1};
    bool gliding_ = false;
    bool blockPrepared_ = false; // PrepareForProcessingOnce has run for the host block in progress
    bool clearOutputsFirst_ = false;
    bool separateInputBuffers_ = false;
    ZChannelMode channelMode_ = ZChannelMode::Stereo;
    uint32_t surroundMask_ = 0xFF;
    bool metering_ = false;
    std::atomic<double> inputLevel_{0.0};
    std::atomic<double> outputLevel_{0.0};
    int maxSubBlock_ = 0;
    int automationSubBlock_ = kDefaultAutomationSubBlock;
    ZHostTimeInfo hostTime_;
    ZBlockBuffers currentInputs_;
    ZBlockBuffers currentOutputs_;

    // buffers, all sized in InitProcessing
    std::vector<std::vector<float>> inputCopies_;      // separate input / in-place copies
    std::vector<std::vector<float>> internalOutputs_;  // accumulate mode and downsampling
    std::vector<std::vector<float>> modeBuffers_;      // mid/side and inverted inputs
    std::vector<std::vector<float>> oversampledIn_;
    std::vector<std::vector<float>> oversampledOut_;
    std::vector<float> silence_;
    std::vector<float> discard_;
    std::vector<ZOversampler> oversamplers_;
    std::vector<ZBypassDelayLine> bypassLines_;
    std::vector<ZBypassDelayLine> passThroughLines_;

    ZEditorFactory editorFactory_ = nullptr;

    ZLock reentryLock_;
    ZLock processingLock_;
};

} // namespace halvern
