#include "evdetectthread.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>

#include "deviceio.h"

namespace {

constexpr const char* kKeyDevice = "/dev/event0";

// After a failed or empty read the thread waits this long before it reads again: a device
// that keeps failing, or a FIFO whose writer has gone, must not make it spin.
constexpr int kReadBackOffMs = 100;

int64_t steadyMilliseconds() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

// The key device is a character device on the instrument and a FIFO in the simulation. Any
// other file (a regular file left at the path, a folder) is not read: it is no key source.
bool isKeySource(int fd) {
    struct stat status {};
    return ::fstat(fd, &status) == 0 && (S_ISCHR(status.st_mode) || S_ISFIFO(status.st_mode));
}

// Non-blocking, so that opening the simulation's FIFO does not wait for a writer; the reads
// wait in poll instead.
int openKeyDevice() {
    const char* path = devicePath(kKeyDevice);
    const int fd = systemCalls().open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        std::fprintf(stderr, "open %s: %s\n", path, std::strerror(errno));
        return -1;
    }
    if (!isKeySource(fd)) {
        std::fprintf(stderr, "%s: not an input device\n", path);
        systemCalls().close(fd);
        return -1;
    }
    return fd;
}

}  // namespace

EvDetectThread::EvDetectThread(const std::atomic<int>& deviceState, Clock clock, QObject* parent)
    : QThread(parent),
      deviceState_(deviceState),
      clock_(clock ? std::move(clock) : Clock(steadyMilliseconds)),
      filter_(clock_()),
      device_(openKeyDevice()),
      wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

EvDetectThread::~EvDetectThread() {
    stop();
    wait();
    if (device_ >= 0) {
        systemCalls().close(device_);
    }
    if (wake_ >= 0) {
        ::close(wake_);
    }
}

void EvDetectThread::stop() {
    const uint64_t one = 1;
    if (wake_ >= 0 && ::write(wake_, &one, sizeof one) < 0) {
        std::perror("key thread wake");
    }
}

// Without a wake descriptor the thread could not be stopped: it then does not run at all.
void EvDetectThread::run() {
    if (device_ < 0 || wake_ < 0) {
        return;
    }
    while (waitForInput()) {
        if (!readRecords()) {
            backOff();
        }
    }
}

// False once stop() was called.
bool EvDetectThread::waitForInput() {
    pollfd fds[2] = {{device_, POLLIN, 0}, {wake_, POLLIN, 0}};
    systemCalls().poll(fds, 2, -1);
    return (fds[1].revents & POLLIN) == 0;
}

// False when nothing was read. An end of file means the FIFO's last writer has gone: a record
// it left unfinished is dropped, so that the next writer's records are read from their start.
bool EvDetectThread::readRecords() {
    const ssize_t count = systemCalls().read(device_, buffer_.freeSpace(), buffer_.freeBytes());
    if (count == 0) {
        buffer_.dropPartial();
    }
    if (count <= 0) {
        return false;
    }
    for (const input_event& record : buffer_.take(size_t(count))) {
        handle(record);
    }
    return true;
}

void EvDetectThread::handle(const input_event& record) {
    if (filter_.accept(record, deviceState_.load(std::memory_order_acquire), clock_())) {
        emit keyPressedEvent(record.code, static_cast<unsigned short>(record.value));
    }
}

// Waits on the wake descriptor alone, so that stop() still ends the wait at once.
void EvDetectThread::backOff() {
    pollfd wake = {wake_, POLLIN, 0};
    systemCalls().poll(&wake, 1, kReadBackOffMs);
}
