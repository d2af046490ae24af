#pragma once

#include <functional>

class CaptureThread;

// The timer an automatic exposure adjustment runs on: a 200 ms QTimer on the settings screen,
// a fake one in tests that ticks when the test says so.
class ExposureTimer {
public:
    virtual ~ExposureTimer() = default;
    virtual void start() = 0;
    virtual void stop() = 0;
};

// The settings screen's automatic exposure: with the capture thread in live mode 0 and its
// exposure preview on, each tick of the timer moves the exposure by one toward the target mean
// gray, within 10..80, until it has been raised (from at least half the target) and lowered,
// that is until the mean gray has crossed the target both ways.
class AutoExposure {
public:
    static constexpr int kTickMs = 200;
    static constexpr unsigned kMinExposure = 10;
    static constexpr unsigned kMaxExposure = 80;

    // `storeExposure` keeps the exposure in the settings: "EXP_TIME_SF" for a single fiber,
    // "EXP_TIME_MF" for multiple fibers.
    using StoreExposure = std::function<void(bool singleFiber, unsigned exposure)>;

    AutoExposure(CaptureThread& capture, ExposureTimer& timer, StoreExposure storeExposure);

    // Starts an adjustment toward `targetGray` when the capture thread is not running: the
    // live picture at 480 x 480 on the LCD at 236, exposure preview on, the kind's stored
    // exposure applied, the thread started in mode 0, the timer started. False when the
    // thread was running.
    bool start(int targetGray, bool singleFiber, unsigned storedExposure);

    // One tick of the timer.
    void onAutoExposure();

private:
    void finish();

    CaptureThread& capture_;
    ExposureTimer& timer_;
    StoreExposure storeExposure_;
    int targetGray_ = 0;
    bool singleFiber_ = true;
    bool raised_ = false;
    bool lowered_ = false;
};
