// The capture thread against the twin: each work mode's signals with their arguments, the mode
// that follows and the devices it uses; a camera that fails or stalls; many runs one after
// another giving back every descriptor and mapping.

#include "capturethread.h"

#include <gtest/gtest.h>

#include <QDir>
#include <algorithm>
#include <cerrno>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "capturerecorder.h"
#include "devicetesting.h"
#include "lensoptics.h"
#include "platformroot.h"

namespace {

using Names = std::vector<std::string>;
using Numbers = std::vector<long>;

// The focus measure of the sharp frame in single-fiber live view, as the real end-face pictures
// give it.
constexpr long kRealSharpnessMin = 40, kRealSharpnessMax = 56;

struct CaptureThreadTest : CaptureTwinTest {
    void fiberAt(double x, double y) {
        sim::EndFaceScene scene;
        scene.centerX = x;
        scene.centerY = y;
        world.setScene(scene);
    }
    bool exited() {
        return CaptureRecorder::waitFor([&] { return recorder.count("captureThreadExit") > 0; }) &&
               thread.wait(10000);
    }
    bool modeBecomes(int mode) {
        return CaptureRecorder::waitFor([&] { return thread.getThreadWorkMode() == mode; });
    }
    long requestsNamed(const std::string& name) {
        const Lines requests = kernel.capture().requests();
        return std::count(requests.begin(), requests.end(), name);
    }
};

double meanOf(const cv::Mat& picture, int x, int y, int side) {
    return cv::mean(picture(cv::Rect(x - side / 2, y - side / 2, side, side)))[0];
}

// Near the corner the 960 x 960 window is kept inside the frame: its left and top are exact,
// and the fiber is found in the crop where it lies.
TEST_F(CaptureThreadTest, Mode1HandsOverTheWindowAroundTheFiberAndStops) {
    fiberAt(1200.0, 800.0);
    ASSERT_EQ(thread.startCapture(CAPTURE_SINGLE_FIBER), 0);
    ASSERT_TRUE(exited());
    EXPECT_EQ(recorder.names(), (Names{"captureSingleFiberFinished", "captureThreadExit"}));
    const CaptureRecorder::Emitted& crop = recorder.emitted()[0];
    const Numbers& n = crop.numbers;
    const long left = 1600 - 481 - 480, top = 1200 - 481 - 480;  // window center 1119, 719
    EXPECT_EQ(Numbers(n.begin(), n.begin() + 4), (Numbers{960, 960, left, top}));
    EXPECT_NEAR(n[4], 1200 - left, 1.5);
    EXPECT_NEAR(n[5], 800 - top, 1.5);
    EXPECT_EQ(n[6], 1);
    const cv::Mat gray(960, 960, CV_8UC1, const_cast<unsigned char*>(crop.buffer));
    EXPECT_LT(meanOf(gray, int(n[4]), int(n[5]), 60), meanOf(gray, 100, 100, 60) - 50);
}

TEST_F(CaptureThreadTest, Mode10HandsOverTheRowBetweenTheCutColumnsAndStops) {
    fiberAt(300.0, 600.0);
    ASSERT_EQ(thread.startCapture(CAPTURE_MULTIPLE_FIBERS), 0);
    ASSERT_TRUE(exited());
    EXPECT_EQ(recorder.names(), (Names{"captureMutipleFiberFinished", "captureThreadExit"}));
    EXPECT_EQ(recorder.emitted()[0].numbers, (Numbers{1570, 1200}));
    const cv::Mat gray(1200, 1570, CV_8UC1,
                       const_cast<unsigned char*>(recorder.emitted()[0].buffer));
    EXPECT_LT(meanOf(gray, 300 - 30, 600, 60), meanOf(gray, 1200, 600, 60) - 50);
}

// The sharp twin frame measures like the real end-face pictures, once every ten frames.
TEST_F(CaptureThreadTest, Mode8ShowsTheFiberAt480AndMeasuresOneFrameInTen) {
    ASSERT_EQ(thread.startCapture(CAPTURE_SINGLE_FIBER_LIVE), 0);
    ASSERT_TRUE(recorder.waitForMore("updateVideoFrameByMat", 26));
    thread.stopCapture();
    const CaptureRecorder::Emitted video = recorder.last("updateVideoFrameByMat");
    EXPECT_EQ(video.numbers, (Numbers{480, 480}));
    EXPECT_LT(meanOf(video.picture, 240, 240, 40), meanOf(video.picture, 40, 40, 40) - 50);
    const std::vector<long> sharpness = recorder.firstNumbers("updateSharpnessValue");
    ASSERT_GE(sharpness.size(), 2u);
    EXPECT_LE(sharpness.size(), 3u);
    for (long value : sharpness) {
        EXPECT_GE(value, kRealSharpnessMin);
        EXPECT_LE(value, kRealSharpnessMax);
    }
    EXPECT_TRUE(kernel.output().requests().empty());  // only mode 0 uses the video output
}

// A fiber left of the middle shows above the middle once the picture is turned clockwise.
TEST_F(CaptureThreadTest, Mode9TurnsTheRowAQuarterClockwise) {
    fiberAt(400.0, 600.0);
    ASSERT_EQ(thread.startCapture(CAPTURE_MULTI_FIBER_LIVE), 0);
    ASSERT_TRUE(recorder.waitForMore("updateVideoFrameByMat", 2));
    thread.stopCapture();
    const cv::Mat picture = recorder.last("updateVideoFrameByMat").picture;
    EXPECT_EQ(recorder.last("updateVideoFrameByMat").numbers, (Numbers{480, 628}));
    const int fiberRow = (400 - 30) * 628 / 1570;  // the fiber's x along the turned rows
    cv::Mat dark;
    cv::threshold(picture, dark, 140, 255, cv::THRESH_BINARY_INV);
    const cv::Moments m = cv::moments(dark, true);
    EXPECT_NEAR(m.m01 / m.m00, fiberRow, 3);
    EXPECT_NEAR(m.m10 / m.m00, 240, 3);
}

TEST_F(CaptureThreadTest, Mode0DrivesTheVideoOutputAndReportsTheMeanGray) {
    thread.setExposurePreview(true);
    EXPECT_EQ(thread.setExposure(25), -1);  // stored, applied at the start
    ASSERT_EQ(thread.startCapture(CAPTURE_LIVE_VIDEO_OUTPUT), 0);
    EXPECT_EQ(thread.startCapture(CAPTURE_LIVE_VIDEO_OUTPUT), -1);
    ASSERT_TRUE(recorder.waitForMore("udpateExposureGray", 3));
    EXPECT_EQ(thread.stopCapture(), 0);
    EXPECT_EQ(thread.stopCapture(), -1);
    const Numbers gray = recorder.last("udpateExposureGray").numbers;
    EXPECT_EQ(gray[0], 25);
    EXPECT_NEAR(gray[1], 25.0 / 20 * 170, 25);
    EXPECT_EQ(long(thread.getImageAvgGray()), gray[1]);
    EXPECT_EQ(recorder.firstNumbers("updateSharpnessValue"),
              std::vector<long>{});  // the preview skips the sharpness
    const Lines display = kernel.output().requests();
    ASSERT_FALSE(display.empty());
    EXPECT_EQ((Lines{display.front(), display.back()}), (Lines{"open", "close"}));
    unsigned width = 0, height = 0;
    const std::vector<uint8_t> shown = kernel.output().shownPicture(width, height);
    ASSERT_EQ(shown.size(), size_t(width) * height * 2);
    const size_t middle = (size_t(height / 2) * width + width / 2) * 2;
    EXPECT_EQ(shown[middle], 128);                // chroma stays neutral
    EXPECT_LT(shown[middle + 1], shown[1] - 50);  // the fiber darker than the corner
}

TEST_F(CaptureThreadTest, Mode0WithoutPreviewReportsSharpnessZero) {
    ASSERT_EQ(thread.startCapture(CAPTURE_LIVE_VIDEO_OUTPUT), 0);
    ASSERT_TRUE(recorder.waitForMore("updateSharpnessValue", 1));
    EXPECT_EQ(recorder.firstNumbers("updateSharpnessValue"), std::vector<long>{0});
    EXPECT_EQ(recorder.count("udpateExposureGray"), 0);
}

// A sample returns to the live mode with the measure. A covered view gives -1 every time, as
// each sample after one without a fiber is a first sample again, the one that looks.
TEST_F(CaptureThreadTest, Mode2TakesOneSampleAndReturnsToTheLiveMode) {
    ASSERT_EQ(thread.startCapture(CAPTURE_SINGLE_FIBER_LIVE), 0);
    ASSERT_TRUE(recorder.waitForMore("updateVideoFrameByMat", 1));
    for (bool covered : {true, true, false, false}) {
        world.setCovered(covered);
        ASSERT_TRUE(recorder.waitForMore("updateVideoFrameByMat", 2));
        thread.setThreadWorkMode(CAPTURE_SHARPNESS_SAMPLE);
        ASSERT_TRUE(modeBecomes(CAPTURE_SINGLE_FIBER_LIVE));
        const double sharpness = thread.getLastSharpness();
        EXPECT_TRUE(covered ? sharpness == -1.0
                            : sharpness >= kRealSharpnessMin && sharpness <= kRealSharpnessMax)
            << sharpness;
    }
}

// The full-frame preview remembers no live mode to return to: the request stays.
TEST_F(CaptureThreadTest, Mode2DuringThePreviewWaitsForAModeFromOutside) {
    ASSERT_EQ(thread.startCapture(CAPTURE_FULL_FRAME_PREVIEW), 0);
    ASSERT_TRUE(recorder.waitForMore("updateFullFrameByScaled", 1));
    thread.setThreadWorkMode(CAPTURE_SHARPNESS_SAMPLE);
    ASSERT_TRUE(recorder.waitForMore("updateSharpnessValue", 3));
    EXPECT_EQ(thread.getThreadWorkMode(), CAPTURE_SHARPNESS_SAMPLE);
}

// The full frame handed over stays as it was while the preview that follows runs.
TEST_F(CaptureThreadTest, Mode4HandsOverTheWholeFrameThenPreviewsInItsOwnBuffer) {
    ASSERT_EQ(thread.startCapture(CAPTURE_FULL_FRAME), 0);
    ASSERT_TRUE(recorder.waitForMore("updateFullFrameByScaled", 1));
    const CaptureRecorder::Emitted frame = recorder.last("captureFinished");
    ASSERT_EQ(frame.numbers.size(), 4u);
    EXPECT_EQ(Numbers(frame.numbers.begin(), frame.numbers.begin() + 2), (Numbers{1600, 1200}));
    EXPECT_NEAR(frame.numbers[2], 800, 1.5);
    EXPECT_NEAR(frame.numbers[3], 600, 1.5);
    const std::vector<unsigned char> handedOver(frame.buffer, frame.buffer + kSensorPixels);
    ASSERT_TRUE(recorder.waitForMore("updateFullFrameByScaled", 3));
    EXPECT_EQ(recorder.last("updateFullFrameByScaled").numbers, (Numbers{800, 600}));
    EXPECT_NE(recorder.last("updateFullFrameByScaled").buffer, frame.buffer);
    EXPECT_TRUE(std::equal(handedOver.begin(), handedOver.end(), frame.buffer));
    EXPECT_EQ(thread.getThreadWorkMode(), CAPTURE_FULL_FRAME_PREVIEW);
}

TEST_F(CaptureThreadTest, Mode5SavesAPngNamedByTimeWhenTheCardIsThere) {
    for (bool card : {false, true}) {
        SCOPED_TRACE(card);
        if (card) {
            QDir().mkpath(platformPath("/mnt/sdcard/sd"));
        }
        recorder.clear();
        ASSERT_EQ(thread.startCapture(CAPTURE_SAVE_PNG), 0);
        ASSERT_TRUE(modeBecomes(CAPTURE_FULL_FRAME_PREVIEW));
        ASSERT_TRUE(recorder.waitForMore("updateFullFrameByScaled", 1));
        thread.stopCapture();
        EXPECT_EQ(recorder.count("captureFinished"), card ? 1 : 0);
        const QStringList saved = QDir(platformPath("/mnt/sdcard/sd/Capture"))
                                      .entryList({"??????????????.png"}, QDir::Files);
        EXPECT_EQ(saved.size(), card ? 1 : 0);
    }
}

TEST_F(CaptureThreadTest, Mode7StopsWhenTheFiberIsTakenAway) {
    ASSERT_EQ(thread.startCapture(CAPTURE_FIBER_CHANGE_WATCH), 0);
    ASSERT_TRUE(CaptureRecorder::waitFor([&] { return kernel.capture().requests().size() > 40; }));
    EXPECT_TRUE(thread.isRunning());
    world.setCovered(true);
    ASSERT_TRUE(exited());
    EXPECT_EQ(recorder.names(), (Names{"fiberChange", "captureThreadExit"}));
}

// With the watch on, a sharpness swinging by more than 50 within five frames counts as a
// change: dust in the middle of the view jumping in and out of focus.
TEST_F(CaptureThreadTest, Mode7WithTheSharpnessWatchStopsOnASwing) {
    sim::EndFaceScene dusty;
    dusty.centerX = dusty.centerY = 300.0;
    for (double y = 540.0; y < 662.0; y += 16.0) {
        for (double x = 740.0; x < 862.0; x += 16.0) {
            dusty.spots.push_back({x, y, 3.0, 100.0, false});
        }
    }
    world.setScene(dusty);
    thread.setSharpnessWatch(true);
    ASSERT_EQ(thread.startCapture(CAPTURE_FIBER_CHANGE_WATCH), 0);
    // Two minutes: the twin's first blur far from focus takes many seconds under the thread
    // sanitizer, and no frame comes meanwhile.
    const bool changed = CaptureRecorder::waitFor(
        [&] {
            const int position = world.lensPosition();
            world.setLensPosition(position == sim::lens::kDefaultFocus ? 0
                                                                       : sim::lens::kDefaultFocus);
            return recorder.count("fiberChange") > 0;
        },
        120000);
    ASSERT_TRUE(changed);
    ASSERT_TRUE(exited());
    EXPECT_EQ(recorder.names(), (Names{"fiberChange", "captureThreadExit"}));
}

// A camera whose dequeue fails is not spun on: the thread backs off, does no work on the
// missing frames, and goes on when the camera recovers.
TEST_F(CaptureThreadTest, AFailingDequeueBacksOffAndRecovers) {
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
TEST_F(CaptureThreadTest, AStalledCameraCannotHangTheStop) {
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
TEST_F(CaptureThreadTest, AHundredRunsGiveBackEveryDescriptorAndMapping) {
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
