#pragma once

// Switches the instrument off: the board turns its power off on the command "reboot". Returns
// the command's exit status (-1: it could not run). On a development host the runner reaches
// only the board stand-in, which records the call: a real "reboot" never runs there.
int powerOff();
