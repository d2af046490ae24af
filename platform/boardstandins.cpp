#include "boardstandins.h"

#include <QDir>
#include <QFile>
#include <QStringList>

#include "platformroot.h"

namespace {

const QStringList& boardCommands() {
    static const QStringList commands = {
        "red_led_on",   "red_led_off",   "green_led_on", "green_led_off", "blue_led_on",
        "blue_led_off", "lcdbrightness", "reboot",       "bftpd",         "sdexist",
    };
    return commands;
}

QByteArray standInScript() {
    // The log path is looked up at run time from the script's own place, so a root that is
    // moved or copied keeps working.
    return "#!/bin/sh\n"
           "root=$(cd \"$(dirname \"$0\")/../../..\" && pwd)\n"
           "mkdir -p \"$root/var/log\"\n"
           "echo \"$(basename \"$0\")${*:+ $*}\" >> \"$root/var/log/board-commands.log\"\n";
}

bool writeExecutable(const QString& path, const QByteArray& contents) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(contents) != contents.size()) {
        return false;
    }
    return file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                               QFileDevice::ExeOwner | QFileDevice::ReadGroup |
                               QFileDevice::ExeGroup | QFileDevice::ReadOther |
                               QFileDevice::ExeOther);
}

}  // namespace

QString boardCommandLogPath() {
    return platformPath("/var/log/board-commands.log");
}

bool installBoardStandIns() {
    const QString binDir = platformPath("/usr/local/bin");
    if (!QDir().mkpath(binDir)) {
        return false;
    }
    for (const QString& command : boardCommands()) {
        if (!writeExecutable(binDir + "/" + command, standInScript())) {
            return false;
        }
    }
    return true;
}
