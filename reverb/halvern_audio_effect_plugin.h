#pragma once

// The reverb: a room model with predelay and early diffusers, a late reverberation
// network, and a post chain on the reverberation only (widening, equalizer, saturation,
// gate) before the dry signal is added, panned by the source position.

#include "core/audio_effect_plugin.h"
#include "core/audio_plugin.h"
#include "core/sample_ring.h"
#include "reverb/early_reflections.h"
#include "reverb/equalizer_processor.h"
#include "reverb/late_reverb_network.h"
#include "reverb/prime_table.h"
#include "reverb/reverb_gate.h"
#include "reverb/reverb_mix.h"
#include "reverb/reverb_parameters.h"
#include "reverb/room_outline.h"
#include "reverb/saturation_shaper.h"
#include "state/zml_element.h"

#include <atomic>
#include <memory>
#include <vector>

namespace halvern {

class HalvernAudioEffectPlugin : public ZAudioEffectPlugin {
public:
    // The names hosts show for the plug-in and its maker.
    static constexpr const char* kProductName = "Halvern";
    static constexpr const char* kVendorName = "Quessane";

    // The source position, automatable as "Position X" and "Position Y".
    class ReverbPosAutomationAdapterType : public ZAudioPlugin::AutomationAdapter {
    public:
        explicit ReverbPosAutomationAdapterType(HalvernAudioEffectPlugin& plugin);
        static const char* ValueName(int index) { return index == 0 ? "Position X" : "Position Y"; }
        double GetValue(int index) const;
        // Sets value i; unless notification is suppressed, the plug-in updates and the
        // host is told.
        void SetValue(int index, double value, bool suppressNotification);
        std::string GetValueText(int index) const;
        void RegisterWith(ZAudioPlugin& core);
        bool takeChanges();

    private:
        HalvernAudioEffectPlugin& plugin_;
        ZValueDouble x_;
        ZValueDouble y_;
    };

    // The positions on the floor plan, 0..1 along the width and along the length.
    struct Positions {
        double sourceX = 0.5;
        double sourceY = 0.5;
        double microphoneX = 0.5;
        double microphoneY = 1.0;
    };

    HalvernAudioEffectPlugin();
    ~HalvernAudioEffectPlugin() override;

    void Update() override;
    void Reset() override;
    void Prepare(double sampleRate, int32_t maxBlockSize) override;
    void Process(const ZHostTimeInfo* context, float* const* inputs, float* const* outputs, int32_t sampleCount) override;
    int32_t GetTailLength() override;
    int32_t GetRingingLength() override;
    int32_t GetProcessingFlags() override;
    void RegisterParameters(ZAudioPlugin& core) override;
    bool TakeParameterChanges() override;
    // "Position" (source and microphone), the position editor's "graph" kept as stored,
    // and "Equalizer" with the parametric bands.
    void SerializeAdditionalState(const ZSerializationContext& context) override;

    const ZReverbSettings& settings() const { return parameters_.settings(); }
    const Positions& positions() const { return positions_; }
    void SetMicrophonePosition(double x, double y);
    // The room outline the position editor draws, kept in the "graph" node.
    std::vector<ZRoomOutline::Point> RoomOutline();
    void SetRoomOutline(const std::vector<ZRoomOutline::Point>& points);
    ReverbPosAutomationAdapterType& positionAutomation() { return positionAutomation_; }

    // The equalizer's parametric bands. A band set is limited to its ranges and sounds
    // from the next block on.
    ZEqualizerProcessorPlugin::Bands EqualizerBands();
    void SetEqualizerBand(int index, const ZEqualizerBand& band);
    // The equalizer's filters as they run now.
    ZEqualizerResponse EqualizerResponse();

    // While on, each block's reverberation as it leaves the post chain (before the dry
    // signal is added), the mean of both channels, is kept for an analyser.
    void SetWetAnalysis(bool on) { wetAnalysis_.store(on, std::memory_order_relaxed); }
    // Copies up to maxCount of the newest kept samples that were not read yet, oldest
    // first; answers how many. Never makes the audio thread wait.
    size_t ReadWetSamples(float* out, size_t maxCount);

    // What the last update derived, for measurements.
    const ZRoomGeometry& geometry() const { return geometry_; }
    const ZLateReverbNetwork& lateNetwork() const { return late_; }

private:
    void updateUnlocked();
    void serializePositions(const ZSerializationContext& context);
    void serializeEqualizerBands(const ZSerializationContext& context);
    void renderReverb(const float* inLeft, const float* inRight, float* outLeft, float* outRight, int n);
    void addDry(const float* inLeft, const float* inRight, float* outLeft, float* outRight, int n) const;

    ZEqualizerProcessorPlugin equalizer_;
    ZReverbParameters parameters_;
    Positions positions_;
    ReverbPosAutomationAdapterType positionAutomation_;
    std::unique_ptr<ZMLElement> positionGraph_; // the position editor's room outline, kept as stored

    ZPrimeTable primes_;
    ZRoomGeometry geometry_;
    ZEarlyReflections early_;
    std::vector<double> earlyLeft_;  // work buffers: the early reflections of a run
    std::vector<double> earlyRight_;
    ZLateReverbNetwork late_;
    ZSaturationShaper saturation_;
    ZReverbGate gate_;
    ZReverbMix mix_;
    bool gateActive_ = false;
    bool prepared_ = false;
    std::atomic<bool> wetAnalysis_{false};
    ZSampleRing wetSamples_;
    ZLock wetReader_; // held by the reader and by preparation, which resizes the ring
};

} // namespace halvern
