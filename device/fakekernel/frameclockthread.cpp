#include "frameclockthread.h"

namespace fakekernel {

FrameClockThread::~FrameClockThread() {
    stop();
}

void FrameClockThread::start(Period period, std::function<void()> tick) {
    stop();
    stopping_ = false;
    thread_ = std::thread(
        [this, period = std::move(period), tick = std::move(tick)] { run(period, tick); });
}

void FrameClockThread::stop() {
    if (!thread_.joinable()) {
        return;
    }
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    thread_.join();
}

void FrameClockThread::run(const Period& period, const std::function<void()>& tick) {
    using Clock = std::chrono::steady_clock;
    Clock::time_point next = Clock::now() + period();
    for (;;) {
        {
            std::unique_lock<std::mutex> lock(mutex_);
            if (wake_.wait_until(lock, next, [this] { return stopping_; })) {
                return;
            }
        }
        tick();
        next += period();
        const Clock::time_point now = Clock::now();
        if (next < now) {
            next = now + period();
        }
    }
}

}  // namespace fakekernel
