#pragma once

// Latency-compensating delay for one channel: the output is the input delayed by
// exactly the current delay. The line holds `fill` samples (the delay) between blocks;
// a change of delay is kept as pending samples and applied at the next block: a longer
// delay inserts silence ahead of the held samples, a shorter one drops the oldest.

#include <vector>

namespace halvern {

class ZBypassDelayLine {
public:
    // Sizes the buffer for a delay and a block length (not on the audio thread).
    void reserve(int maxDelay, int maxBlock);
    void setDelay(int delay);
    int delay() const { return delay_; }
    // Delays n samples; in and out may be the same buffer.
    void process(const float* in, float* out, int n);
    // Empties the line: the held samples become silence.
    void clear();

private:
    void applyPending();
    void ensureCapacity(int need);

    std::vector<float> buffer_;
    int fill_ = 0;
    int pending_ = 0;
    int delay_ = 0;
};

} // namespace halvern
