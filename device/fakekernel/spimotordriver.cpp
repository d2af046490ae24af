#include "spimotordriver.h"

#include <linux/spi/spidev.h>

#include <cerrno>
#include <cstring>

#include "hwctldriver.h"
#include "twinworld.h"

namespace fakekernel {

namespace {

// The four step-word bases differ in bits 11 and 12; the low six bits are the increment.
constexpr uint16_t kStepWordMask = uint16_t(~0x183F);
constexpr uint16_t kStepWordBase = 0xA240;
constexpr uint16_t kIncrementBits = 0x3F;
constexpr int kIncrementSign = 0x20;

bool isStepWord(uint16_t word) {
    return (word & kStepWordMask) == kStepWordBase;
}

int increment(uint16_t word) {
    const int bits = word & kIncrementBits;
    return bits & kIncrementSign ? bits - 2 * kIncrementSign : bits;
}

}  // namespace

SpiMotorDriver::SpiMotorDriver(sim::TwinWorld& world, const HwctlDriver& switches)
    : FakeDriver("/dev/spidev3.0"), world_(world), switches_(switches) {}

int SpiMotorDriver::ioctl(int file, unsigned long request, void* argument) {
    switch (request) {
        case SPI_IOC_WR_MODE:
            return store("SPI_IOC_WR_MODE", mode_, argument);
        case SPI_IOC_RD_MODE:
            return load("SPI_IOC_RD_MODE", mode_, argument);
        case SPI_IOC_WR_BITS_PER_WORD:
            return store("SPI_IOC_WR_BITS_PER_WORD", bitsPerWord_, argument);
        case SPI_IOC_RD_BITS_PER_WORD:
            return load("SPI_IOC_RD_BITS_PER_WORD", bitsPerWord_, argument);
        case SPI_IOC_WR_MAX_SPEED_HZ:
            return store("SPI_IOC_WR_MAX_SPEED_HZ", maxSpeedHz_, argument);
        case SPI_IOC_RD_MAX_SPEED_HZ:
            return load("SPI_IOC_RD_MAX_SPEED_HZ", maxSpeedHz_, argument);
        case SPI_IOC_MESSAGE(1):
            return transfer(argument);
        default:
            return FakeDriver::ioctl(file, request, argument);
    }
}

template <typename Value>
int SpiMotorDriver::store(const char* name, Value& setting, const void* argument) {
    Value value;
    std::memcpy(&value, argument, sizeof value);
    if (receive(std::string(name) + " " + std::to_string(value)) != 0) {
        return -1;
    }
    setting = value;
    return 0;
}

template <typename Value>
int SpiMotorDriver::load(const char* name, const Value& setting, void* argument) {
    if (receive(name) != 0) {
        return -1;
    }
    std::memcpy(argument, &setting, sizeof setting);
    return 0;
}

// One transfer of one 16-bit word; answers the bytes sent, as spidev does.
int SpiMotorDriver::transfer(void* argument) {
    const auto& message = *static_cast<const spi_ioc_transfer*>(argument);
    uint16_t word = 0;
    if (message.len == sizeof word && message.tx_buf != 0) {
        std::memcpy(&word, reinterpret_cast<const void*>(uintptr_t(message.tx_buf)), sizeof word);
    }
    if (receive("SPI_IOC_MESSAGE " + hexText(word)) != 0) {
        return -1;
    }
    if (message.len != sizeof word || message.tx_buf == 0) {
        return refuse(EINVAL);
    }
    command(word);
    return int(message.len);
}

void SpiMotorDriver::command(uint16_t word) {
    if (!isStepWord(word)) {
        return;
    }
    const int microsteps = increment(word);
    if (microsteps != 0 && switches_.reportedClosed(microsteps)) {
        ++stepsPastClosed_;
    }
    world_.moveLens(microsteps);
}

}  // namespace fakekernel
