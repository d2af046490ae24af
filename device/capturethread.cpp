#include "capturethread.h"

#include "libcapture.h"
#include "libdisplay.h"
#include "singlefibersearch.h"

namespace {

// After a failed dequeue the thread waits this long before it tries again, rather than spin
// on a camera that keeps failing.
constexpr unsigned long kDequeueBackOffMs = 50;

void registerSignalTypes() {
    qRegisterMetaType<cv::Mat>("cv::Mat");
    qRegisterMetaType<unsigned char*>("unsigned char*");
}

}  // namespace

CaptureThread::CaptureThread(bool useVideoOutput, QObject* parent)
    : QThread(parent),
      grayBuffer_(new unsigned char[kGrayBufferSize]()),
      capturedFrame_(new unsigned char[kGrayBufferSize]()),
      previewFrame_(new unsigned char[kGrayBufferSize / 4]()),
      useVideoOutput_(useVideoOutput) {
    registerSignalTypes();
}

// A run that ended by itself is waited for too, and its lock taken once, so that nothing the
// run wrote is still under way when the buffers go.
CaptureThread::~CaptureThread() {
    stopCapture();
    wait();
    std::lock_guard<std::mutex> ended(runLock_);
}

int CaptureThread::startCapture(Capture_Mode mode) {
    if (isRunning()) {
        return -1;
    }
    workMode_.store(mode, std::memory_order_release);
    useVideoOutput_.store(mode == CAPTURE_LIVE_VIDEO_OUTPUT, std::memory_order_release);
    start(QThread::TimeCriticalPriority);
    started_.acquire();
    return 0;
}

int CaptureThread::stopCapture() {
    if (!isRunning()) {
        return -1;
    }
    stop_.store(true, std::memory_order_release);
    runLock_.lock();
    quit();
    wait();
    runLock_.unlock();
    return 0;
}

int CaptureThread::setExposure(unsigned int exposure) {
    exposure_.store(exposure, std::memory_order_release);
    return isRunning() ? set_exposure(exposure) : -1;
}

void CaptureThread::setThreadWorkMode(int mode) {
    workMode_.store(mode, std::memory_order_release);
}

int CaptureThread::getThreadWorkMode() const {
    return workMode_.load(std::memory_order_acquire);
}

void CaptureThread::setReSearchXY(bool reSearch) {
    reSearch_.store(reSearch, std::memory_order_release);
}

unsigned int CaptureThread::getExposure() const {
    return exposure_.load(std::memory_order_acquire);
}

unsigned int CaptureThread::getImageAvgGray() const {
    return imageAvgGray_.load(std::memory_order_acquire);
}

void CaptureThread::setDisplayByV4L2(bool useVideoOutput) {
    useVideoOutput_.store(useVideoOutput, std::memory_order_release);
}

void CaptureThread::setSharpnessWatch(bool watch) {
    sharpnessWatch_.store(watch, std::memory_order_release);
}

void CaptureThread::setExposurePreview(bool preview) {
    exposurePreview_.store(preview, std::memory_order_release);
}

double CaptureThread::getLastSharpness() const {
    return lastSharpness_.load(std::memory_order_acquire);
}

int CaptureThread::searchSingleFiber(const uint16_t* frame10, unsigned width, unsigned height,
                                     unsigned& x, unsigned& y, unsigned& rawX, unsigned& rawY,
                                     unsigned windowWidth, unsigned windowHeight, bool refine) {
    if (singleFiberSearchBufferSize(width, height) > kGrayBufferSize) {
        return 0;
    }
    return ::searchSingleFiber(frame10, width, height, grayBuffer_.get(), x, y, rawX, rawY,
                               windowWidth, windowHeight, refine);
}

int CaptureThread::search(unsigned windowWidth, unsigned windowHeight, bool refine) {
    return searchSingleFiber(rawFrame_, kSensorWidth, kSensorHeight, windowX_, windowY_, fiberX_,
                             fiberY_, windowWidth, windowHeight, refine);
}

void CaptureThread::setWorkModeFromThread(int mode) {
    workMode_.store(mode, std::memory_order_release);
}

void CaptureThread::stopAfterThisFrame() {
    stop_.store(true, std::memory_order_release);
}

void CaptureThread::run() {
    runLock_.lock();
    // Cleared before startCapture returns, so that a stopCapture right after it is not lost.
    startRun();
    started_.release();
    openDevices();
    while (!stop_.load(std::memory_order_acquire)) {
        handleFrame();
    }
    closeDevices();
    emit captureThreadExit();
    runLock_.unlock();
}

void CaptureThread::startRun() {
    imageAvgGray_.store(0, std::memory_order_release);
    captureCount_ = 0;
    frameCounter_ = 0;
    sampleCounter_ = 0;
    stop_.store(false, std::memory_order_release);
    reSearch_.store(true, std::memory_order_release);
    sharpnessMax_ = -1;
    sharpnessMin_ = 10000;
    lastSharpness_.store(0.0, std::memory_order_release);
}

// Failures are printed by the device layers; the loop runs on whatever they give.
void CaptureThread::openDevices() {
    init_capture_device();
    start_capture();
    if (useVideoOutput_.load(std::memory_order_acquire)) {
        init_display_device();
        start_display();
    }
    set_exposure(exposure_.load(std::memory_order_acquire));
    windowX_ = fiberX_ = kSensorWidth / 2;
    windowY_ = fiberY_ = kSensorHeight / 2;
}

void CaptureThread::closeDevices() {
    stop_capture();
    release_capture_device();
    if (useVideoOutput_.load(std::memory_order_acquire)) {
        stop_display();
        release_display_device();
    }
}

// A frame that could not be dequeued has no work done on it; the thread backs off before the
// next try. Without an output picture (the display failed) the live picture is skipped.
void CaptureThread::handleFrame() {
    void* frame = nullptr;
    if (get_capture_frame(&frame) != 0) {
        msleep(kDequeueBackOffMs);
        return;
    }
    void* picture = nullptr;
    const bool withOutput =
        useVideoOutput_.load(std::memory_order_acquire) && get_disp_frame(&picture) == 0;
    processFrame(static_cast<const uint16_t*>(frame),
                 withOutput ? static_cast<uint8_t*>(picture) : nullptr);
    release_capture_frame();
    if (withOutput) {
        release_disp_frame();
    }
}

void CaptureThread::processFrame(const uint16_t* frame, uint8_t* outputPicture) {
    rawFrame_ = frame;
    outputPicture_ = outputPicture;
    const unsigned n = frameCounter_++;
    switch (workMode_.load(std::memory_order_acquire)) {
        case CAPTURE_SINGLE_FIBER:
            return captureSingleFiber();
        case CAPTURE_SHARPNESS_SAMPLE:
            return sharpnessSample();
        case CAPTURE_FULL_FRAME:
            return captureFullFrame();
        case CAPTURE_SAVE_PNG:
            return savePng();
        case CAPTURE_FULL_FRAME_PREVIEW:
            return fullFramePreview();
        case CAPTURE_FIBER_CHANGE_WATCH:
            return watchFiberChange(n);
        case CAPTURE_SINGLE_FIBER_LIVE:
            return singleFiberLiveView(n);
        case CAPTURE_MULTI_FIBER_LIVE:
            return multiFiberLiveView(n);
        case CAPTURE_MULTIPLE_FIBERS:
            return captureMultipleFibers();
        default:
            return liveToVideoOutput(n);
    }
}
