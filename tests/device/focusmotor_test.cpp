// The focus motor's driver and the limit switches through the fake kernel: the bus set-up and
// what each failure prints, the command words of each kind of move and where they leave the
// twin's lens, the switch requests, and the motor thread's moves.

#include <gtest/gtest.h>

#include <cerrno>

#include "capturerecorder.h"
#include "devicetesting.h"
#include "lensoptics.h"
#include "libhwctl.h"
#include "libspimoto.h"
#include "motorthread.h"
#include "processexit.h"

namespace {

constexpr int kEnd = sim::lens::kTravelSteps;

int exitStatus = 0;
void recordExit(int status) {
    exitStatus = status;
}

const Lines kSetUp = {
    "open",
    "SPI_IOC_WR_MODE 3",
    "SPI_IOC_RD_MODE",
    "SPI_IOC_WR_BITS_PER_WORD 16",
    "SPI_IOC_RD_BITS_PER_WORD",
    "SPI_IOC_WR_MAX_SPEED_HZ 400000",
    "SPI_IOC_RD_MAX_SPEED_HZ",
};

const char* const kSetUpFailures[] = {
    "can't open device",       "can't set spi mode",      "can't get spi mode",
    "can't set bits per word", "can't get bits per word", "can't set max speed hz",
    "can't get max speed hz",
};

Lines words(std::initializer_list<const char*> hex) {
    Lines lines;
    for (const char* word : hex) {
        lines.push_back(std::string("SPI_IOC_MESSAGE ") + word);
    }
    return lines;
}

Lines repeated(Lines lines, int times) {
    Lines all;
    for (int i = 0; i < times; ++i) {
        all.insert(all.end(), lines.begin(), lines.end());
    }
    return all;
}

// One switch query: the device opened, asked and closed.
Lines query(const std::string& request) {
    return {"open", request, "close"};
}

struct FocusMotorTest : TwinTest {
    FocusMotorTest() {
        ensureApplication();
        setProcessExitHook(recordExit);
    }
    ~FocusMotorTest() override {
        release_spi_moto();
        stop_spi_moto(0);
        setProcessExitHook(nullptr);
    }
    Lines spi() const { return const_cast<fakekernel::FakeKernel&>(kernel).motor().requests(); }
};

TEST_F(FocusMotorTest, SetUpMakesTheRequestsInOrderAndEachFailureAborts) {
    ASSERT_EQ(init_spi_moto(), 0);
    EXPECT_EQ(spi(), kSetUp);
    for (size_t failing = 1; failing <= kSetUp.size(); ++failing) {
        SCOPED_TRACE(kSetUp[failing - 1]);
        release_spi_moto();
        kernel.motor().clearRequests();
        kernel.motor().failRequest(int(failing), EIO);
        exitStatus = 0;
        int result = 0;
        const std::string printed = printedBy(init_spi_moto, result);
        EXPECT_EQ(result, -1);
        EXPECT_EQ(exitStatus, kAbortStatus);
        EXPECT_EQ(printed, std::string(kSetUpFailures[failing - 1]) + ": " + strerror(EIO) + "\n");
        const Lines closed = failing > 1 ? Lines{"close"} : Lines{};
        EXPECT_EQ(spi(), prefixThen(kSetUp, failing, closed));
    }
}

// One move's command words, where it leaves the lens and which switches it read.
struct MoveCase {
    const char* name;
    int lensBefore;
    uint32_t steps;
    uint16_t stepMode, drive, variant, speedCode;
    int16_t dir;
    bool stopFlag;
    int failingWord;  // 0: none
    int result;
    Lines words;
    int lensAfter;
    Lines switches;
};

const MoveCase kMoves[] = {
    {"autofocus forward", 100, 3, 3, 2, 1, 1, 1, false, 0, 0,
     words({"0x3d12", "0x5020", "0xaa41", "0xaa41", "0xaa41", "0x8a40"}), 103,
     repeated(query("HWC_BPE 1"), 3)},
    {"autofocus backward", 100, 2, 3, 2, 1, 1, -1, false, 0, 0,
     words({"0x3d12", "0x5020", "0xaa7f", "0xaa7f", "0x8a40"}), 98,
     repeated(query("HWC_FPE 1"), 2)},
    {"no steps",
     100,
     0,
     3,
     2,
     1,
     1,
     1,
     false,
     0,
     0,
     words({"0x3d12", "0x5020", "0x8a40"}),
     100,
     {}},
    {"16 microsteps a step, slowest codes cleared", 100, 2, 0, 0, 0, 0, 1, false, 0, 0,
     words({"0x2110", "0x5020", "0xa250", "0xa250", "0x8a40"}), 132,
     repeated(query("HWC_BPE 1"), 2)},
    {"8 back, speed code 7", 100, 1, 1, 1, 2, 7, -1, false, 0, 0,
     words({"0x2b1e", "0x5020", "0xb278", "0x8a40"}), 92, query("HWC_FPE 1")},
    {"4 forward, drive 3", 100, 1, 2, 3, 3, 4, 1, false, 0, 0,
     words({"0x3718", "0x5020", "0xba44", "0x8a40"}), 104, query("HWC_BPE 1")},
    {"the far switch closes on the way", kEnd - 2, 5, 3, 2, 1, 1, 1, false, 0, -1,
     words({"0x3d12", "0x5020", "0xaa41", "0xaa41", "0x8a40"}), kEnd,
     prefixThen(repeated(query("HWC_BPE 1"), 2), 6, query("HWC_BPE 0"))},
    {"the near switch closed at the start", 0, 5, 3, 2, 1, 1, -1, false, 0, -1,
     words({"0x3d12", "0x5020", "0x8a40"}), 0, query("HWC_FPE 0")},
    {"no direction", 100, 5, 3, 2, 1, 1, 0, false, 0, -1, words({"0x3d12", "0x5020"}), 100, {}},
    {"stop flag set",
     100,
     5,
     3,
     2,
     1,
     1,
     1,
     true,
     0,
     0,
     words({"0x3d12", "0x5020", "0x8a40"}),
     100,
     {}},
    {"a failed transfer, the move goes on", 100, 2, 3, 2, 1, 1, 1, false, 3, 0,
     words({"0x3d12", "0x5020", "0xaa41", "0xaa41", "0x8a40"}), 101,
     repeated(query("HWC_BPE 1"), 2)},
};

TEST_F(FocusMotorTest, EachMoveSendsItsWordsAndMovesTheLens) {
    ASSERT_EQ(init_spi_moto(), 0);
    for (const MoveCase& c : kMoves) {
        SCOPED_TRACE(c.name);
        world.setLensPosition(c.lensBefore);
        kernel.motor().clearRequests();
        kernel.hardwareControl().clearRequests();
        if (c.failingWord > 0) {
            kernel.motor().failRequest(c.failingWord, EIO);
        }
        stop_spi_moto(c.stopFlag ? 1 : 0);
        int result = 0;
        const std::string printed = printedBy(
            [&] {
                return run_spi_moto(c.steps, c.stepMode, c.drive, c.variant, c.speedCode, c.dir, 1);
            },
            result);
        EXPECT_EQ(result, c.result);
        EXPECT_EQ(spi(), c.words);
        EXPECT_EQ(world.lensPosition(), c.lensAfter);
        EXPECT_EQ(kernel.hardwareControl().requests(), c.switches);
        EXPECT_EQ(printed.find("SPI_IOC_MESSAGE: ") != std::string::npos, c.failingWord > 0);
    }
    EXPECT_EQ(kernel.motor().stepsPastClosedSwitch(), 0);
    release_spi_moto();
    int result = 0;
    EXPECT_EQ(printedBy([] { return run_spi_moto(1, 3, 2, 1, 1, 1, 1); }, result),
              "Spi device not open\n");
    EXPECT_EQ(result, -1);
}

// One switch query: the answer and the requests, with the lens at `lens`.
struct SwitchCase {
    int which;
    int lens;
    int failing;  // 1: the open fails, 2: the request
    int result;
    Lines requests;
    std::string printed;
};

TEST_F(FocusMotorTest, TheSwitchesCloseAtTheEndsOfTheTravel) {
    const std::string io = std::string(": ") + strerror(EIO) + "\n";
    const SwitchCase cases[] = {
        {0, 0, 0, 0, query("HWC_FPE 0"), ""},
        {0, 1, 0, 1, query("HWC_FPE 1"), ""},
        {1, kEnd, 0, 0, query("HWC_BPE 0"), ""},
        {1, kEnd - 1, 0, 1, query("HWC_BPE 1"), ""},
        {2, 0, 0, 1, query("HWC_DSSW 1"), ""},
        {3, 0, 0, -1, {}, ""},
        {-1, 0, 0, -1, {}, ""},
        {0, 0, 2, -1, query("HWC_FPE 0"), "hwc fpe" + io},
        {1, 0, 2, -1, query("HWC_BPE 1"), "hwc bpe" + io},
        {2, 0, 2, -1, query("HWC_DSSW 1"), "hwc dssw" + io},
        {1, 0, 1, -1, {"open"}, "open" + io},
    };
    for (const SwitchCase& c : cases) {
        SCOPED_TRACE(testing::Message() << "switch " << c.which << " lens " << c.lens);
        world.setLensPosition(c.lens);
        kernel.hardwareControl().clearRequests();
        if (c.failing > 0) {
            kernel.hardwareControl().failRequest(c.failing, EIO);
        }
        int result = 0;
        EXPECT_EQ(printedBy([&] { return dump_switch_stat(c.which); }, result), c.printed);
        EXPECT_EQ(result, c.result);
        EXPECT_EQ(kernel.hardwareControl().requests(), c.requests);
    }
}

// The motor thread's moves: repeated, back and forth, and a long one stopped on the way.
TEST_F(FocusMotorTest, TheMotorThreadRunsRepeatsAndStops) {
    MotorThread motor;
    world.setLensPosition(1000);
    motor.startMove(40, 1, 3, 2, 1, 1, 1, 3, 1, 0);
    motor.wait();
    EXPECT_EQ(world.lensPosition(), 1120);
    motor.startMove(40, -1, 3, 2, 1, 1, 1, 2, 0, 1);
    motor.wait();
    EXPECT_EQ(world.lensPosition(), 1120);
    EXPECT_EQ(motor.lastMoveResult(), 0);
    EXPECT_EQ(motor.lastMoveSteps(), 40u);
    motor.startMove(20000, -1, 3, 2, 1, 1, 1, 1, 0, 0);
    ASSERT_TRUE(CaptureRecorder::waitFor([&] { return world.lensPosition() < 1100; }));
    motor.stopMotoRun();
    EXPECT_GT(world.lensPosition(), 0);
    EXPECT_LT(world.lensPosition(), 1120);
    EXPECT_EQ(spi().back(), "SPI_IOC_MESSAGE 0x8a40");
    motor.startMove(2000, -1, 3, 2, 1, 1, 1, 1, 0, 0);  // to the near switch
    motor.wait();
    EXPECT_EQ(world.lensPosition(), 0);
    EXPECT_EQ(motor.lastMoveResult(), -1);
    EXPECT_LT(motor.lastMoveSteps(), 2000u);
}

}  // namespace
