#include "libhwctl.h"

#include <fcntl.h>

#include <cstdio>

#include "deviceio.h"

namespace {

const char* const hwctl_dev_name = "/dev/lumaspec_hwctl";

struct SwitchRequest {
    unsigned long request;
    const char* failure;
};

const SwitchRequest kSwitches[] = {
    {HWC_FPE, "hwc fpe"},
    {HWC_BPE, "hwc bpe"},
    {HWC_DSSW, "hwc dssw"},
};

}  // namespace

int dump_switch_stat(int which) {
    if (which < SWITCH_MOVING_BACKWARD || which > SWITCH_THIRD) {
        return -1;
    }
    const int fd = systemCalls().open(devicePath(hwctl_dev_name), O_RDWR);
    if (fd < 0) {
        std::perror("open");
        return -1;
    }
    // The device answers one byte; the word around it keeps a driver that writes a whole int
    // inside our memory, and on this little-endian board the byte is its lowest.
    int value = 0;
    const SwitchRequest& asked = kSwitches[which];
    const int result = deviceRequest(fd, asked.request, &value);
    if (result < 0) {
        std::perror(asked.failure);
    }
    systemCalls().close(fd);
    return result < 0 ? -1 : (value & 0xff);
}
