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

    // The fiber search (see singlefibersearch.h) with the thread's own work buffer.
    int searchSingleFiber(const uint16_t* frame10, unsigned width, unsigned height, unsigned& x,
                          unsigned& y, unsigned& rawX, unsigned& rawY, unsigned windowWidth,
                          unsigned windowHeight, bool refine);

    const unsigned char* grayBuffer() const { return grayBuffer_.get(); }

private:
    std::unique_ptr<unsigned char[]> grayBuffer_;
};
