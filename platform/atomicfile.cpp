#include "atomicfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QAtomicInt>
#include <QFileInfo>
#include <cerrno>
#include <cstring>

namespace {

// Fails with the step and the system's reason for the last call that failed.
bool fail(QString* error, const QString& step, const QString& path) {
    if (error != nullptr) {
        *error = QStringLiteral("cannot %1 %2: %3")
                     .arg(step, path, QString::fromLocal8Bit(strerror(errno)));
    }
    return false;
}

// A short name of our own beside the target: the target's name may already be as long as the
// file system allows, and a temporary name built on it would then be refused.
QByteArray temporaryPathBeside(const QString& path) {
    static QAtomicInt counter;
    return (QFileInfo(path).path() + QStringLiteral("/.lumaspecter-%1-%2.tmp")
                                         .arg(getpid())
                                         .arg(counter.fetchAndAddRelaxed(1)))
        .toLocal8Bit();
}

// Every byte, past short writes and interrupted calls: a buffered write that fails only at
// the later flush would go unnoticed, and a full card would then replace a good file with a
// truncated one.
bool writeAll(int fd, const QByteArray& bytes) {
    const char* next = bytes.constData();
    qint64 left = bytes.size();
    while (left > 0) {
        const ssize_t written = write(fd, next, size_t(left));
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        next += written;
        left -= written;
    }
    return true;
}

// The new file keeps the old one's permissions; a new file gets the usual ones (0666 less the
// umask), so that the file service can still read what we wrote.
void keepPermissions(int fd, const QByteArray& target) {
    struct stat old {};
    if (stat(target.constData(), &old) == 0) {
        fchmod(fd, old.st_mode & 07777);
    }
}

}  // namespace

bool writeFileAtomically(const QString& path, const QByteArray& bytes, QString* error) {
    const QByteArray target = path.toLocal8Bit();
    const QByteArray temporary = temporaryPathBeside(path);
    const int fd = open(temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) {
        return fail(error, QStringLiteral("create a file beside"), path);
    }
    keepPermissions(fd, target);
    // Written, synced and closed without error before the rename, or the old file stays.
    bool ok = writeAll(fd, bytes) || fail(error, QStringLiteral("write"), path);
    ok = ok && (fsync(fd) == 0 || fail(error, QStringLiteral("sync"), path));
    const bool closed = close(fd) == 0;
    ok = ok && (closed || fail(error, QStringLiteral("close"), path));
    ok = ok && (rename(temporary.constData(), target.constData()) == 0 ||
                fail(error, QStringLiteral("replace"), path));
    if (!ok) {
        unlink(temporary.constData());
    }
    return ok;
}
