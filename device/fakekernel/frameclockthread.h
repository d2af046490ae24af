#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace fakekernel {

// The clock of a streaming video device: calls the tick function once a frame period, like the
// interrupt of a real camera or display, until stopped. The period is asked again before each
// tick, so it can be changed while streaming. A tick that comes late (a slow tick function)
// skips the ticks it missed, as a sensor does not wait for anyone.
class FrameClockThread {
public:
    using Period = std::function<std::chrono::nanoseconds()>;

    FrameClockThread() = default;
    ~FrameClockThread();
    FrameClockThread(const FrameClockThread&) = delete;
    FrameClockThread& operator=(const FrameClockThread&) = delete;

    void start(Period period, std::function<void()> tick);
    // Waits for a tick under way to end; no tick follows.
    void stop();
    bool running() const { return thread_.joinable(); }

private:
    void run(const Period& period, const std::function<void()>& tick);

    std::thread thread_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool stopping_ = false;
};

}  // namespace fakekernel
