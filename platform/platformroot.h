#pragma once

#include <QString>

// Every fixed path of the instrument ("/etc/taskinfo.conf", "/mnt/sdcard/sd/", "/dev/video0")
// goes through platformPath(). On the instrument the root is "/", so the paths are the real ones.
// On a development host the root is the folder named by LUMASPECTER_ROOT (or given to a tool
// with --root), so nothing the program does can reach the host's own /etc or /dev.

// The root folder without a trailing slash ("" on the instrument, meaning "/").
QString platformRoot();

// Overrides LUMASPECTER_ROOT for this process (the tools' --root option). An empty string
// returns to the environment's choice.
void setPlatformRoot(const QString& dir);

// The fixed path as seen from this process: "/etc/x" becomes "<root>/etc/x".
QString platformPath(const QString& fixedPath);
