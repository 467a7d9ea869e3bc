#pragma once

// A delay line of fixed capacity whose length can change from one sample to the next:
// a line of length N returns the sample written N samples ago (the oldest is read, then
// the new one is written).

#include <algorithm>
#include <bit>
#include <vector>

namespace halvern {

template <typename Sample>
class ZDelayLine {
public:
    // Sizes the buffer for lengths up to maxLength (not on the audio thread).
    void allocate(int maxLength)
    {
        buffer_.assign(std::bit_ceil(static_cast<size_t>(std::max(maxLength, 1)) + 1), Sample{});
        mask_ = buffer_.size() - 1;
        write_ = 0;
    }
    // Lengths beyond the capacity are limited to it.
    void setLength(int length) { length_ = std::clamp<size_t>(static_cast<size_t>(std::max(length, 1)), 1, mask_); }
    int length() const { return static_cast<int>(length_); }
    int capacity() const { return static_cast<int>(mask_); }
    void clear() { std::fill(buffer_.begin(), buffer_.end(), Sample{}); }

    Sample read() const { return buffer_[(write_ - length_) & mask_]; }
    void write(Sample x)
    {
        buffer_[write_] = x;
        write_ = (write_ + 1) & mask_;
    }

private:
    std::vector<Sample> buffer_{Sample{}, Sample{}};
    size_t mask_ = 1;
    size_t length_ = 1;
    size_t write_ = 0;
};

} // namespace halvern
