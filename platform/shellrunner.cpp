#include "shellrunner.h"

#include <QFileInfo>
#include <QProcess>
#include <cstdio>

#include "platformroot.h"

namespace {

// The file commands and "sync" are the system's own, in /bin on the instrument and on every
// Debian host. They are started by that path: a PATH set by whoever started the program could
// otherwise put another "sync" or "cp" in their place.
bool isSystemCommand(const QString& program) {
    static const QStringList system = {"sync", "cp", "mv", "mkdir", "chmod"};
    return system.contains(program);
}

}  // namespace

QString resolveShellCommand(const QString& program) {
    if (isSystemCommand(program)) {
        return "/bin/" + program;
    }
    // Board commands live in /usr/local/bin on the instrument; on a host the same place under
    // the platform root holds their stand-ins.
    const QString board = platformPath("/usr/local/bin/" + QFileInfo(program).fileName());
#ifdef LUMASPECTER_INSTRUMENT
    return board;
#else
    return QFileInfo(board).isExecutable() ? board : QString();
#endif
}

int runShellCommand(const QString& program, const QStringList& arguments) {
    const QString resolved = resolveShellCommand(program);
    if (resolved.isEmpty()) {
        std::fprintf(stderr, "shell command \"%s\" refused: no stand-in under %s\n",
                     qPrintable(program), qPrintable(platformPath("/usr/local/bin")));
        return -1;
    }
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(resolved, arguments);
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit) {
        return -1;
    }
    return process.exitCode();
}
