#pragma once

#include <sys/ioctl.h>

// The board's hardware-control device "/dev/lumaspec_hwctl": the focus motor's limit switches.

// The device's requests, one byte each: the switch at the -1 end, at the +1 end, the third.
constexpr unsigned long HWC_FPE = _IOR('A', 2, int);
constexpr unsigned long HWC_BPE = _IOR('A', 1, int);
constexpr unsigned long HWC_DSSW = _IOR('A', 3, int);

// Which switch dump_switch_stat reads.
enum SwitchWhich {
    SWITCH_MOVING_BACKWARD = 0,  // the end reached by moving in direction -1
    SWITCH_MOVING_FORWARD = 1,   // the end reached by moving in direction +1
    SWITCH_THIRD = 2,
};

// Reads one switch: its byte, 0 when the limit is reached. Opens and closes the device on every
// call. -1 when the device cannot be opened (reported "open"), when the request fails (reported
// "hwc fpe", "hwc bpe" or "hwc dssw" with the system's error text) or for another `which`.
int dump_switch_stat(int which);
