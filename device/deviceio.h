#pragma once

#include "systemcalls.h"

// A device request through the table of system calls, made again when a signal interrupted it
// (a signal arriving during a blocking request must not read as the device failing).
int deviceRequest(int fd, unsigned long request, void* argument);

// The fixed device path (e.g. "/dev/video0") as this process opens it, under the platform root.
// The returned text stays valid until the next call from the same thread.
const char* devicePath(const char* fixedPath);
