#include "capturethread.h"

#include "singlefibersearch.h"

CaptureThread::CaptureThread(QObject* parent)
    : QThread(parent), grayBuffer_(new unsigned char[kGrayBufferSize]()) {}

CaptureThread::~CaptureThread() = default;

int CaptureThread::searchSingleFiber(const uint16_t* frame10, unsigned width, unsigned height,
                                     unsigned& x, unsigned& y, unsigned& rawX, unsigned& rawY,
                                     unsigned windowWidth, unsigned windowHeight, bool refine) {
    if (singleFiberSearchBufferSize(width, height) > kGrayBufferSize) {
        return 0;
    }
    return ::searchSingleFiber(frame10, width, height, grayBuffer_.get(), x, y, rawX, rawY,
                               windowWidth, windowHeight, refine);
}
