#pragma once

#include <cstdint>
#include <vector>

#include "v4l2device.h"

namespace sim {
class TwinWorld;
}

namespace fakekernel {

// The video output at "/dev/video1" that shows the live picture on the LCD: packed UYVY
// pictures of the size set with VIDIOC_S_FMT, an overlay window on the LCD, a rotation control.
// On each tick of the frame clock the oldest queued buffer goes on screen and the one shown
// before becomes done, so the application can take it back and draw the next picture in it.
class V4l2OutputDriver : public V4l2Device {
public:
    explicit V4l2OutputDriver(const sim::TwinWorld& world);
    ~V4l2OutputDriver() override;

    // A copy of the picture on screen (empty before the first), with its size.
    std::vector<uint8_t> shownPicture(unsigned& width, unsigned& height) const;

protected:
    int deviceIoctl(unsigned long request, void* argument) override;
    size_t bufferBytes() const override;
    void tick(std::unique_lock<std::mutex>& lock) override;
    std::chrono::nanoseconds framePeriod() const override;
    void streamStopped() override;

private:
    int queryCapabilities(void* argument);
    int getFormat(void* argument);
    int setFormat(void* argument);
    int setControl(void* argument);

    const sim::TwinWorld& world_;
    unsigned width_ = 240, height_ = 240;
    uint32_t pixelFormat_;
    int windowLeft_ = 0, windowTop_ = 0;
    unsigned windowWidth_ = 480, windowHeight_ = 480;
    int shown_ = -1;  // the buffer on screen
    std::vector<uint8_t> shownPicture_;
};

}  // namespace fakekernel
