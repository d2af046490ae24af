#pragma once

#include <QThread>
#include <atomic>
#include <mutex>

#include "autofocusclimb.h"

class CaptureThread;
class MotorThread;

// Runs one autofocus from start to end: takes a sharpness sample from the capture thread
// (work mode 2), asks the climb for the next move, has the motor thread make it, and so on
// until the climb has passed the peak and brought the lens back to it, or gives up. The end is
// announced by autoFocusFinished. The capture thread must be running in a live mode, which a
// sample returns to.
class AutoFocusThread : public QThread {
    Q_OBJECT

public:
    AutoFocusThread(CaptureThread* capture, MotorThread* motor, QObject* parent = nullptr);
    ~AutoFocusThread() override;

    // Of the last autofocus: the samples it took and the moves the motor made.
    int samplesTaken() const { return samples_.load(std::memory_order_acquire); }
    int movesMade() const { return moves_.load(std::memory_order_acquire); }

signals:
    // true when the lens was brought to the peak (or at least one move was made before the
    // climb declared it), false when the autofocus gave up: no fiber in view, the climb's
    // limits used up, or the capture thread not running.
    void autoFocusFinished(bool focused);

protected:
    void run() override;

private:
    bool climb();
    bool takeSample();
    void move(int units);

    MotorThread* motor_;
    CaptureThread* capture_;
    AutoFocusClimb climb_;
    bool result_ = false;
    std::mutex runLock_;
    std::atomic<int> samples_{0};
    std::atomic<int> moves_{0};
};
