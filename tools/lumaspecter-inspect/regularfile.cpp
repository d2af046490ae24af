#include "regularfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

bool fail(QString& error, const QString& reason) {
    error = reason;
    return false;
}

QString systemReason() {
    return errno == ENOENT ? QStringLiteral("no such file")
                           : QString::fromLocal8Bit(strerror(errno));
}

// The kind of file behind the open descriptor, or "" for a regular file.
QString notRegular(int fd) {
    struct stat info {};
    if (fstat(fd, &info) != 0) {
        return systemReason();
    }
    if (S_ISDIR(info.st_mode)) {
        return QStringLiteral("is a folder");
    }
    return S_ISREG(info.st_mode) ? QString() : QStringLiteral("not a regular file");
}

bool readAll(int fd, qint64 maxBytes, QByteArray& bytes, QString& error) {
    bytes.clear();
    char block[65536];
    for (;;) {
        const ssize_t got = read(fd, block, sizeof block);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return fail(error, systemReason());
        }
        if (got == 0) {
            return true;
        }
        if (bytes.size() + got > maxBytes) {
            return fail(error, QStringLiteral("larger than %1 bytes").arg(maxBytes));
        }
        bytes.append(block, int(got));
    }
}

}  // namespace

bool readRegularFile(const QString& path, qint64 maxBytes, QByteArray& bytes, QString& error) {
    // Opened without waiting, so that a FIFO without a writer cannot hold the open.
    const int fd = open(path.toLocal8Bit().constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        return fail(error, systemReason());
    }
    const QString kind = notRegular(fd);
    const bool ok = kind.isEmpty() ? readAll(fd, maxBytes, bytes, error) : fail(error, kind);
    close(fd);
    return ok;
}
