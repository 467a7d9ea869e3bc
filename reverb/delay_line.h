#pragma once

// A delay line of fixed capacity whose length can change from one sample to the next:
// a line of length N returns the sample written N samples ago (the oldest is read, then
// the new one is written).

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <vector>

namespace halvern {

// A different starting cache line for every buffer allocated (in bytes, 0 … 60 cache
// lines): delay lines advance together, and buffers that all began at the same offset in
// their pages would compete for the same cache sets.
inline std::size_t NextCacheSkew()
{
    static std::atomic<std::size_t> next{0};
    return (next++ * 17 % 61) * 64;
}

template <typename Sample>
class ZDelayLine {
public:
    // Sizes the buffer for lengths up to maxLength (not on the audio thread).
    void allocate(int maxLength)
    {
        const size_t size = std::bit_ceil(static_cast<size_t>(std::max(maxLength, 1)) + 1);
        start_ = NextCacheSkew() / sizeof(Sample);
        buffer_.assign(start_ + size, Sample{});
        mask_ = size - 1;
        write_ = 0;
    }
    // Lengths beyond the capacity are limited to it.
    void setLength(int length) { length_ = std::clamp<size_t>(static_cast<size_t>(std::max(length, 1)), 1, mask_); }
    int length() const { return static_cast<int>(length_); }
    int capacity() const { return static_cast<int>(mask_); }
    void clear() { std::fill(buffer_.begin(), buffer_.end(), Sample{}); }

    Sample read() const { return buffer_[start_ + ((write_ - length_) & mask_)]; }
    void write(Sample x)
    {
        buffer_[start_ + write_] = x;
        write_ = (write_ + 1) & mask_;
    }

private:
    std::vector<Sample> buffer_{Sample{}, Sample{}};
    size_t start_ = 0;
    size_t mask_ = 1;
    size_t length_ = 1;
    size_t write_ = 0;
};

} // namespace halvern

namespace halvern {

// N delay lines that advance together, in one buffer with a shared write position, so
// that reading and writing all of them costs one index computation per line.
template <std::size_t N>
class ZDelayBank {
public:
    // Sizes every line for lengths up to maxLength (not on the audio thread).
    void allocate(int maxLength)
    {
        const size_t size = std::bit_ceil(static_cast<size_t>(std::max(maxLength, 1)) + 1);
        mask_ = size - 1;
        const size_t padding = 64 * 64 / sizeof(double); // room for a skew of up to 64 cache lines
        for (std::size_t line = 0; line < N; ++line)
            start_[line] = line * (size + padding) + NextCacheSkew() / sizeof(double);
        buffer_.assign(N * (size + padding), 0.0);
        write_ = 0;
    }
    void setLength(std::size_t line, int length)
    {
        length_[line] = std::clamp<size_t>(static_cast<size_t>(std::max(length, 1)), 1, mask_);
    }
    int length(std::size_t line) const { return static_cast<int>(length_[line]); }
    int capacity() const { return static_cast<int>(mask_); }
    void clear() { std::fill(buffer_.begin(), buffer_.end(), 0.0); }

    // The oldest sample of each line (written `length` samples ago).
    double read(std::size_t line) const { return readAt(line, static_cast<int>(length_[line])); }
    // The sample written `delay` samples ago on a line, whatever its length.
    double readAt(std::size_t line, int delay) const
    {
        return buffer_[start_[line] + ((write_ - static_cast<size_t>(delay)) & mask_)];
    }
    // Writes one new sample into every line and moves on.
    void write(const std::array<double, N>& samples)
    {
        for (std::size_t line = 0; line < N; ++line)
            buffer_[start_[line] + write_] = samples[line];
        write_ = (write_ + 1) & mask_;
    }

private:
    std::vector<double> buffer_;
    std::array<size_t, N> start_{};
    std::array<size_t, N> length_{};
    size_t mask_ = 0;
    size_t write_ = 0;
};

} // namespace halvern
