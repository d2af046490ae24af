// The automatic exposure against the twin, its timer ticked by the test once the picture has
// had a frame or two to follow each step.

#include "autoexposure.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include "capturerecorder.h"
#include "capturethread.h"
#include "devicetesting.h"
#include "libdisplay.h"

namespace {

struct FakeTimer : ExposureTimer {
    bool active = false;
    void start() override { active = true; }
    void stop() override { active = false; }
};

struct AutoExposureTest : CaptureTwinTest {
    FakeTimer timer;
    unsigned stored = 0;
    bool storedSingleFiber = false;
    AutoExposure adjustment{thread, timer, [this](bool singleFiber, unsigned exposure) {
                                storedSingleFiber = singleFiber;
                                stored = exposure;
                            }};

    ~AutoExposureTest() override {
        thread.stopCapture();
        VIDEO_WIDTH = VIDEO_HEIGHT = 240;
        VIDEO2LCD_OFFSET = 0;
    }

    // Ticks while the timer runs, at most `ticks` times, each after three new pictures: with
    // the two driver buffers, the third is the first read out after the last step.
    int tick(int ticks) {
        int n = 0;
        for (; n < ticks && timer.active; ++n) {
            EXPECT_TRUE(recorder.waitForMore("udpateExposureGray", 3));
            adjustment.onAutoExposure();
        }
        return n;
    }
    int gray() const { return int(recorder.last("udpateExposureGray").numbers[1]); }
};

// From either side the exposure crosses the target and the adjustment ends by itself, the mean
// gray close to the target.
TEST_F(AutoExposureTest, AReachableTargetIsReachedFromBelowAndAbove) {
    for (unsigned start : {12u, 30u}) {
        SCOPED_TRACE(start);
        ASSERT_TRUE(adjustment.start(185, true, start));
        EXPECT_EQ(VIDEO_WIDTH, 480);
        EXPECT_EQ(VIDEO2LCD_OFFSET, 236);
        EXPECT_LT(tick(60), 60);
        EXPECT_FALSE(timer.active);
        EXPECT_EQ(stored, thread.getExposure());
        EXPECT_TRUE(storedSingleFiber);
        recorder.waitForMore("udpateExposureGray", 2);
        EXPECT_NEAR(gray(), 185, 12);
        EXPECT_EQ(adjustment.start(185, true, start), false);  // the thread still runs
        thread.stopCapture();
        QCoreApplication::processEvents();  // this run's last pictures count for no later tick
    }
}

// Out of reach, the exposure stops at its bound and the timer runs on until stopped.
TEST_F(AutoExposureTest, AnUnreachableTargetHoldsAtTheBound) {
    const struct {
        int target;
        bool covered;
        unsigned bound;
    } cases[] = {{30, false, 10}, {185, true, 80}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.target);
        world.setCovered(c.covered);
        ASSERT_TRUE(adjustment.start(c.target, false, 20));
        EXPECT_EQ(tick(75), 75);
        EXPECT_TRUE(timer.active);
        EXPECT_EQ(thread.getExposure(), c.bound);
        EXPECT_EQ(stored, c.bound);
        EXPECT_FALSE(storedSingleFiber);
        thread.stopCapture();
        adjustment.onAutoExposure();  // the thread's end ends the adjustment
        EXPECT_FALSE(timer.active);
    }
}

}  // namespace
