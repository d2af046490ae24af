#include "platformroot.h"

#include <QDir>
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

QString hostRootFromEnvironment() {
    const QString fromEnvironment =
        withoutTrailingSlash(QDir(qEnvironmentVariable("LUMASPECTER_ROOT")).absolutePath());
    if (!qEnvironmentVariableIsEmpty("LUMASPECTER_ROOT") && !fromEnvironment.isEmpty()) {
        return fromEnvironment;
    }
    // A host never works on "/": without a usable root we keep to a folder of our own.
    return QDir::tempPath() + "/lumaspecter-root";
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
