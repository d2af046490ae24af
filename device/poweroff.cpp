#include "poweroff.h"

#include "shellrunner.h"

int powerOff() {
    return runShellCommand("reboot");
}
