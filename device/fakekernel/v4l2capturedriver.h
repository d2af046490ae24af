#pragma once

#include <cstdint>

#include "v4l2device.h"

namespace sim {
class TwinWorld;
}

namespace fakekernel {

// The camera at "/dev/video0": one input, the sensor's 1600 x 1200 frames of 10-bit samples
// ("BA10"), an exposure control that sets the world's exposure, and on each tick of the frame
// clock the world's next frame in the oldest queued buffer. A tick without a queued buffer
// drops its frame, as a real driver does.
class V4l2CaptureDriver : public V4l2Device {
public:
    explicit V4l2CaptureDriver(sim::TwinWorld& world);
    ~V4l2CaptureDriver() override;

    // Capabilities without streaming, for a driver that cannot stream.
    void setStreamingCapability(bool canStream);
    // The one pixel format the driver gives, whatever is asked ("BA10" unless set).
    void setPixelFormat(uint32_t fourcc);

protected:
    int deviceIoctl(unsigned long request, void* argument) override;
    size_t bufferBytes() const override;
    void tick(std::unique_lock<std::mutex>& lock) override;
    std::chrono::nanoseconds framePeriod() const override;

private:
    int queryCapabilities(void* argument);
    int getInput(void* argument);
    int enumerateInput(void* argument);
    int setInput(void* argument);
    int getFormat(void* argument);
    int setFormat(void* argument);
    int setControl(void* argument);

    sim::TwinWorld& world_;
    bool canStream_ = true;
    uint32_t pixelFormat_;
};

}  // namespace fakekernel
