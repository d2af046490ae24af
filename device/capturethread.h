#pragma once

#include <QMetaType>
#include <QSemaphore>
#include <QThread>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <opencv2/core/mat.hpp>

#include "focuscal.h"
#include "instrumentoptics.h"

// What the capture thread does with each frame.
enum Capture_Mode {
    CAPTURE_LIVE_VIDEO_OUTPUT = 0,   // the picture to the video output; any unknown mode too
    CAPTURE_SINGLE_FIBER = 1,        // search, 960 x 960 crop, captureSingleFiberFinished, stop
    CAPTURE_SHARPNESS_SAMPLE = 2,    // one sharpness value for the autofocus, then back
    CAPTURE_FULL_FRAME = 4,          // search, whole frame, captureFinished, then mode 6
    CAPTURE_SAVE_PNG = 5,            // whole frame to a PNG on the SD card, then mode 6
    CAPTURE_FULL_FRAME_PREVIEW = 6,  // 800 x 600 decimated frame, updateFullFrameByScaled
    CAPTURE_FIBER_CHANGE_WATCH = 7,  // fiberChange when the fiber goes or changes, stop
    CAPTURE_SINGLE_FIBER_LIVE = 8,   // 480 x 480 picture for the widget
    CAPTURE_MULTI_FIBER_LIVE = 9,    // 480 x 628 turned picture for the widget
    CAPTURE_MULTIPLE_FIBERS = 10,    // 1570 x 1200 frame, captureMutipleFiberFinished, stop
};

Q_DECLARE_METATYPE(cv::Mat)
Q_DECLARE_METATYPE(unsigned char*)

// The one thread that owns the camera. While it runs it takes every frame from the capture
// device and does one thing with it, chosen by its work mode (Capture_Mode): live view, fiber
// search and capture for the measurement, sharpness samples for the autofocus, the watch for a
// removed or changed fiber, PNG captures, exposure preview. Results leave as queued signals.
//
// The work mode, the stop flag, the last sharpness and the other words read and written from
// other threads are atomics: a store made by one thread is seen by the other with everything
// written before it.
class CaptureThread : public QThread {
    Q_OBJECT

public:
    // Bytes of the 8-bit work buffer: one whole frame.
    static constexpr unsigned kGrayBufferSize = kSensorPixels;

    explicit CaptureThread(bool useVideoOutput = false, QObject* parent = nullptr);
    ~CaptureThread() override;

    // Starts the thread in `mode` (the video output is used exactly in mode 0) and returns once
    // the thread holds its run lock; -1 when it is running already.
    int startCapture(Capture_Mode mode);
    // Ends the frame loop after the current frame and waits for the thread; -1 when stopped.
    int stopCapture();
    // Stores the exposure, applied at every start; while running also passes it to the camera
    // and returns that result, else returns -1.
    int setExposure(unsigned int exposure);

    void setThreadWorkMode(int mode);
    int getThreadWorkMode() const;
    void setReSearchXY(bool reSearch);
    unsigned int getExposure() const;
    unsigned int getImageAvgGray() const;
    void setDisplayByV4L2(bool useVideoOutput);
    // The fiber-change watch (mode 7) also reacts to a swing of the sharpness.
    void setSharpnessWatch(bool watch);
    // Live mode 0 reports the picture's mean gray, and skips the search and the sharpness.
    void setExposurePreview(bool preview);
    // The last mode-2 sample: -1.0 when no fiber was in view.
    double getLastSharpness() const;

    // The sharpness of the current frame for the work mode; announced in every mode but 7.
    double imageSharpness();

    // Does the work mode's work on one raw frame (and the output picture, or null) and counts
    // the frame, as the frame loop does with each frame it takes. For benchmarks of the modes.
    void processFrame(const uint16_t* frame, uint8_t* outputPicture);

    // The fiber search (see singlefibersearch.h) with the thread's own work buffer.
    int searchSingleFiber(const uint16_t* frame10, unsigned width, unsigned height, unsigned& x,
                          unsigned& y, unsigned& rawX, unsigned& rawY, unsigned windowWidth,
                          unsigned windowHeight, bool refine);

signals:
    // gray 960 x 960, window left and top, fiber center in the crop, 1 when found.
    void captureSingleFiberFinished(unsigned char* gray, int width, int height, int left, int top,
                                    int fiberX, int fiberY, int found);
    void captureFinished(unsigned char* gray, unsigned int width, unsigned int height, int fiberX,
                         int fiberY);
    void captureFinished();
    void captureMutipleFiberFinished(unsigned char* gray, unsigned int width, unsigned int height);
    void updateVideoFrameByMat(cv::Mat frame);
    void updateFullFrameByScaled(unsigned char* gray, unsigned int width, unsigned int height);
    void fiberChange();
    void captureThreadExit();
    void udpateExposureGray(int exposure, int gray);
    void updateSharpnessValue(int sharpness);

protected:
    void run() override;

private:
    void startRun();
    void openDevices();
    void closeDevices();
    void handleFrame();
    int search(unsigned windowWidth, unsigned windowHeight, bool refine);
    void setWorkModeFromThread(int mode);

    // The work modes, one frame each (n: the frame counter before it is increased).
    void liveToVideoOutput(unsigned n);
    void captureSingleFiber();
    void sharpnessSample();
    void captureFullFrame();
    void savePng();
    void fullFramePreview();
    void watchFiberChange(unsigned n);
    void singleFiberLiveView(unsigned n);
    void multiFiberLiveView(unsigned n);
    void captureMultipleFibers();

    bool noFiberInView(unsigned bytes, unsigned step, unsigned long minimumSum);
    void watchSharpnessSwing(unsigned n);
    void stopAfterThisFrame();

    std::atomic<bool> sharpnessWatch_{false};
    std::atomic<double> lastSharpness_{0.0};
    std::atomic<bool> exposurePreview_{false};
    std::atomic<int> workMode_{CAPTURE_LIVE_VIDEO_OUTPUT};
    std::atomic<unsigned> exposure_{20};
    std::atomic<unsigned> imageAvgGray_{0};
    int captureCount_ = 0;
    unsigned frameCounter_ = 0;
    int sampleCounter_ = 0;
    std::atomic<bool> stop_{false};
    const uint16_t* rawFrame_ = nullptr;
    std::unique_ptr<unsigned char[]> grayBuffer_;
    // Modes 4 and 6 hand out buffers of their own: the preview that follows a full-frame
    // capture must not overwrite the frame just handed out for the measurement.
    std::unique_ptr<unsigned char[]> capturedFrame_;
    std::unique_ptr<unsigned char[]> previewFrame_;
    uint8_t* outputPicture_ = nullptr;
    unsigned windowX_ = kSensorWidth / 2, windowY_ = kSensorHeight / 2;
    unsigned fiberX_ = kSensorWidth / 2, fiberY_ = kSensorHeight / 2;
    unsigned sharpnessX_ = kSensorWidth / 2, sharpnessY_ = kSensorHeight / 2;
    MathCal::FocusCal focus_;
    std::atomic<bool> useVideoOutput_;
    std::atomic<bool> reSearch_{true};
    int rememberedLiveMode_ = -1;  // none yet
    int sharpnessMax_ = -1, sharpnessMin_ = 10000;
    // Held by the thread for the whole run. A standard mutex: the thread sanitizer sees what it
    // orders (the run's writes before whatever follows the stop), which it cannot see in Qt's.
    std::mutex runLock_;
    // Released by the thread once it holds the run lock: startCapture waits on it instead of
    // polling the lock, which could spin for ever when a one-frame run had already ended
    // between two polls.
    QSemaphore started_;
};
