#pragma once

#include <QThread>
#include <cstdint>
#include <memory>

#include "instrumentoptics.h"

// The thread that owns the camera. Each frame is converted to 8-bit gray in the thread's own
// work buffer and used as the current work mode asks: live view, fiber search, capture for
// measurement, sharpness sampling.
class CaptureThread : public QThread {
    Q_OBJECT

public:
    // Bytes of the 8-bit work buffer: one whole frame.
    static constexpr unsigned kGrayBufferSize = kSensorPixels;

    explicit CaptureThread(QObject* parent = nullptr);
    ~CaptureThread() override;

    // Finds the fiber in a raw 10-bit frame: a coarse circle search over the whole frame, then,
    // with `refine`, a fit of the cladding's edge in a 320 x 320 crop around it. Returns 1 when
    // a fiber was found. (rawX, rawY) is its center; (x, y) the same center moved, where
    // needed, so that a windowWidth x windowHeight window around it lies inside the frame.
    // Without a fiber, both are the frame's center and 0 is returned.
    int searchSingleFiber(const uint16_t* frame10, unsigned width, unsigned height, unsigned& x,
                          unsigned& y, unsigned& rawX, unsigned& rawY, unsigned windowWidth,
                          unsigned windowHeight, bool refine);

    // The coarse search: the 8-bit picture shrunk by `scale`, smoothed, and searched with the
    // circle Hough transform; the best-supported circle's center in full-size pixels goes to
    // (x, y). Diameters of 0 set no limit. Returns the number of circles found; with none,
    // (x, y) is the picture's center.
    int cvSearchSingleFiber(const unsigned char* image8, unsigned width, unsigned height,
                            double scale, unsigned minDiameter, unsigned maxDiameter, unsigned& x,
                            unsigned& y);

    const unsigned char* grayBuffer() const { return grayBuffer_.get(); }

private:
    std::unique_ptr<unsigned char[]> grayBuffer_;
};
