#pragma once

#include <QString>
#include <QStringList>

// The one way the program runs shell commands ("sync", "cp", "red_led_on", "lcdbrightness",
// "reboot", ...). It runs the command synchronously and returns its exit status, or -1 when
// the command could not be started or did not end normally.
//
// On a development host only commands that are harmless to the host run as they are ("sync",
// and the file commands, whose paths the caller has already put under the platform root).
// Every other command is a board command: it resolves to the stand-in
// "<root>/usr/local/bin/<name>" and is refused when that stand-in is missing, so a real
// "reboot" can never reach a host.
int runShellCommand(const QString& program, const QStringList& arguments = {});

// The program the runner would start for this command name ("" when it refuses).
QString resolveShellCommand(const QString& program);
