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
    std::atomic<int> signals{0};

    AutoFocusTest() {
        ensureApplication();
        QObject::connect(
            &autofocus, &AutoFocusThread::autoFocusFinished, &autofocus,
            [this](bool focused) {
                finished = focused ? 1 : 0;
                ++signals;
            },
            Qt::DirectConnection);
    }
    ~AutoFocusTest() override { capture.stopCapture(); }

    // Runs one autofocus to its end; the signal's value, or kNoSignal.
    int runAutoFocus() {
        finished = kNoSignal;
        signals = 0;
        autofocus.start();
        EXPECT_TRUE(autofocus.wait(60000));
        EXPECT_LE(signals.load(), 1);
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
    EXPECT_EQ(runAutoFocus(), 0);
    EXPECT_EQ(autofocus.samplesTaken(), 1);
    EXPECT_EQ(autofocus.movesMade(), 0);
}
