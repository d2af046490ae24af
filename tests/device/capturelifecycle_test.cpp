// The capture thread's start and stop against the twin: a camera that fails or stalls, and many
// runs one after another giving back every descriptor and mapping.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <algorithm>
#include <cerrno>

#include "capturerecorder.h"
#include "capturethread.h"
#include "devicetesting.h"

namespace {

struct CaptureLifecycleTest : TwinTest {
    CaptureThread thread;
    CaptureRecorder recorder{thread};

    CaptureLifecycleTest() {
        ensureApplication();
        world.setFramePeriod(std::chrono::milliseconds(5));
    }
    ~CaptureLifecycleTest() override { thread.stopCapture(); }

    long requestsNamed(const std::string& name) {
        const Lines requests = kernel.capture().requests();
        return std::count(requests.begin(), requests.end(), name);
    }
};

// A camera whose dequeue fails is not spun on: the thread backs off, does no work on the
// missing frames, and goes on when the camera recovers.
TEST_F(CaptureLifecycleTest, AFailingDequeueBacksOffAndRecovers) {
    kernel.capture().failRequests("VIDIOC_DQBUF", EIO);
    ASSERT_EQ(thread.startCapture(CAPTURE_SINGLE_FIBER_LIVE), 0);
    ASSERT_TRUE(
        CaptureRecorder::waitFor([&] { return requestsNamed("VIDIOC_DQBUF capture mmap") >= 3; }));
    QThread::msleep(200);
    EXPECT_LE(requestsNamed("VIDIOC_DQBUF capture mmap"), 10);  // 50 ms apart, not thousands
    EXPECT_EQ(recorder.count("updateVideoFrameByMat"), 0);
    kernel.capture().stopFailing();
    EXPECT_TRUE(recorder.waitForMore("updateVideoFrameByMat", 2));
}

// A camera that delivers nothing cannot hold up the stop: each wait ends after a second.
TEST_F(CaptureLifecycleTest, AStalledCameraCannotHangTheStop) {
    kernel.capture().setGrantedBuffers(0);
    int stopped = -1;
    const std::string printed = printedBy(
        [&] {
            thread.startCapture(CAPTURE_SINGLE_FIBER_LIVE);
            QThread::msleep(1100);
            return thread.stopCapture();
        },
        stopped);
    EXPECT_EQ(stopped, 0);
    EXPECT_NE(printed.find("VIDIOC_DQBUF: no frame within a second\n"), std::string::npos);
    EXPECT_EQ(recorder.count("updateVideoFrameByMat"), 0);
}

// Runs that end by themselves after one frame, and runs stopped at once or after a few frames,
// a hundred times: each start returns, and the process holds what it held after the first round
// of modes (which leaves the light cached, the libraries' pools made).
TEST_F(CaptureLifecycleTest, AHundredRunsGiveBackEveryDescriptorAndMapping) {
    const Capture_Mode modes[] = {CAPTURE_SINGLE_FIBER_LIVE, CAPTURE_LIVE_VIDEO_OUTPUT,
                                  CAPTURE_MULTIPLE_FIBERS, CAPTURE_MULTI_FIBER_LIVE,
                                  CAPTURE_FULL_FRAME_PREVIEW};
    const auto runs = [&](int count) {
        for (int run = 0; run < count; ++run) {
            ASSERT_EQ(thread.startCapture(modes[run % 5]), 0) << run;
            if (run % 3 == 0) {
                QThread::msleep(15);
            }
            if (thread.stopCapture() != 0) {
                ASSERT_TRUE(thread.wait(10000)) << run;  // the one-frame mode ended by itself
            }
        }
    };
    runs(5);
    const int descriptors = openDescriptors(), mappings = bufferMappings();
    EXPECT_EQ(mappings, 0);
    runs(100);
    ASSERT_TRUE(
        CaptureRecorder::waitFor([&] { return recorder.count("captureThreadExit") == 105; }));
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(bufferMappings(), mappings);
}

}  // namespace
