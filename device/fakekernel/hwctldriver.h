#pragma once

#include <atomic>

#include "fakedriver.h"

namespace sim {
class TwinWorld;
}

namespace fakekernel {

// The board's hardware control at "/dev/lumaspec_hwctl": the focus motor's limit switches,
// which close at the two ends of the twin lens's travel. Each request answers one byte, 0 when
// its switch is closed (the limit is reached); the third switch is always open. A request is
// written down with its answer ("HWC_BPE 0").
class HwctlDriver : public FakeDriver {
public:
    explicit HwctlDriver(const sim::TwinWorld& world);

    int ioctl(int file, unsigned long request, void* argument) override;

    // Whether the last answer for the switch at the end of direction `dir` (+1 or -1) was
    // "closed": the motor must then send no step that way.
    bool reportedClosed(int dir) const;
    // How many answers so far were "closed".
    int closedAnswers() const { return closedAnswers_.load(); }

private:
    int answer(const char* name, int end, void* argument);

    const sim::TwinWorld& world_;
    std::atomic<bool> closed_[2] = {false, false};  // at the -1 end, at the +1 end
    std::atomic<int> closedAnswers_{0};
};

}  // namespace fakekernel
