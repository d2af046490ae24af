#pragma once

#include <QThread>
#include <atomic>
#include <cstdint>

// Runs one focus-motor move at a time in its own thread, so that the steps' timing does not
// depend on whoever ordered the move. Owns the motor's bus: opens it when made (a bus that
// cannot be set up ends the process) and closes it when destroyed.
class MotorThread : public QThread {
    Q_OBJECT

public:
    explicit MotorThread(QObject* parent = nullptr);
    ~MotorThread() override;

    // Stops a move under way, then starts this one: `repeat` times `steps` steps in direction
    // `dir` (see run_spi_moto for the others), `pauseMs` milliseconds after each, and with
    // `backAndForth` 1 each followed by the same steps the other way.
    void startMove(unsigned int steps, short dir, unsigned short stepMode, unsigned short drive,
                   unsigned short variant, unsigned short speedCode, unsigned short speedFactor,
                   unsigned short repeat, unsigned short pauseMs, unsigned short backAndForth);
    // Sets the driver's stop flag and waits for the move to end.
    void stopMotoRun();

    // What the last move run came to: run_spi_moto's result (-1: a limit switch, among others,
    // ended it) and the steps it made. Read once the thread has finished.
    int lastMoveResult() const { return lastResult_.load(std::memory_order_acquire); }
    unsigned int lastMoveSteps() const { return lastSteps_.load(std::memory_order_acquire); }

protected:
    void run() override;

private:
    void runOnce(short dir);

    uint32_t steps_ = 0;
    int16_t dir_ = 1;
    uint16_t stepMode_ = 0;
    uint16_t drive_ = 0;
    uint16_t variant_ = 0;
    uint16_t speedCode_ = 0;
    uint16_t speedFactor_ = 0;
    uint16_t repeat_ = 0;
    uint16_t pauseMs_ = 0;
    uint16_t backAndForth_ = 0;
    std::atomic<int> lastResult_{0};
    std::atomic<unsigned> lastSteps_{0};
};
