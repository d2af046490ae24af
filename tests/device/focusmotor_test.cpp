// The focus motor's driver and the limit switches through the fake kernel: the bus set-up and
// what each failure prints, the command words of each kind of move and where they leave the
// twin's lens, the switch requests, and the motor thread's moves.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>

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

// The bus's set-up requests in order, each with what its failure prints.
const std::pair<const char*, const char*> kSetUp[] = {
    {"open", "can't open device"},
    {"SPI_IOC_WR_MODE 3", "can't set spi mode"},
    {"SPI_IOC_RD_MODE", "can't get spi mode"},
    {"SPI_IOC_WR_BITS_PER_WORD 16", "can't set bits per word"},
    {"SPI_IOC_RD_BITS_PER_WORD", "can't get bits per word"},
    {"SPI_IOC_WR_MAX_SPEED_HZ 400000", "can't set max speed hz"},
    {"SPI_IOC_RD_MAX_SPEED_HZ", "can't get max speed hz"},
};

// "3d12 aa41*2": the SPI transfers of these words.
Lines spiWords(const std::string& text) {
    Lines lines;
    for (const std::string& word : expandWords(text)) {
        lines.push_back("SPI_IOC_MESSAGE 0x" + word);
    }
    return lines;
}

// "BPE1 FPE0": switch queries, each opening, asking and closing the device, with its answer;
// "open": an open that failed.
Lines switchQueries(const std::string& text) {
    Lines lines;
    for (const std::string& q : expandWords(text)) {
        const Lines query =
            q == "open"
                ? Lines{"open"}
                : Lines{"open", "HWC_" + q.substr(0, q.size() - 1) + " " + q.back(), "close"};
        lines.insert(lines.end(), query.begin(), query.end());
    }
    return lines;
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

// A failed request aborts the process and leaves the bus closed.
TEST_F(FocusMotorTest, SetUpMakesTheRequestsInOrderAndEachFailureAborts) {
    Lines requests;
    for (const auto& request : kSetUp) {
        requests.push_back(request.first);
        SCOPED_TRACE(request.first);
        kernel.motor().clearRequests();
        kernel.motor().failRequest(int(requests.size()), EIO);
        exitStatus = 0;
        int result = 0;
        EXPECT_EQ(printedBy(init_spi_moto, result),
                  std::string(request.second) + ": " + strerror(EIO) + "\n");
        EXPECT_EQ(exitStatus, kAbortStatus);
        EXPECT_EQ(result, -1);
        EXPECT_EQ(spi(), prefixThen(requests, requests.size(),
                                    requests.size() > 1 ? Lines{"close"} : Lines{}));
    }
    kernel.motor().clearRequests();
    ASSERT_EQ(init_spi_moto(), 0);
    EXPECT_EQ(spi(), requests);
}

// One move: "steps stepMode drive variant speedCode dir", its words, result and switch queries.
struct MoveCase {
    const char* name;
    int lens;
    const char* move;
    const char* words;
    int result, lensAfter;
    const char* switches;
    int failingWord = 0;
    bool stopFlag = false;
};

const MoveCase kMoves[] = {
    {"autofocus forward", 100, "3 3 2 1 1 1", "3d12 5020 aa41*3 8a40", 0, 103, "BPE1*3"},
    {"autofocus back", 100, "2 3 2 1 1 -1", "3d12 5020 aa7f*2 8a40", 0, 98, "FPE1*2"},
    {"no steps", 100, "0 3 2 1 1 1", "3d12 5020 8a40", 0, 100, ""},
    {"16 a step, codes cleared", 100, "2 0 0 0 0 1", "2110 5020 a250*2 8a40", 0, 132, "BPE1*2"},
    {"8 back, speed code 7", 100, "1 1 1 2 7 -1", "2b1e 5020 b278 8a40", 0, 92, "FPE1"},
    {"4 on, drive 3", 100, "1 2 3 3 4 1", "3718 5020 ba44 8a40", 0, 104, "BPE1"},
    {"far switch on the way", kEnd - 2, "5 3 2 1 1 1", "3d12 5020 aa41*2 8a40", -1, kEnd,
     "BPE1*2 BPE0"},
    {"near switch closed", 0, "5 3 2 1 1 -1", "3d12 5020 8a40", -1, 0, "FPE0"},
    {"no direction", 100, "5 3 2 1 1 0", "3d12 5020", -1, 100, ""},
    {"stop flag set", 100, "5 3 2 1 1 1", "3d12 5020 8a40", 0, 100, "", 0, true},
    {"failed transfer", 100, "2 3 2 1 1 1", "3d12 5020 aa41*2 8a40", 0, 101, "BPE1*2", 3},
};

TEST_F(FocusMotorTest, EachMoveSendsItsWordsAndMovesTheLens) {
    ASSERT_EQ(init_spi_moto(), 0);
    for (const MoveCase& c : kMoves) {
        SCOPED_TRACE(c.name);
        world.setLensPosition(c.lens);
        kernel.motor().clearRequests();
        kernel.hardwareControl().clearRequests();
        kernel.motor().failRequest(c.failingWord, EIO);
        stop_spi_moto(c.stopFlag ? 1 : 0);
        int steps, mode, drive, variant, code, dir;
        std::sscanf(c.move, "%d %d %d %d %d %d", &steps, &mode, &drive, &variant, &code, &dir);
        int result = 0;
        const std::string printed = printedBy(
            [&] { return run_spi_moto(steps, mode, drive, variant, code, int16_t(dir), 1); },
            result);
        EXPECT_EQ(result, c.result);
        EXPECT_EQ(spi(), spiWords(c.words));
        EXPECT_EQ(world.lensPosition(), c.lensAfter);
        EXPECT_EQ(kernel.hardwareControl().requests(), switchQueries(c.switches));
        EXPECT_EQ(printed.find("SPI_IOC_MESSAGE: ") != std::string::npos, c.failingWord > 0);
    }
    EXPECT_EQ(kernel.motor().stepsPastClosedSwitch(), 0);
    release_spi_moto();
    int result = 0;
    EXPECT_EQ(printedBy([] { return run_spi_moto(1, 3, 2, 1, 1, 1, 1); }, result),
              "Spi device not open\n");
    EXPECT_EQ(result, -1);
}

// One switch query with the lens at `lens` (failing 1: the open fails, 2: the request).
struct SwitchCase {
    int which, lens, failing, result;
    const char* requests;
    const char* printed;
};

const SwitchCase kSwitches[] = {
    {0, 0, 0, 0, "FPE0", ""},         {0, 1, 0, 1, "FPE1", ""},
    {1, kEnd, 0, 0, "BPE0", ""},      {1, kEnd - 1, 0, 1, "BPE1", ""},
    {2, 0, 0, 1, "DSSW1", ""},        {3, 0, 0, -1, "", ""},
    {-1, 0, 0, -1, "", ""},           {0, 0, 2, -1, "FPE0", "hwc fpe"},
    {1, 0, 2, -1, "BPE1", "hwc bpe"}, {2, 0, 2, -1, "DSSW1", "hwc dssw"},
    {1, 0, 1, -1, "open", "open"},
};

TEST_F(FocusMotorTest, TheSwitchesCloseAtTheEndsOfTheTravel) {
    for (const SwitchCase& c : kSwitches) {
        SCOPED_TRACE(testing::Message() << "switch " << c.which << " lens " << c.lens);
        world.setLensPosition(c.lens);
        kernel.hardwareControl().clearRequests();
        kernel.hardwareControl().failRequest(c.failing, EIO);
        int result = 0;
        const std::string printed = printedBy([&] { return dump_switch_stat(c.which); }, result);
        EXPECT_EQ(printed,
                  *c.printed ? c.printed + (": " + std::string(strerror(EIO)) + "\n") : "");
        EXPECT_EQ(result, c.result);
        EXPECT_EQ(kernel.hardwareControl().requests(), switchQueries(c.requests));
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
    motor.startMove(20000, -1, 3, 2, 1, 1, 1, 1, 0, 0);
    ASSERT_TRUE(CaptureRecorder::waitFor([&] { return world.lensPosition() < 1100; }));
    motor.stopMotoRun();
    EXPECT_GT(world.lensPosition(), 0);
    EXPECT_EQ(spi().back(), "SPI_IOC_MESSAGE 0x8a40");
}

}  // namespace
