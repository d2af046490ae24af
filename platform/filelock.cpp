#include "filelock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

FileLock::FileLock(const QString& lockFile) {
    const int fd = open(lockFile.toLocal8Bit().constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    int status = fd < 0 ? -1 : flock(fd, LOCK_EX);
    while (status != 0 && fd >= 0 && errno == EINTR) {
        status = flock(fd, LOCK_EX);
    }
    if (status != 0) {
        error_ = QStringLiteral("cannot lock %1: %2")
                     .arg(lockFile, QString::fromLocal8Bit(strerror(errno)));
        if (fd >= 0) {
            close(fd);
        }
        return;
    }
    fd_ = fd;
}

FileLock::~FileLock() {
    if (fd_ >= 0) {
        close(fd_);  // releases the lock
    }
}
