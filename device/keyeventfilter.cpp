#include "keyeventfilter.h"

namespace {

bool isSkipped(const input_event& record) {
    return record.type == EV_SYN ||
           (record.type == EV_MSC && (record.code == MSC_RAW || record.code == MSC_SCAN));
}

// The phases in which the controller takes a trigger: a single-fiber result shown, live view,
// multi-fiber fibers shown for confirmation, a multi-fiber result shown.
bool acceptsTrigger(int deviceState) {
    return deviceState == 3 || deviceState == 6 || deviceState == 8 || deviceState == 9;
}

}  // namespace

// An auto-repeat (2) of a held focus key goes on as a repeat, never as a release: the
// controller stops the motor on a release, and a held key must keep it moving.
bool KeyEventFilter::accept(const input_event& record, int deviceState, int64_t nowMs) {
    if (isSkipped(record)) {
        return false;
    }
    if (record.code != kTriggerKey) {
        return true;
    }
    return acceptTrigger(record.value, deviceState, nowMs);
}

// The times come from a monotonic clock: with the wall clock a date set back on the settings
// screen would block the trigger until the old date came round again.
bool KeyEventFilter::acceptTrigger(int value, int deviceState, int64_t nowMs) {
    if (nowMs - lastTriggerMs_ <= kTriggerDebounceMs || !acceptsTrigger(deviceState) ||
        value != 1) {
        return false;
    }
    lastTriggerMs_ = nowMs;
    return true;
}
