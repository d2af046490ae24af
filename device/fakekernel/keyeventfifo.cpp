#include "keyeventfifo.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <QDir>
#include <QFileInfo>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platformroot.h"

namespace fakekernel {

namespace {

// Makes the FIFO unless one is there; any other file at the path is left alone and refused.
bool makeFifo(const QByteArray& path) {
    struct stat status {};
    if (::stat(path.constData(), &status) == 0) {
        return S_ISFIFO(status.st_mode);
    }
    return QDir().mkpath(QFileInfo(QString::fromLocal8Bit(path)).path()) &&
           ::mkfifo(path.constData(), 0600) == 0;
}

input_event record(const timeval& time, unsigned short type, unsigned short code, int value) {
    input_event event{};
    event.input_event_sec = time.tv_sec;
    event.input_event_usec = time.tv_usec;
    event.type = type;
    event.code = code;
    event.value = value;
    return event;
}

}  // namespace

// Opened for reading and writing: that never waits for a reader, and a writer must be held
// all the time anyway. Non-blocking, so that a full FIFO fails a write instead of hanging it.
KeyEventFifo::KeyEventFifo() {
    const QByteArray path = platformPath("/dev/event0").toLocal8Bit();
    if (!makeFifo(path)) {
        std::fprintf(stderr, "%s: cannot make the key FIFO there\n", path.constData());
        return;
    }
    fd_ = ::open(path.constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (fd_ < 0) {
        std::fprintf(stderr, "open %s: %s\n", path.constData(), std::strerror(errno));
    }
}

KeyEventFifo::~KeyEventFifo() {
    if (fd_ >= 0) {
        ::close(fd_);
    }
}

bool KeyEventFifo::write(const void* bytes, size_t count) {
    return fd_ >= 0 && ::write(fd_, bytes, count) == ssize_t(count);
}

bool KeyEventFifo::write(const std::vector<input_event>& records) {
    return write(records.data(), records.size() * sizeof(input_event));
}

std::vector<input_event> keyRecords(unsigned short code, int value) {
    timeval now{};
    ::gettimeofday(&now, nullptr);
    return {record(now, EV_KEY, code, value), record(now, EV_SYN, SYN_REPORT, 0)};
}

}  // namespace fakekernel
