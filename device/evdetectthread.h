#pragma once

#include <QThread>
#include <atomic>
#include <cstdint>
#include <functional>

#include "inputrecords.h"
#include "keyeventfilter.h"

// The thread that turns the hardware keys into key events for the controller. It reads the
// input records of "/dev/event0" (on a host a FIFO under the platform root that the simulation
// holds open) and emits keyPressedEvent for each record the KeyEventFilter passes.
//
// The device state is the controller's: the thread only reads it, to know whether a trigger
// is taken now. The thread ends when stop() is called or the object is destroyed, even in the
// middle of a blocking wait for a key.
class EvDetectThread : public QThread {
    Q_OBJECT

public:
    // Milliseconds on a monotonic clock.
    using Clock = std::function<int64_t()>;

    // Opens the key device. `deviceState` must outlive the thread. Without a clock the
    // system's steady clock is used.
    explicit EvDetectThread(const std::atomic<int>& deviceState, Clock clock = {},
                            QObject* parent = nullptr);
    // Stops the thread, waits for it and closes the device.
    ~EvDetectThread() override;

    // False when the device could not be opened: the thread then ends at once when started.
    bool isDeviceOpen() const { return device_ >= 0; }

    // Ends the thread's loop; the thread stays stopped for good.
    void stop();

signals:
    void keyPressedEvent(unsigned short code, unsigned short value);

protected:
    void run() override;

private:
    bool waitForInput();
    bool readRecords();
    void handle(const input_event& record);
    void backOff();

    const std::atomic<int>& deviceState_;
    const Clock clock_;
    KeyEventFilter filter_;
    InputRecordBuffer buffer_;
    int device_ = -1;
    int wake_ = -1;  // an eventfd that stop() makes readable
};
