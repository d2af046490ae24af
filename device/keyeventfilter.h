#pragma once

#include <linux/input.h>

#include <cstdint>

// Decides which input records reach the controller as key events. Synchronisation records and
// the scan codes that come with each key are dropped; every other record is passed on as it
// is: presses (1), releases (0) and auto-repeats (2) alike. The trigger key is filtered: only
// a press, only while the controller's device state accepts a trigger (3, 6, 8, 9), and not
// within 500 ms of the last accepted press.
class KeyEventFilter {
public:
    static constexpr unsigned short kTriggerKey = 279;  // BTN_TASK
    static constexpr int64_t kTriggerDebounceMs = 500;

    // nowMs: the time on a monotonic clock; it counts as the last accepted trigger press, so a
    // press within 500 ms of start-up is dropped too.
    explicit KeyEventFilter(int64_t nowMs) : lastTriggerMs_(nowMs) {}

    // True when the record goes on to the controller (the trigger press's time is then kept).
    bool accept(const input_event& record, int deviceState, int64_t nowMs);

private:
    bool acceptTrigger(int value, int deviceState, int64_t nowMs);

    int64_t lastTriggerMs_;
};
