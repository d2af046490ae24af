#pragma once

#include <QString>
#include <QStringList>

// The one way the program runs shell commands ("sync", "cp", "red_led_on", "lcdbrightness",
// "reboot", ...). It runs the command synchronously and returns its exit status, or -1 when
// the command could not be started or did not end normally.
//
// Every command is started by its absolute path, never searched on PATH. "sync" and the file
// commands (whose paths the caller has already put under the platform root) are the system's
// own in /bin. Every other command is a board command in "/usr/local/bin"; on a development
// host that resolves to the stand-in "<root>/usr/local/bin/<name>" and is refused when the
// stand-in is missing, so a real "reboot" can never reach a host.
int runShellCommand(const QString& program, const QStringList& arguments = {});

// The program the runner would start for this command name ("" when it refuses).
QString resolveShellCommand(const QString& program);
