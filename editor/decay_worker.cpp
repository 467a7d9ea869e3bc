#include "editor/decay_worker.h"

#include <chrono>
#include <exception>

namespace halvern {

ZDecayWorker::ZDecayWorker() : thread_([this] { run(); }) {}

ZDecayWorker::~ZDecayWorker()
{
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
        cancel_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

void ZDecayWorker::Submit(std::unique_ptr<ZMLElement> state, const ZImpulseSettings& settings)
{
    {
        std::lock_guard lock(mutex_);
        pending_ = std::move(state);
        pendingSettings_ = settings;
        finished_.reset();
        cancel_ = true; // the job running is out of date; the thread clears this when it takes the new one
    }
    wake_.notify_one();
}

std::optional<ZDecayWorker::Result> ZDecayWorker::TakeResult()
{
    std::lock_guard lock(mutex_);
    std::optional<Result> result = std::move(finished_);
    finished_.reset();
    return result;
}

bool ZDecayWorker::busy() const
{
    std::lock_guard lock(mutex_);
    return pending_ != nullptr || working_;
}

void ZDecayWorker::run()
{
    std::unique_lock lock(mutex_);
    while (true) {
        wake_.wait(lock, [this] { return stopping_ || pending_ != nullptr; });
        if (stopping_)
            return;
        std::unique_ptr<ZMLElement> state = std::move(pending_);
        const ZImpulseSettings settings = pendingSettings_;
        cancel_ = false;
        working_ = true;
        lock.unlock();
        Result result = measure(*state, settings);
        lock.lock();
        working_ = false;
        // A job submitted meanwhile makes this one's result worthless.
        if (pending_ == nullptr && !cancel_)
            finished_ = std::move(result);
    }
}

ZDecayWorker::Result ZDecayWorker::measure(ZMLElement& state, const ZImpulseSettings& settings)
{
    const auto started = std::chrono::steady_clock::now();
    Result result;
    try {
        result.measurement = MeasureDecayOfState(state, settings, &cancel_);
    } catch (const std::exception& error) {
        result.error = error.what();
    }
    result.computeSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    return result;
}

} // namespace halvern
