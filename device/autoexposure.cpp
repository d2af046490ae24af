#include "autoexposure.h"

#include "capturethread.h"
#include "libdisplay.h"

namespace {

constexpr int kPreviewSide = 480;
constexpr int kPreviewOffset = 236;

}  // namespace

AutoExposure::AutoExposure(CaptureThread& capture, ExposureTimer& timer,
                           StoreExposure storeExposure)
    : capture_(capture), timer_(timer), storeExposure_(std::move(storeExposure)) {}

bool AutoExposure::start(int targetGray, bool singleFiber, unsigned storedExposure) {
    if (capture_.isRunning()) {
        return false;
    }
    VIDEO_WIDTH = kPreviewSide;
    VIDEO_HEIGHT = kPreviewSide;
    VIDEO2LCD_OFFSET = kPreviewOffset;
    capture_.setExposurePreview(true);
    capture_.setExposure(storedExposure);
    capture_.startCapture(CAPTURE_LIVE_VIDEO_OUTPUT);
    targetGray_ = targetGray;
    singleFiber_ = singleFiber;
    raised_ = lowered_ = false;
    timer_.start();
    return true;
}

void AutoExposure::finish() {
    raised_ = lowered_ = false;
    timer_.stop();
}

// Steps taken far below the target (under half of it) do not count as raised: a single
// lowering after them must not end the adjustment.
void AutoExposure::onAutoExposure() {
    if (!capture_.isRunning() || (raised_ && lowered_)) {
        finish();
        return;
    }
    const int gray = int(capture_.getImageAvgGray());
    const unsigned exposure = capture_.getExposure();
    if (gray < targetGray_) {
        raised_ = true;
        if (exposure < kMaxExposure) {
            capture_.setExposure(exposure + 1);
        }
    } else {
        lowered_ = true;
        if (exposure > kMinExposure) {
            capture_.setExposure(exposure - 1);
        }
    }
    if (gray < targetGray_ / 2) {
        raised_ = false;
    }
    storeExposure_(singleFiber_, capture_.getExposure());
}
