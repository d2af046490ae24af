#include "deviceinfothread.h"

#include <QFile>

#include "lcdbrightness.h"
#include "platformroot.h"

namespace {

// The ambient light sensor's reading, in lux, one decimal number and a line end.
constexpr const char* kIlluminanceFile = "/sys/bus/i2c/devices/2-0039/in_illuminance0";
constexpr qint64 kLongestReading = 32;

// The file is read directly rather than through "cat": the same bytes, without starting a
// process every second. False for a missing, empty or unreadable reading.
bool readIlluminance(int& illuminance) {
    QFile file(platformPath(kIlluminanceFile));
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    bool ok = false;
    illuminance = file.read(kLongestReading).trimmed().toInt(&ok);
    return ok && illuminance >= 0;
}

}  // namespace

DeviceInfoThread::DeviceInfoThread(int periodMs, QObject* parent)
    : QThread(parent), periodMs_(periodMs) {}

DeviceInfoThread::~DeviceInfoThread() {
    stop();
    wait();
}

void DeviceInfoThread::setStopFlag(bool paused) {
    paused_.store(paused, std::memory_order_release);
}

void DeviceInfoThread::stop() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
}

// A reading that fails is skipped and tried again after the period, like a paused round: a
// sensor that stays unreadable must not keep a core busy.
void DeviceInfoThread::run() {
    for (int delayMs = 0; sleepUnlessStopped(delayMs); delayMs = periodMs_) {
        int illuminance = 0;
        if (!paused_.load(std::memory_order_acquire) && readIlluminance(illuminance)) {
            setLcdBrightness(brightnessLevelForIlluminance(illuminance));
        }
    }
}

// False once stop() was called.
bool DeviceInfoThread::sleepUnlessStopped(int ms) {
    std::unique_lock<std::mutex> lock(mutex_);
    return !wake_.wait_for(lock, std::chrono::milliseconds(ms), [this] { return stopping_; });
}
