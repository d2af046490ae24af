#pragma once

#include <QString>

// On a development host the board's commands (status lamps, backlight, "reboot", the FTP
// server) are stand-ins under "<root>/usr/local/bin" that only record their call, one line
// each ("reboot", "lcdbrightness 40") in boardCommandLogPath(). Installing them is idempotent.
// Returns false when a stand-in could not be written.
bool installBoardStandIns();

// "<root>/var/log/board-commands.log".
QString boardCommandLogPath();
