#pragma once

// ZSampleRing: a ring of float samples from one writer (the audio thread) to one reader
// (the editor), without locks. The writer never waits and never allocates: when the
// reader falls behind, the writer runs over the oldest samples, and the reader notices
// and drops them. Resizing is for when neither side runs.

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace halvern {

class ZSampleRing {
public:
    // Room for at least `samples` samples (rounded up to a power of two); empties the ring.
    void resize(size_t samples)
    {
        size_t capacity = 1;
        while (capacity < samples)
            capacity *= 2;
        buffer_ = std::make_unique<std::atomic<float>[]>(capacity);
        capacity_ = capacity;
        claimed_.store(0, std::memory_order_relaxed);
        written_.store(0, std::memory_order_relaxed);
        read_ = 0;
    }
    size_t capacity() const { return capacity_; }

    // Writer: appends n samples, sampleAt(i) giving the i-th.
    template <class Source>
    void write(int n, Source sampleAt)
    {
        if (capacity_ == 0 || n <= 0)
            return;
        const uint64_t start = written_.load(std::memory_order_relaxed);
        const uint64_t end = start + static_cast<uint64_t>(n);
        // Claimed before the samples change, so a reader copying them learns they may be torn.
        claimed_.store(end, std::memory_order_relaxed);
        std::atomic_thread_fence(std::memory_order_release);
        const uint64_t mask = capacity_ - 1;
        for (int i = 0; i < n; ++i)
            buffer_[(start + static_cast<uint64_t>(i)) & mask].store(sampleAt(i), std::memory_order_relaxed);
        written_.store(end, std::memory_order_release);
    }

    // Reader: copies up to maxCount of the newest unread samples to out, oldest first,
    // and answers how many. Unread samples older than those are dropped.
    size_t read(float* out, size_t maxCount)
    {
        const uint64_t end = written_.load(std::memory_order_acquire);
        const uint64_t wanted = std::min<uint64_t>({end - read_, maxCount, capacity_});
        uint64_t start = end - wanted;
        const uint64_t mask = capacity_ - 1;
        for (uint64_t i = start; i < end; ++i)
            out[i - start] = buffer_[i & mask].load(std::memory_order_relaxed);
        std::atomic_thread_fence(std::memory_order_acquire);
        // Samples the writer reached while they were copied are not trusted.
        const uint64_t claimed = claimed_.load(std::memory_order_relaxed);
        const uint64_t firstIntact = claimed > capacity_ ? claimed - capacity_ : 0;
        read_ = end;
        if (firstIntact <= start)
            return static_cast<size_t>(wanted);
        const uint64_t torn = std::min(firstIntact - start, wanted);
        std::copy(out + torn, out + wanted, out);
        return static_cast<size_t>(wanted - torn);
    }

private:
    std::unique_ptr<std::atomic<float>[]> buffer_;
    size_t capacity_ = 0;
    std::atomic<uint64_t> claimed_{0}; // where the writer will have written to
    std::atomic<uint64_t> written_{0}; // where the writer has written to
    uint64_t read_ = 0;                // the reader's own position
};

} // namespace halvern
