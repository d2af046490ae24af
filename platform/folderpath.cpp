#include "folderpath.h"

#include <sys/stat.h>

#include <QDir>
#include <cerrno>
#include <cstring>

namespace {

bool isFolder(const QByteArray& path) {
    struct stat info {};
    return stat(path.constData(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool makeOneFolder(const QString& path, QString* error) {
    const QByteArray native = path.toLocal8Bit();
    if (mkdir(native.constData(), 0777) == 0) {
        return true;
    }
    const int reason = errno;  // before stat can change it
    if (isFolder(native)) {
        return true;
    }
    if (error != nullptr) {
        // mkdir's own reason, unless the name is taken by something that is not a folder.
        *error =
            QStringLiteral("cannot create folder %1: %2")
                .arg(path, QString::fromLocal8Bit(strerror(reason == EEXIST ? ENOTDIR : reason)));
    }
    return false;
}

}  // namespace

bool makeFolderPath(const QString& path, QString* error) {
    const QString clean = QDir::cleanPath(path);
    for (int slash = clean.indexOf('/', 1); slash > 0; slash = clean.indexOf('/', slash + 1)) {
        if (!makeOneFolder(clean.left(slash), error)) {
            return false;
        }
    }
    return makeOneFolder(clean, error);
}
