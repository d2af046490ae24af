#include "hwctldriver.h"

#include <cerrno>

#include "lensoptics.h"
#include "libhwctl.h"
#include "twinworld.h"

namespace fakekernel {

namespace {

constexpr int kBackwardEnd = 0, kForwardEnd = 1, kNoEnd = -1;

}  // namespace

HwctlDriver::HwctlDriver(const sim::TwinWorld& world)
    : FakeDriver("/dev/lumaspec_hwctl"), world_(world) {}

int HwctlDriver::ioctl(int file, unsigned long request, void* argument) {
    switch (request) {
        case HWC_FPE:
            return answer("HWC_FPE", kBackwardEnd, argument);
        case HWC_BPE:
            return answer("HWC_BPE", kForwardEnd, argument);
        case HWC_DSSW:
            return answer("HWC_DSSW", kNoEnd, argument);
        default:
            return FakeDriver::ioctl(file, request, argument);
    }
}

// The driver writes the one byte the request answers, as the board's does.
int HwctlDriver::answer(const char* name, int end, void* argument) {
    const int lens = world_.lensPosition();
    const bool closed = (end == kBackwardEnd && lens <= 0) ||
                        (end == kForwardEnd && lens >= sim::lens::kTravelSteps);
    const unsigned char byte = closed ? 0 : 1;
    if (receive(std::string(name) + " " + std::to_string(byte)) != 0) {
        return -1;
    }
    if (end != kNoEnd) {
        closed_[end].store(closed, std::memory_order_release);
    }
    closedAnswers_ += closed ? 1 : 0;
    *static_cast<unsigned char*>(argument) = byte;
    return 0;
}

bool HwctlDriver::reportedClosed(int dir) const {
    return closed_[dir < 0 ? kBackwardEnd : kForwardEnd].load(std::memory_order_acquire);
}

}  // namespace fakekernel
