#include "motorthread.h"

#include <sys/prctl.h>

#include "libspimoto.h"

MotorThread::MotorThread(QObject* parent) : QThread(parent) {
    init_spi_moto();
}

MotorThread::~MotorThread() {
    stopMotoRun();
    release_spi_moto();
}

void MotorThread::startMove(unsigned int steps, short dir, unsigned short stepMode,
                            unsigned short drive, unsigned short variant, unsigned short speedCode,
                            unsigned short speedFactor, unsigned short repeat,
                            unsigned short pauseMs, unsigned short backAndForth) {
    if (isRunning()) {
        stopMotoRun();
    }
    // Wait for a move that has just ended by itself too: its thread must be done before the
    // parameters change under it.
    wait();
    steps_ = steps;
    dir_ = dir;
    stepMode_ = stepMode;
    drive_ = drive;
    variant_ = variant;
    speedCode_ = speedCode;
    speedFactor_ = speedFactor;
    repeat_ = repeat;
    pauseMs_ = pauseMs;
    backAndForth_ = backAndForth;
    stop_spi_moto(0);
    start(QThread::TimeCriticalPriority);
}

void MotorThread::stopMotoRun() {
    if (isRunning()) {
        stop_spi_moto(1);
        wait();
    }
}

void MotorThread::run() {
    // The steps are timed by sleeps of some tens of microseconds; Linux lets a sleep run 50 us
    // late by default, which would more than double them.
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
    for (unsigned i = 0; i < repeat_; ++i) {
        runOnce(dir_);
        msleep(pauseMs_);
        if (backAndForth_ == 1) {
            runOnce(int16_t(-dir_));
        }
    }
}

void MotorThread::runOnce(short dir) {
    const int result =
        run_spi_moto(steps_, stepMode_, drive_, variant_, speedCode_, dir, speedFactor_);
    lastSteps_.store(spi_moto_steps_run(), std::memory_order_release);
    lastResult_.store(result, std::memory_order_release);
}
