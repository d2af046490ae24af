#pragma once

#include <atomic>
#include <cstdint>

#include "fakedriver.h"

namespace sim {
class TwinWorld;
}

namespace fakekernel {

class HwctlDriver;

// The focus motor's stepper driver chip on the SPI bus at "/dev/spidev3.0". It takes the bus
// set-up (mode, bits per word, clock), each written and read back, and one 16-bit command word
// per transfer, written down as "SPI_IOC_MESSAGE 0xaa41". A step word (0xA240, 0xAA40, 0xB240
// or 0xBA40 with a 6-bit two's-complement increment in its low bits) moves the twin's lens by
// its increment in microsteps, the lens's unit, between the two limit switches; the other words
// (set-up, enable, end of move) move nothing.
class SpiMotorDriver : public FakeDriver {
public:
    SpiMotorDriver(sim::TwinWorld& world, const HwctlDriver& switches);

    int ioctl(int file, unsigned long request, void* argument) override;

    // Step words received toward an end whose switch the hardware control last reported
    // closed: a motor must stop when it reads its switch closed.
    int stepsPastClosedSwitch() const { return stepsPastClosed_.load(); }

private:
    // A set-up request that sets the setting, written down with its value, and one that reads
    // it back.
    template <typename Value>
    int store(const char* name, Value& setting, const void* argument);
    template <typename Value>
    int load(const char* name, const Value& setting, void* argument);
    int transfer(void* argument);
    void command(uint16_t word);

    sim::TwinWorld& world_;
    const HwctlDriver& switches_;
    uint8_t mode_ = 0;
    uint8_t bitsPerWord_ = 8;
    uint32_t maxSpeedHz_ = 500000;
    std::atomic<int> stepsPastClosed_{0};
};

}  // namespace fakekernel
