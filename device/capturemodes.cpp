// The capture thread's work modes: what each does with one frame.

#include <QDateTime>
#include <QDir>
#include <QImage>
#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "capturethread.h"
#include "libcapture.h"
#include "libdisplay.h"
#include "platformroot.h"
#include "shellrunner.h"

namespace {

constexpr unsigned kWindow = kMeasureWindowSide;
constexpr unsigned kHalfWindow = kWindow / 2;
// The multi-fiber views leave out 30 columns on each side of the sensor.
constexpr unsigned kMultiFiberLeft = 30;
constexpr unsigned kMultiFiberWidth = kSensorWidth - kMultiFiberLeft;
constexpr unsigned kPreviewWidth = kSensorWidth / 2, kPreviewHeight = kSensorHeight / 2;
constexpr int kLiveSide = 480;
constexpr int kMultiFiberLiveLong = 628;
// One frame in ten is measured in the live modes, the one whose counter ends in 5.
constexpr unsigned kSharpnessEvery = 10, kSharpnessFrame = 5;

unsigned videoWidth() {
    return unsigned(VIDEO_WIDTH);
}

unsigned videoHeight() {
    return unsigned(VIDEO_HEIGHT);
}

bool sharpnessFrame(unsigned n) {
    return n % kSharpnessEvery == kSharpnessFrame;
}

}  // namespace

void CaptureThread::liveToVideoOutput(unsigned n) {
    const unsigned w = videoWidth(), h = videoHeight();
    const bool preview = exposurePreview_.load(std::memory_order_acquire);
    if (n == 0 && !preview) {
        search(2 * w, 2 * h, false);
    }
    if (sharpnessFrame(n) && !preview) {
        imageSharpness();
    }
    if (outputPicture_ != nullptr) {
        convert_y10bit_to_yuv422ile_scaleIn(rawFrame_, outputPicture_, kSensorWidth, kSensorHeight,
                                            windowX_ - w, windowY_ - h, 2 * w, 2 * h);
        if (preview) {
            unsigned long sum = 0;
            for (unsigned i = 1; i < 2 * w * h; i += 2) {
                sum += outputPicture_[i];
            }
            imageAvgGray_.store(unsigned(sum / (w * h)), std::memory_order_release);
            emit udpateExposureGray(int(exposure_.load(std::memory_order_acquire)),
                                    int(imageAvgGray_.load(std::memory_order_acquire)));
        }
    }
    rememberedLiveMode_ = CAPTURE_LIVE_VIDEO_OUTPUT;
}

void CaptureThread::captureSingleFiber() {
    const int found = search(kWindow, kWindow, true);
    convert_y10bit_to_y8bit(rawFrame_, grayBuffer_.get(), kSensorWidth, kSensorHeight,
                            windowX_ - kHalfWindow, windowY_ - kHalfWindow, kWindow, kWindow);
    emit captureSingleFiberFinished(grayBuffer_.get(), int(kWindow), int(kWindow),
                                    int(windowX_ - kHalfWindow), int(windowY_ - kHalfWindow),
                                    int(fiberX_ + kHalfWindow - windowX_),
                                    int(fiberY_ + kHalfWindow - windowY_), found);
    stopAfterThisFrame();
}

void CaptureThread::captureFullFrame() {
    search(kWindow, kWindow, true);
    convert_y10bit_to_y8bit(rawFrame_, capturedFrame_.get(), kSensorWidth, kSensorHeight, 0, 0,
                            kSensorWidth, kSensorHeight);
    emit captureFinished(capturedFrame_.get(), kSensorWidth, kSensorHeight, int(fiberX_),
                         int(fiberY_));
    setWorkModeFromThread(CAPTURE_FULL_FRAME_PREVIEW);
}

// Without the SD card nothing is saved and nothing is announced.
void CaptureThread::savePng() {
    ++captureCount_;
    const QString card = platformPath("/mnt/sdcard/sd/");
    if (!QDir(card).exists()) {
        setWorkModeFromThread(CAPTURE_FULL_FRAME_PREVIEW);
        return;
    }
    const QString folder = platformPath("/mnt/sdcard/sd/Capture");
    QDir().mkpath(folder);
    convert_y10bit_to_y8bit(rawFrame_, grayBuffer_.get(), kSensorWidth, kSensorHeight, 0, 0,
                            kSensorWidth, kSensorHeight);
    const QImage picture(grayBuffer_.get(), kSensorWidth, kSensorHeight, kSensorWidth,
                         QImage::Format_Grayscale8);
    const QString name = QDateTime::currentDateTime().toString("yyyyMMddHHmmss") + ".png";
    picture.save(folder + "/" + name, "PNG", 100);
    runShellCommand("sync");
    emit captureFinished();
    setWorkModeFromThread(CAPTURE_FULL_FRAME_PREVIEW);
}

