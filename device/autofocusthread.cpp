#include "autofocusthread.h"

#include <cstdlib>

#include "capturethread.h"
#include "motorthread.h"

namespace {

constexpr unsigned kStepsPerUnit = 16;
constexpr unsigned long kPollUs = 1000;
// The autofocus's motor settings: one microstep a step word, drive setting 2, step word
// variant 1, the fastest speed code, one step unit's pause, one run, no pause after it.
constexpr unsigned short kStepMode = 3, kDrive = 2, kVariant = 1, kSpeedCode = 1, kSpeedFactor = 1,
                         kRepeat = 1, kPauseMs = 0, kBackAndForth = 0;

}  // namespace

AutoFocusThread::AutoFocusThread(CaptureThread* capture, MotorThread* motor, QObject* parent)
    : QThread(parent), motor_(motor), capture_(capture) {}

AutoFocusThread::~AutoFocusThread() {
    wait();
}

void AutoFocusThread::run() {
    std::lock_guard<std::mutex> lock(runLock_);
    samples_.store(0, std::memory_order_release);
    moves_.store(0, std::memory_order_release);
    // Without a running capture thread no sample would ever come. The autofocus ends at once
    // and says so: a caller waiting for the signal would otherwise wait in autofocus for ever.
    if (!capture_->isRunning()) {
        emit autoFocusFinished(false);
        return;
    }
    climb_.reset();
    result_ = false;
    if (climb()) {
        emit autoFocusFinished(result_);
    }
}

// Samples and moves until the peak; false when it gave up, having said so.
bool AutoFocusThread::climb() {
    while (!climb_.isMax()) {
        if (climb_.isEndAdjust()) {
            emit autoFocusFinished(false);
            return false;
        }
        capture_->setReSearchXY(climb_.speedStatus() == 0);
        if (!takeSample() || capture_->getLastSharpness() == -1.0) {
            result_ = false;
            emit autoFocusFinished(false);
            return false;
        }
        move(climb_.adjust(capture_->getLastSharpness()));
        result_ = true;
    }
    return true;
}

// One sample: the capture thread measures the next frame in mode 2, then returns to its live
// mode. A capture thread that stops meanwhile takes no sample, and the wait gives up rather
// than last for ever.
bool AutoFocusThread::takeSample() {
    capture_->setThreadWorkMode(CAPTURE_SHARPNESS_SAMPLE);
    while (capture_->getThreadWorkMode() == CAPTURE_SHARPNESS_SAMPLE) {
        if (!capture_->isRunning()) {
            return false;
        }
        usleep(kPollUs);
    }
    samples_.fetch_add(1, std::memory_order_acq_rel);
    return true;
}

// A move that a limit switch ended early is told to the climb, so that it goes on from where
// the lens really stands.
void AutoFocusThread::move(int units) {
    const unsigned steps = unsigned(std::abs(units)) * kStepsPerUnit;
    const short dir = units < 0 ? -1 : 1;
    motor_->startMove(steps, dir, kStepMode, kDrive, kVariant, kSpeedCode, kSpeedFactor, kRepeat,
                      kPauseMs, kBackAndForth);
    while (motor_->isRunning()) {
        usleep(kPollUs);
    }
    if (steps > 0) {
        moves_.fetch_add(1, std::memory_order_acq_rel);
    }
    if (motor_->lastMoveResult() == -1 && motor_->lastMoveSteps() < steps) {
        const int shortfall =
            int((steps - motor_->lastMoveSteps() + kStepsPerUnit / 2) / kStepsPerUnit);
        climb_.limitReached(dir * shortfall);
    }
}
