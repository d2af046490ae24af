// The capture thread's sharpness: the measure of the current frame for the work mode, and the
// samples it takes for the autofocus (mode 2).

#include "capturethread.h"
#include "framesharpness.h"
#include "libcapture.h"

namespace {

// The first sample looks at the middle 960 x 960 of the frame, one byte in a hundred: below a
// mean gray of 41 no fiber is in view.
constexpr unsigned kViewLeft = 320, kViewTop = 120, kViewSide = 960;
constexpr unsigned kViewStep = 100;
constexpr unsigned long kViewMinimumSum = 377856;
// Every third sample, while the autofocus asks for it, searches the fiber again.
constexpr int kReSearchEvery = 3;
constexpr unsigned kReSearchWindow = 496;

}  // namespace

double CaptureThread::imageSharpness() {
    const int mode = workMode_.load(std::memory_order_acquire);
    if (mode == CAPTURE_SHARPNESS_SAMPLE) {
        if (sampleCounter_ == 1) {
            sharpnessX_ = kSensorWidth / 2;
            sharpnessY_ = kSensorHeight / 2;
        }
        if (sampleCounter_ % kReSearchEvery == 1 && reSearch_.load(std::memory_order_acquire)) {
            search(kReSearchWindow, kReSearchWindow, false);
            sharpnessX_ = fiberX_;
            sharpnessY_ = fiberY_;
        }
    }
    const SharpnessPlan plan =
        sharpnessPlan(mode, rememberedLiveMode_, fiberX_, fiberY_, sharpnessX_, sharpnessY_);
    const double sharpness = measurePlan(focus_, rawFrame_, plan, grayBuffer_.get());
    if (plan.announced) {
        emit updateSharpnessValue(int(sharpness));
    }
    return sharpness;
}

// One sample per request: the autofocus sets mode 2 and waits until the mode changes, then
// reads the last sharpness (written first, so that it is there when the mode changes).
void CaptureThread::sharpnessSample() {
    const int sample = sampleCounter_++;
    double sharpness;
    if (sample == 0) {
        convert_y10bit_to_y8bit(rawFrame_, grayBuffer_.get(), kSensorWidth, kSensorHeight,
                                kViewLeft, kViewTop, kViewSide, kViewSide);
        const bool empty = noFiberInView(kViewSide * kViewSide, kViewStep, kViewMinimumSum);
        if (empty) {
            sampleCounter_ = 0;
        }
        sharpness = empty ? -1.0 : imageSharpness();
    } else {
        sharpness = imageSharpness();
    }
    lastSharpness_.store(sharpness, std::memory_order_release);
    const int live = rememberedLiveMode_;
    if (live == CAPTURE_SINGLE_FIBER_LIVE || live == CAPTURE_MULTI_FIBER_LIVE ||
        live == CAPTURE_LIVE_VIDEO_OUTPUT) {
        setWorkModeFromThread(live);
    }
}