// Remembers 5 as the live mode: a sharpness request made now stays in mode 2 until the mode
// is changed from outside, as the full-frame preview has no sharpness of its own.
void CaptureThread::fullFramePreview() {
    convert_y10bit_to_y8bit_scaleIn_skip(rawFrame_, previewFrame_.get(), kSensorWidth,
                                         kSensorHeight, 0, 0, kSensorWidth, kSensorHeight);
    emit updateFullFrameByScaled(previewFrame_.get(), kPreviewWidth, kPreviewHeight);
    rememberedLiveMode_ = CAPTURE_SAVE_PNG;
}

// Nothing is in view when the mean gray falls below 41: the sum of every `step`th byte of the
// first `bytes` of the work buffer is below `minimumSum`.
bool CaptureThread::noFiberInView(unsigned bytes, unsigned step, unsigned long minimumSum) {
    unsigned long sum = 0;
    for (unsigned i = 0; i < bytes; i += step) {
        sum += grayBuffer_[i];
    }
    return sum < minimumSum;
}

void CaptureThread::watchFiberChange(unsigned n) {
    constexpr unsigned kPresenceStep = 10;
    constexpr unsigned long kPresenceMinimum = 7872000;
    if (sharpnessFrame(n)) {
        convert_y10bit_to_y8bit(rawFrame_, grayBuffer_.get(), kSensorWidth, kSensorHeight, 0, 0,
                                kSensorWidth, kSensorHeight);
        if (noFiberInView(kGrayBufferSize, kPresenceStep, kPresenceMinimum)) {
            emit fiberChange();
            stopAfterThisFrame();
        }
    }
    if (sharpnessWatch_.load(std::memory_order_acquire)) {
        watchSharpnessSwing(n);
    }
}

// A fiber changed under the lens shows as the sharpness swinging by more than 50 within five
// frames.
void CaptureThread::watchSharpnessSwing(unsigned n) {
    constexpr unsigned kWindowFrames = 5;
    constexpr int kSwing = 50;
    const int sharpness = int(imageSharpness());
    sharpnessMin_ = std::min(sharpnessMin_, sharpness);
    sharpnessMax_ = std::max(sharpnessMax_, sharpness);
    if (n % kWindowFrames == kWindowFrames - 1) {
        if (sharpnessMax_ - sharpnessMin_ > kSwing) {
            emit fiberChange();
            stopAfterThisFrame();
        }
        sharpnessMax_ = -1;
        sharpnessMin_ = 10000;
    }
}

void CaptureThread::singleFiberLiveView(unsigned n) {
    const unsigned w = videoWidth(), h = videoHeight();
    if (n == 0) {
        search(2 * w, 2 * h, false);
    }
    if (sharpnessFrame(n)) {
        imageSharpness();
    }
    convert_y10bit_to_y8bit_scaleIn(rawFrame_, grayBuffer_.get(), kSensorWidth, kSensorHeight,
                                    windowX_ - w, windowY_ - h, 2 * w, 2 * h);
    const cv::Mat video(int(h), int(w), CV_8UC1, grayBuffer_.get());
    cv::Mat shown;
    cv::resize(video, shown, cv::Size(kLiveSide, kLiveSide), 0, 0, cv::INTER_LINEAR);
    emit updateVideoFrameByMat(shown);
    rememberedLiveMode_ = CAPTURE_SINGLE_FIBER_LIVE;
}

// The row of fibers lies across the sensor; turned a quarter clockwise it fills the screen's
// height.
void CaptureThread::multiFiberLiveView(unsigned n) {
    if (sharpnessFrame(n)) {
        imageSharpness();
    }
    convert_y10bit_to_y8bit_scaleIn(rawFrame_, grayBuffer_.get(), kSensorWidth, kSensorHeight,
                                    kMultiFiberLeft, 0, kMultiFiberWidth, kSensorHeight);
    const cv::Mat video(int(kSensorHeight / 2), int(kMultiFiberWidth / 2), CV_8UC1,
                        grayBuffer_.get());
    cv::Mat resized, turned;
    cv::resize(video, resized, cv::Size(kMultiFiberLiveLong, kLiveSide), 0, 0, cv::INTER_LINEAR);
    cv::transpose(resized, turned);
    cv::flip(turned, turned, 1);
    emit updateVideoFrameByMat(turned);
    rememberedLiveMode_ = CAPTURE_MULTI_FIBER_LIVE;
}

void CaptureThread::captureMultipleFibers() {
    convert_y10bit_to_y8bit(rawFrame_, grayBuffer_.get(), kSensorWidth, kSensorHeight,
                            kMultiFiberLeft, 0, kMultiFiberWidth, kSensorHeight);
    emit captureMutipleFiberFinished(grayBuffer_.get(), kMultiFiberWidth, kSensorHeight);
    stopAfterThisFrame();
}
