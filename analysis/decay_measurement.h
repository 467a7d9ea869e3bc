#pragma once

// The decay of the reverb with given settings: a private instance is loaded with them,
// its impulse response rendered and measured. The decay display and the offline
// renderer's report measure the same way, so they show the same figures.

#include "analysis/impulse_analysis.h"
#include "state/zml_element.h"

#include <atomic>
#include <optional>

namespace halvern {

struct ZDecayMeasurement {
    ZImpulseReport report;
    ZLevelEnvelope envelope;
};

// The report and the level envelope of a response.
ZDecayMeasurement MeasureDecay(const ZAudioData& response);

struct ZImpulseSettings {
    double sampleRate = 48000.0;
    int blockSize = 512;
};

// The decay of a fresh instance that has read the state (a stored "settings" document of
// the whole plug-in). Empty when cancel is set before the rendering ends. Throws what
// reading the state throws.
std::optional<ZDecayMeasurement> MeasureDecayOfState(ZMLElement& state, const ZImpulseSettings& settings,
                                                     const std::atomic<bool>* cancel = nullptr);

} // namespace halvern
