#pragma once

// The reverb's 29 host-visible parameter records: keys, display names, kinds, ranges,
// defaults, display and entry rules and help texts, in their fixed order. Panels group
// the parameters after them; only the "Gate" panel carries a value, the gate switch.
// Records 25 and 26 belong to the reverb equalizer, which owns their values.

#include "core/parameter_registry.h"
#include "core/z_value_enum.h"
#include "core/z_value_number.h"
#include "reverb/reverb_enums.h"

#include <cmath>
#include <memory>
#include <vector>

namespace halvern {

class ZEqualizerProcessorPlugin;

// The values the signal processing reads.
struct ZReverbSettings {
    double dryWet = 0.5;                 // "ReverbDepth"
    double earlyLate = 0.3;              // "Reverbation"
    double widening = 0.0;               // "Widening"
    double predelay = 0.25;              // "Predelay", seconds; 0.25 is automatic
    double size = 0.04;                  // "Size", seconds of sound travel
    double width = 1.0;                  // "Width"
    double diffusion = 1.0;              // "Diffusion"
    double reverbTime = 0.5;             // "ReverbTime", seconds
    double reverbDiffusion = 1.0;        // "ReverbDiffusion"
    int32_t reverbMode = 0;              // "ReverbMode"
    double lowDamp = 3.0;                // "LowDamp", dB
    double lowFreq = 3.0;                // "LowFreq", log10 Hz
    double highDamp = 6.0;               // "HighDamp", dB
    double highFreq = 4.0;               // "HighFreq", log10 Hz
    double modulation = 0.5;             // "Modulation"
    double modulationFrequency = -0.6020599913279624; // "ModulationFrequency", log10 of 0.25 Hz
    int32_t gateEnabled = 0;             // the "Gate" panel's switch
    double threshold = -50.0;            // "threshold1", dB
    double gateSize = 12.0;              // "gatesize", dB
    double attack = 0.001;               // "attack", seconds
    double release = 0.1;                // "release", seconds
    double saturation = 0.0;             // "saturation"
    int32_t saturationMode = 0;          // "saturationmode"
};

class ZReverbParameters {
public:
    static constexpr int kCount = 29;
    static constexpr double kMetresPerSecond = 330.0;

    explicit ZReverbParameters(ZEqualizerProcessorPlugin& equalizer);
    ~ZReverbParameters();

    // Adds the 29 records to the registry in their order.
    void registerWith(ZParameterRegistry& registry);
    // True when any value was written since the last call.
    bool takeChanges();

    const ZReverbSettings& settings() const { return settings_; }

private:
    struct Record {
        ZParameterInfo info;
        ZValue* value = nullptr;
    };
    void addPanel(const char* key, std::string_view help);
    void addValue(const char* key, const char* name, ZParameterType type, std::string_view help, std::unique_ptr<ZValue> value);
    enum class Display { Percent, Widening, Predelay, Metres, Time, Decibels, Frequency };
    void addNumber(const char* key, const char* name, double* variable, double minimum, double maximum, double increment,
                   std::string_view help, Display display);
    static void applyDisplay(ZValueDouble& value, Display display);

    ZReverbSettings settings_;
    std::vector<std::unique_ptr<ZValue>> owned_;
    std::vector<Record> records_;
};

} // namespace halvern
