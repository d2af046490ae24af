// The autofocus against the twin: its corrected ends (no capture thread, a capture thread that
// stops, no fiber), and the closed loop from seeded start positions over the whole travel,
// with how often it ends in focus.

#include "autofocusthread.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <random>

#include "capturerecorder.h"
#include "capturethread.h"
#include "devicetesting.h"
#include "lensoptics.h"
#include "motorthread.h"

namespace {

constexpr int kNoSignal = -1;
// The twin's depth of field: the lens distance at which the defocus blur has grown as large as
// the optics' own blur at focus.
constexpr int kDepthOfFieldSteps = 211;

struct AutoFocusTest : TwinTest {
    CaptureThread capture;
    MotorThread motor;
    AutoFocusThread autofocus{&capture, &motor};
    std::atomic<int> finished{kNoSignal};
    std::atomic<int> signalCount{0};

    AutoFocusTest() {
        ensureApplication();
        QObject::connect(
            &autofocus, &AutoFocusThread::autoFocusFinished, &autofocus,
            [this](bool focused) {
                finished = focused ? 1 : 0;
                ++signalCount;
            },
            Qt::DirectConnection);
    }
    ~AutoFocusTest() override { capture.stopCapture(); }

    // Until live view has shown frames taken with the lens where it stands now, as before a
    // trigger on the instrument: the driver's queue may still hold older ones, and a sample
    // returns to the live mode it finds.
    void showFreshFrames() {
        const unsigned taken = kernel.capture().takenBuffers();
        ASSERT_TRUE(
            CaptureRecorder::waitFor([&] { return kernel.capture().takenBuffers() > taken + 2; }));
    }

    // Runs one autofocus to its end; the signal's value, or kNoSignal.
    int runAutoFocus() {
        finished = kNoSignal;
        signalCount = 0;
        autofocus.start();
        EXPECT_TRUE(autofocus.wait(300000));
        EXPECT_LE(signalCount.load(), 1);
        return finished;
    }
};

// Without a running capture thread no sample can come: the autofocus ends at once, unmoved.
TEST_F(AutoFocusTest, EndsAtOnceWithoutACaptureThread) {
    kernel.motor().clearRequests();
    EXPECT_EQ(runAutoFocus(), 0);
    EXPECT_TRUE(kernel.motor().requests().empty());
}

// A capture thread in the full-frame preview keeps a sample request waiting: when it stops,
// the wait gives up instead of lasting for ever.
TEST_F(AutoFocusTest, GivesUpWhenTheCaptureThreadStopsDuringTheWait) {
    ASSERT_EQ(capture.startCapture(CAPTURE_FULL_FRAME_PREVIEW), 0);
    autofocus.start();
    ASSERT_TRUE(CaptureRecorder::waitFor(
        [&] { return capture.getThreadWorkMode() == CAPTURE_SHARPNESS_SAMPLE; }));
    capture.stopCapture();
    EXPECT_TRUE(autofocus.wait(10000));
    EXPECT_EQ(finished.load(), 0);
    EXPECT_EQ(autofocus.samplesTaken(), 0);
}

TEST_F(AutoFocusTest, NoFiberInViewEndsWithTheFirstSample) {
    world.setCovered(true);
    ASSERT_EQ(capture.startCapture(CAPTURE_SINGLE_FIBER_LIVE), 0);
    showFreshFrames();
    EXPECT_EQ(runAutoFocus(), 0);
    EXPECT_EQ(autofocus.samplesTaken(), 1);
    EXPECT_EQ(autofocus.movesMade(), 0);
}

int median(std::vector<int> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// From seeded start positions over the whole travel, both ends among them, and foci over the
// middle of it: every autofocus ends within the climb's limits (at most 101 moves, each after a
// sample), no step is sent toward a switch read closed, and nearly every one ends in focus.
TEST_F(AutoFocusTest, EndsInFocusFromStartsOverTheWholeTravel) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    // Under a sanitizer, where the twin takes seconds to draw a blur, two runs from 40 units
    // either side of the focus look for races and leaks; the figures are the plain build's.
    constexpr int kRuns = 2;
    constexpr int kNearFocus = 640;
#else
    constexpr int kRuns = 50;
    constexpr int kNearFocus = 0;  // anywhere
#endif
    constexpr int kEnd = sim::lens::kTravelSteps;
    constexpr double kInFocusShare = 0.95;
    world.setFramePeriod(std::chrono::milliseconds(5));
    std::mt19937 random(16);
    std::uniform_int_distribution<int> anywhere(0, kEnd), middle(kEnd / 4, 3 * kEnd / 4);
    ASSERT_EQ(capture.startCapture(CAPTURE_SINGLE_FIBER_LIVE), 0);
    int inFocus = 0;
    std::vector<int> samples, moves;
    for (int run = 0; run < kRuns; ++run) {
        const int focus = middle(random);
        const int start = kNearFocus > 0 ? focus + (run % 2 == 0 ? kNearFocus : -kNearFocus)
                          : run == 0     ? 0
                          : run == 1     ? kEnd
                                         : anywhere(random);
        world.setFocusPosition(focus);
        world.setLensPosition(start);
        showFreshFrames();
        const int focused = runAutoFocus();
        ASSERT_NE(focused, kNoSignal);
        samples.push_back(autofocus.samplesTaken());
        moves.push_back(autofocus.movesMade());
        EXPECT_LE(moves.back(), 101);
        const bool near = std::abs(world.lensPosition() - focus) <= kDepthOfFieldSteps;
        inFocus += focused == 1 && near;
    }
    EXPECT_EQ(kernel.motor().stepsPastClosedSwitch(), 0);
    if (kNearFocus == 0) {
        EXPECT_GT(kernel.hardwareControl().closedAnswers(), 0);
        EXPECT_GE(inFocus, kInFocusShare * kRuns);
    }
    std::printf("in focus %d of %d; samples median %d worst %d; moves median %d worst %d\n",
                inFocus, kRuns, median(samples), *std::max_element(samples.begin(), samples.end()),
                median(moves), *std::max_element(moves.begin(), moves.end()));
}

}  // namespace
