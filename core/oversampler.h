#pragma once

// Integer-factor rate conversion for one channel: upsample() raises a block to factor x
// the base rate so that a stage can run there, downsample() filters the result and brings
// it back to the base rate. Both directions use the same linear-phase low-pass, run in
// polyphase form, so a round trip delays the signal by a whole number of base samples.
// Use one object per channel: each keeps its own filter history.

#include <vector>

namespace halvern {

class ZOversampler {
public:
    static constexpr int kMinFactor = 2;
    static constexpr int kMaxFactor = 16;

    // Designs the filter and sizes every buffer; the only call that allocates. Longer
    // blocks than maxBaseBlock are accepted and processed in pieces. Throws ZException
    // for a factor outside [kMinFactor, kMaxFactor] or a maxBaseBlock below 1.
    void prepare(int factor, int maxBaseBlock);
    // Clears the history of both directions, as if silence had been processed.
    void reset();

    // Both directions need prepare() first; in and out must not overlap.
    // Reads baseCount samples, writes baseCount * factor().
    void upsample(const float* in, float* out, int baseCount);
    // Reads baseCount * factor() samples, writes baseCount.
    void downsample(const float* in, float* out, int baseCount);

    int factor() const { return factor_; }
    // Delay of upsample() followed directly by downsample(), in base-rate samples.
    int latency() const;

private:
    void upsampleChunk(const float* in, float* out, int baseCount);
    void downsampleChunk(const float* in, float* out, int baseCount);
    int upHistory() const;
    int downHistory() const;

    int factor_ = 0;
    int maxBaseBlock_ = 0;
    std::vector<float> upPhases_; // factor_ sub-filters, each ordered oldest sample first
    std::vector<float> downTaps_; // the whole low-pass (symmetric, so no reversal needed)
    std::vector<float> upLine_;   // base-rate history followed by the block being upsampled
    std::vector<float> downLine_; // high-rate history followed by the block being downsampled
};

} // namespace halvern
