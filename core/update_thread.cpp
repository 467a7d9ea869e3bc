#include "core/update_thread.h"

namespace halvern {

ZUpdateThread::ZUpdateThread(std::function<void()> job) : job_(std::move(job)), thread_([this] { run(); }) {}

ZUpdateThread::~ZUpdateThread()
{
    state_.store(kStopping, std::memory_order_release);
    state_.notify_one();
    thread_.join();
}

void ZUpdateThread::Request() noexcept
{
    int expected = kIdle;
    if (state_.compare_exchange_strong(expected, kRequested, std::memory_order_acq_rel))
        state_.notify_one();
}

void ZUpdateThread::run()
{
    for (;;) {
        state_.wait(kIdle, std::memory_order_acquire);
        int expected = kRequested;
        // Back to idle before the job, so that a request during the job is not lost.
        if (!state_.compare_exchange_strong(expected, kIdle, std::memory_order_acq_rel))
            return; // stopping
        job_();
    }
}

} // namespace halvern
