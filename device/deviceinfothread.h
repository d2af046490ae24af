#pragma once

#include <QThread>
#include <atomic>
#include <condition_variable>
#include <mutex>

// The thread that lets the LCD backlight follow the ambient light: once a period it reads the
// light sensor's illuminance and sets the backlight level for it. While paused (the user set
// the brightness by hand) it only waits. It ends when stop() is called or the object is
// destroyed, without waiting out its period.
class DeviceInfoThread : public QThread {
    Q_OBJECT

public:
    explicit DeviceInfoThread(int periodMs = 1000, QObject* parent = nullptr);
    // Stops the thread and waits for it.
    ~DeviceInfoThread() override;

    // True pauses the automatic brightness, false resumes it.
    void setStopFlag(bool paused);

    // Ends the thread's loop; the thread stays stopped for good.
    void stop();

protected:
    void run() override;

private:
    bool sleepUnlessStopped(int ms);

    const int periodMs_;
    std::atomic<bool> paused_{false};
    std::mutex mutex_;
    std::condition_variable wake_;
    bool stopping_ = false;  // guarded by mutex_
};
