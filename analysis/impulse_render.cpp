#include "analysis/impulse_render.h"

#include <cmath>

namespace halvern {

std::optional<ZAudioData> RenderImpulseResponse(ZBlockProcessor& processor, double sampleRate, int blockSize,
                                                const std::atomic<bool>* cancel)
{
    constexpr float kSilent = 1e-5f; // -100 dB
    const size_t quiet = static_cast<size_t>(0.5 * sampleRate);
    const size_t longest = static_cast<size_t>(90.0 * sampleRate);
    const size_t block = static_cast<size_t>(blockSize);

    ZAudioData output;
    output.sampleRate = sampleRate;
    output.channels.assign(2, {});
    std::vector<float> in(block, 0.0f), outLeft(block), outRight(block);
    in[0] = 1.0f;
    size_t quietRun = 0;
    for (size_t at = 0; at < longest && (quietRun < quiet || at < static_cast<size_t>(processor.tailLength()));
         at += block) {
        if (cancel != nullptr && cancel->load(std::memory_order_relaxed))
            return std::nullopt;
        float* inputs[2] = {in.data(), in.data()};
        float* outputs[2] = {outLeft.data(), outRight.data()};
        processor.process(inputs, outputs, blockSize);
        in[0] = 0.0f;
        for (size_t i = 0; i < block; ++i) {
            const bool silent = std::fabs(outLeft[i]) < kSilent && std::fabs(outRight[i]) < kSilent;
            quietRun = silent ? quietRun + 1 : 0;
        }
        output.channels[0].insert(output.channels[0].end(), outLeft.begin(), outLeft.end());
        output.channels[1].insert(output.channels[1].end(), outRight.begin(), outRight.end());
    }
    return output;
}

} // namespace halvern
