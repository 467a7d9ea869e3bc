#pragma once

// The plug-in instance's update thread: runs one job outside the audio callback each
// time it is asked to. Asking never blocks and never allocates, so the audio thread may
// ask: it sets a flag and wakes the thread through the atomic's wait/notify (a futex
// wake on Linux). Requests made while the job runs make it run once more afterwards;
// requests made before it starts are merged into one run.

#include <atomic>
#include <functional>
#include <thread>

namespace halvern {

class ZUpdateThread {
public:
    // Starts the thread; the job must not throw.
    explicit ZUpdateThread(std::function<void()> job);
    // Lets a running job finish, then ends the thread.
    ~ZUpdateThread();
    ZUpdateThread(const ZUpdateThread&) = delete;
    ZUpdateThread& operator=(const ZUpdateThread&) = delete;

    // Any thread, the audio thread included.
    void Request() noexcept;

private:
    enum State : int { kIdle = 0, kRequested = 1, kStopping = 2 };

    void run();

    std::function<void()> job_;
    std::atomic<int> state_{kIdle};
    std::thread thread_;
};

} // namespace halvern
