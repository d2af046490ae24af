#include "keydevicewriter.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platformroot.h"

namespace {

QString failure(const QString& path, int error) {
    switch (error) {
        case ENOENT:
        case ENXIO:
            return path + ": no simulated instrument holds the key device (is it running?)";
        case EAGAIN:
            return path + ": the key device is full (is the key thread reading?)";
        default:
            return path + ": " + QString::fromLocal8Bit(std::strerror(error));
    }
}

// Refuses anything but a FIFO: a regular file there would be appended to for ever, unread.
QString writeAll(int fd, const QString& path, const std::vector<input_event>& records) {
    struct stat status {};
    if (::fstat(fd, &status) != 0 || !S_ISFIFO(status.st_mode)) {
        return path + ": not the simulation's key FIFO";
    }
    const size_t bytes = records.size() * sizeof(input_event);
    const ssize_t written = ::write(fd, records.data(), bytes);
    return written == ssize_t(bytes) ? QString() : failure(path, errno);
}

}  // namespace

// Non-blocking: opening a FIFO for writing would otherwise wait for a reader, for ever when
// no simulation runs. O_NOFOLLOW and no O_CREAT: nothing is made or reached through a link.
QString writeToKeyDevice(const std::vector<input_event>& records) {
    const QString path = platformPath("/dev/event0");
    const int fd =
        ::open(path.toLocal8Bit().constData(), O_WRONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) {
        return failure(path, errno);
    }
    const QString error = writeAll(fd, path, records);
    ::close(fd);
    return error;
}
