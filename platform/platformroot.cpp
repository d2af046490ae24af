#include "platformroot.h"

#include <QDir>
#include <QFileInfo>
#include <QMutex>
#include <QMutexLocker>

namespace {

QMutex rootMutex;
QString rootOverride;

QString withoutTrailingSlash(QString dir) {
    while (dir.endsWith('/')) {
        dir.chop(1);
    }
    return dir;
}

// A host never works on "/": without a usable root we keep to a folder of our own under the
// user's temporary folder. A TMPDIR of "/" would put it at the host's top, and one that does
// not exist would have it created there, so either falls back to /tmp; without that either,
// the program refuses to go on.
QString fallbackHostRoot() {
    for (const QString& temporary : {QDir::tempPath(), QStringLiteral("/tmp")}) {
        const QString folder = QDir::cleanPath(temporary);
        if (folder != "/" && QFileInfo(folder).isDir()) {
            return folder + "/lumaspecter-root";
        }
    }
    qFatal("no platform root: set LUMASPECTER_ROOT to a folder");
}

QString hostRootFromEnvironment() {
    const QString fromEnvironment =
        withoutTrailingSlash(QDir(qEnvironmentVariable("LUMASPECTER_ROOT")).absolutePath());
    if (!qEnvironmentVariableIsEmpty("LUMASPECTER_ROOT") && !fromEnvironment.isEmpty()) {
        return fromEnvironment;
    }
    return fallbackHostRoot();
}

}  // namespace

QString platformRoot() {
#ifdef LUMASPECTER_INSTRUMENT
    return QString();
#else
    QMutexLocker lock(&rootMutex);
    if (!rootOverride.isEmpty()) {
        return rootOverride;
    }
    return hostRootFromEnvironment();
#endif
}

void setPlatformRoot(const QString& dir) {
    QMutexLocker lock(&rootMutex);
    // "/" as an override would be the host's own root: treat it as no override.
    rootOverride = dir.isEmpty() ? QString() : withoutTrailingSlash(QDir(dir).absolutePath());
}

QString platformPath(const QString& fixedPath) {
    if (fixedPath.startsWith(":/")) {
        return fixedPath;  // a program resource, not a file system path
    }
    const QString separator = fixedPath.startsWith('/') ? QString() : QStringLiteral("/");
    return platformRoot() + separator + fixedPath;
}
