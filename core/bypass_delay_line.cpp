#include "core/bypass_delay_line.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace halvern {
namespace {

void moveSamples(float* to, const float* from, int count)
{
    if (count > 0)
        std::memmove(to, from, sizeof(float) * static_cast<size_t>(count));
}

} // namespace

void ZBypassDelayLine::reserve(int maxDelay, int maxBlock)
{
    ensureCapacity(std::max(maxDelay, delay_) + std::max(maxBlock, 1));
}

void ZBypassDelayLine::setDelay(int delay)
{
    delay = std::max(delay, 0);
    pending_ += delay - delay_;
    delay_ = delay;
}

void ZBypassDelayLine::clear()
{
    std::fill(buffer_.begin(), buffer_.end(), 0.0f);
}

void ZBypassDelayLine::ensureCapacity(int need)
{
    // Growth goes to the next power of two, so that it happens rarely.
    if (need > 2)
        need = static_cast<int>(std::bit_ceil(static_cast<unsigned>(need)));
    if (need > static_cast<int>(buffer_.size()))
        buffer_.resize(static_cast<size_t>(need), 0.0f);
}

void ZBypassDelayLine::applyPending()
{
    if (pending_ > 0) {
        ensureCapacity(fill_ + pending_);
        moveSamples(buffer_.data() + pending_, buffer_.data(), fill_);
        std::fill_n(buffer_.begin(), pending_, 0.0f);
        fill_ += pending_;
    } else if (pending_ < 0) {
        const int drop = std::min(-pending_, fill_);
        moveSamples(buffer_.data(), buffer_.data() + drop, fill_ - drop);
        fill_ -= drop;
    }
    pending_ = 0;
}

void ZBypassDelayLine::process(const float* in, float* out, int n)
{
    if (n <= 0)
        return;
    applyPending();
    ensureCapacity(fill_ + n);
    float* data = buffer_.data();
    moveSamples(data + fill_, in, n);
    moveSamples(out, data, n);
    moveSamples(data, data + n, fill_);
}

} // namespace halvern
