#include "shellrunner.h"

#include <QFileInfo>
#include <QProcess>
#include <cstdio>

#include "platformroot.h"

namespace {

#ifndef LUMASPECTER_INSTRUMENT
bool isHarmlessOnHost(const QString& program) {
    static const QStringList harmless = {"sync", "cp", "mv", "mkdir", "chmod"};
    return harmless.contains(program);
}
#endif

}  // namespace

QString resolveShellCommand(const QString& program) {
#ifdef LUMASPECTER_INSTRUMENT
    return program;
#else
    if (isHarmlessOnHost(program)) {
        return program;
    }
    const QString name = QFileInfo(program).fileName();
    const QString standIn = platformPath("/usr/local/bin/" + name);
    return QFileInfo(standIn).isExecutable() ? standIn : QString();
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
