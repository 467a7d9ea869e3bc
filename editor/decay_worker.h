#pragma once

// ZDecayWorker: measures the decay of the reverb's settings on a thread of its own, so
// that the editor never waits for it (and the audio thread never sees it). A new job
// supersedes the one running, which is cancelled and never reports. The editor polls for
// the result on its timer.

#include "analysis/decay_measurement.h"
#include "state/zml_element.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace halvern {

class ZDecayWorker {
public:
    struct Result {
        std::optional<ZDecayMeasurement> measurement; // empty when error says why
        std::string error;
        double computeSeconds = 0.0;
    };

    ZDecayWorker();
    // Cancels the job in progress and waits for the thread to end.
    ~ZDecayWorker();
    ZDecayWorker(const ZDecayWorker&) = delete;
    ZDecayWorker& operator=(const ZDecayWorker&) = delete;

    // Measures a stored "settings" document; cancels whatever runs or waits.
    void Submit(std::unique_ptr<ZMLElement> state, const ZImpulseSettings& settings);
    // The result of the latest job, once it is finished; empty until then and afterwards.
    std::optional<Result> TakeResult();
    // A job waits or runs.
    bool busy() const;

private:
    void run();
    Result measure(ZMLElement& state, const ZImpulseSettings& settings);

    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::unique_ptr<ZMLElement> pending_;
    ZImpulseSettings pendingSettings_;
    std::optional<Result> finished_;
    bool working_ = false;
    bool stopping_ = false;
    std::atomic<bool> cancel_{false};
    std::thread thread_; // last: it starts when everything above is ready
};

} // namespace halvern
