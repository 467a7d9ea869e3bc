#include "analysis/decay_measurement.h"

#include "analysis/core_block_processor.h"
#include "state/plugin_state_block.h"

namespace halvern {

ZDecayMeasurement MeasureDecay(const ZAudioData& response)
{
    return {AnalyseImpulseResponse(response), MeasureLevelEnvelope(response)};
}

std::optional<ZDecayMeasurement> MeasureDecayOfState(ZMLElement& state, const ZImpulseSettings& settings,
                                                     const std::atomic<bool>* cancel)
{
    ZCoreBlockProcessor instance;
    instance.setup(settings.sampleRate, settings.blockSize);
    ApplyPluginState(instance.core(), state);
    instance.start();
    const std::optional<ZAudioData> response =
        RenderImpulseResponse(instance, settings.sampleRate, settings.blockSize, cancel);
    if (!response)
        return std::nullopt;
    return MeasureDecay(*response);
}

} // namespace halvern
