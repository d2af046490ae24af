#include "libspimoto.h"

#include <fcntl.h>
#include <linux/spi/spidev.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>

#include "deviceio.h"
#include "libhwctl.h"
#include "processexit.h"

namespace {

const char* const spi_dev_name = "/dev/spidev3.0";

int spi_fd = -1;
uint8_t spi_mode = SPI_MODE_3;  // clock idle high, data taken on the second edge
uint8_t spi_bits = 16;
uint32_t spi_speed = 400000;
constexpr uint16_t kSpiDelayUs = 1;

// Written by the thread that stops a move while the motor thread reads it between steps: an
// atomic, so that the motor thread sees the store (a plain int read in a loop may be read once
// and kept in a register for ever).
std::atomic<int> stop_flag{0};
std::atomic<uint32_t> steps_run{0};

constexpr uint16_t kEnableWord = 0x5020;
constexpr uint16_t kEndWord = 0x8A40;
constexpr uint16_t kIncrementMask = 63;  // the step word's 6-bit two's-complement increment

void abortOn(const char* message) {
    std::perror(message);
    abortProcess();
}

// The bus's set-up, in order, each with what is printed when it fails.
struct SetUpRequest {
    unsigned long request;
    void* value;
    const char* failure;
};

const SetUpRequest kSetUp[] = {
    {SPI_IOC_WR_MODE, &spi_mode, "can't set spi mode"},
    {SPI_IOC_RD_MODE, &spi_mode, "can't get spi mode"},
    {SPI_IOC_WR_BITS_PER_WORD, &spi_bits, "can't set bits per word"},
    {SPI_IOC_RD_BITS_PER_WORD, &spi_bits, "can't get bits per word"},
    {SPI_IOC_WR_MAX_SPEED_HZ, &spi_speed, "can't set max speed hz"},
    {SPI_IOC_RD_MAX_SPEED_HZ, &spi_speed, "can't get max speed hz"},
};

uint16_t setUpWordBase(uint16_t drive) {
    switch (drive) {
        case 0:
            return 0x3912;
        case 1:
            return 0x3B12;
        case 3:
            return 0x3F12;
        default:
            return 0x3D12;
    }
}

uint16_t stepWordBase(uint16_t variant) {
    switch (variant) {
        case 0:
            return 0xA240;
        case 2:
            return 0xB240;
        case 3:
            return 0xBA40;
        default:
            return 0xAA40;
    }
}

// Microseconds per step unit for the speed codes 1..7; other codes run at 24 us.
unsigned stepUnitUs(uint16_t speedCode) {
    static const unsigned kUnitUs[] = {32, 40, 46, 52, 56, 60, 64};
    return speedCode >= 1 && speedCode <= 7 ? kUnitUs[speedCode - 1] : 24;
}

// The step mode's two bits and the microsteps one step word makes.
uint16_t stepModeBits(uint16_t stepMode) {
    return stepMode <= 2 ? stepMode : 3;
}

int stepIncrement(uint16_t stepMode) {
    static const int kIncrement[] = {16, 8, 4, 1};
    return kIncrement[stepModeBits(stepMode)];
}

// The speed code in bits 1-3 and the step mode in bits 11-12, over the base's own bits there.
uint16_t setUpWord(uint16_t drive, uint16_t speedCode, uint16_t stepMode) {
    constexpr uint16_t kSpeedBits = 0x000E, kStepModeBits = 0x1800;
    const uint16_t speed = speedCode >= 1 && speedCode <= 7 ? uint16_t(speedCode * 2) : 0;
    return uint16_t((setUpWordBase(drive) & ~(kSpeedBits | kStepModeBits)) | speed |
                    (stepModeBits(stepMode) << 11));
}

bool stopRequested() {
    return stop_flag.load(std::memory_order_acquire) != 0;
}

int endMove(int result) {
    spi_moto_regwrite(kEndWord);
    return result;
}

}  // namespace

// The process does not come back from abortOn on the instrument; where a test catches the
// abort, the bus is left closed.
int init_spi_moto() {
    spi_fd = systemCalls().open(devicePath(spi_dev_name), O_RDWR);
    if (spi_fd < 0) {
        abortOn("can't open device");
        return -1;
    }
    for (const SetUpRequest& step : kSetUp) {
        if (deviceRequest(spi_fd, step.request, step.value) == -1) {
            abortOn(step.failure);
            release_spi_moto();
            return -1;
        }
    }
    return 0;
}

int release_spi_moto() {
    if (spi_fd < 0) {
        return -1;
    }
    systemCalls().close(spi_fd);
    spi_fd = -1;
    return 0;
}

int spi_moto_regwrite(uint16_t word) {
    spi_ioc_transfer transfer{};
    transfer.tx_buf = reinterpret_cast<uintptr_t>(&word);
    transfer.len = sizeof word;
    transfer.speed_hz = spi_speed;
    transfer.bits_per_word = spi_bits;
    transfer.delay_usecs = kSpiDelayUs;
    transfer.cs_change = 0;
    if (deviceRequest(spi_fd, SPI_IOC_MESSAGE(1), &transfer) < 1) {
        std::perror("SPI_IOC_MESSAGE");
        return -1;
    }
    return 0;
}

int run_spi_moto(uint32_t steps, uint16_t stepMode, uint16_t drive, uint16_t variant,
                 uint16_t speedCode, int16_t dir, uint16_t speedFactor) {
    steps_run.store(0, std::memory_order_release);
    if (spi_fd < 0) {
        std::printf("Spi device not open\n");
        return -1;
    }
    const unsigned pauseUs = speedFactor * stepUnitUs(speedCode);
    spi_moto_regwrite(setUpWord(drive, speedCode, stepMode));
    spi_moto_regwrite(kEnableWord);
    if (steps == 0 || stopRequested()) {
        return endMove(0);
    }
    const uint16_t stepWord =
        uint16_t(stepWordBase(variant) | ((dir * stepIncrement(stepMode)) & kIncrementMask));
    if (dir != -1 && dir != 1) {
        return -1;
    }
    const int limitSwitch = dir == -1 ? SWITCH_MOVING_BACKWARD : SWITCH_MOVING_FORWARD;
    for (uint32_t step = 0; step < steps; ++step) {
        if (dump_switch_stat(limitSwitch) == 0) {
            return endMove(-1);
        }
        spi_moto_regwrite(stepWord);
        steps_run.store(step + 1, std::memory_order_release);
        usleep(pauseUs);
        if (stopRequested()) {
            break;
        }
    }
    return endMove(0);
}

void stop_spi_moto(int flag) {
    stop_flag.store(flag, std::memory_order_release);
}

uint32_t spi_moto_steps_run() {
    return steps_run.load(std::memory_order_acquire);
}
