#pragma once

#include <linux/input.h>

#include <QString>
#include <vector>

// Writes records into the simulation's key FIFO ("<root>/dev/event0") in one write, so that no
// reader ever sees a part of them. Never waits: a FIFO that nobody holds or that is full is an
// error. Returns "" on success, else what went wrong.
QString writeToKeyDevice(const std::vector<input_event>& records);
