#include "v4l2capturedriver.h"

#include <linux/videodev2.h>

#include <cerrno>
#include <cstring>

#include "instrumentoptics.h"
#include "twinworld.h"

namespace fakekernel {

namespace {

constexpr uint32_t kBytesPerSample = 2;

void fillPixFormat(v4l2_pix_format& pix, uint32_t pixelFormat) {
    pix.width = kSensorWidth;
    pix.height = kSensorHeight;
    pix.pixelformat = pixelFormat;
    pix.field = V4L2_FIELD_NONE;
    pix.bytesperline = kSensorWidth * kBytesPerSample;
    pix.sizeimage = pix.bytesperline * kSensorHeight;
}

}  // namespace

V4l2CaptureDriver::V4l2CaptureDriver(sim::TwinWorld& world)
    : V4l2Device("/dev/video0", V4L2_BUF_TYPE_VIDEO_CAPTURE),
      world_(world),
      pixelFormat_(V4L2_PIX_FMT_SGRBG10) {}

V4l2CaptureDriver::~V4l2CaptureDriver() {
    stopStream();
}

void V4l2CaptureDriver::setStreamingCapability(bool canStream) {
    std::lock_guard<std::mutex> lock(mutex_);
    canStream_ = canStream;
}

void V4l2CaptureDriver::setPixelFormat(uint32_t fourcc) {
    std::lock_guard<std::mutex> lock(mutex_);
    pixelFormat_ = fourcc;
}

int V4l2CaptureDriver::deviceIoctl(unsigned long request, void* argument) {
    switch (request) {
        case VIDIOC_QUERYCAP:
            return queryCapabilities(argument);
        case VIDIOC_G_INPUT:
            return getInput(argument);
        case VIDIOC_ENUMINPUT:
            return enumerateInput(argument);
        case VIDIOC_S_INPUT:
            return setInput(argument);
        case VIDIOC_G_FMT:
            return getFormat(argument);
        case VIDIOC_S_FMT:
            return setFormat(argument);
        case VIDIOC_S_CTRL:
            return setControl(argument);
        default:
            return receive("ioctl " + hexText(request)) == 0 ? refuse(ENOTTY) : -1;
    }
}

int V4l2CaptureDriver::queryCapabilities(void* argument) {
    if (receive("VIDIOC_QUERYCAP") != 0) {
        return -1;
    }
    auto& caps = *static_cast<v4l2_capability*>(argument);
    std::memset(&caps, 0, sizeof caps);
    std::strncpy(reinterpret_cast<char*>(caps.driver), "twin", sizeof caps.driver);
    std::strncpy(reinterpret_cast<char*>(caps.card), "twin camera", sizeof caps.card);
    std::lock_guard<std::mutex> lock(mutex_);
    caps.device_caps = V4L2_CAP_VIDEO_CAPTURE | (canStream_ ? V4L2_CAP_STREAMING : 0);
    caps.capabilities = caps.device_caps | V4L2_CAP_DEVICE_CAPS;
    return 0;
}

int V4l2CaptureDriver::getInput(void* argument) {
    if (receive("VIDIOC_G_INPUT") != 0) {
        return -1;
    }
    *static_cast<int*>(argument) = 0;
    return 0;
}

int V4l2CaptureDriver::enumerateInput(void* argument) {
    auto& input = *static_cast<v4l2_input*>(argument);
    if (receive("VIDIOC_ENUMINPUT " + std::to_string(input.index)) != 0) {
        return -1;
    }
    if (input.index != 0) {
        return refuse(EINVAL);
    }
    std::strncpy(reinterpret_cast<char*>(input.name), "sensor", sizeof input.name);
    input.type = V4L2_INPUT_TYPE_CAMERA;
    return 0;
}

int V4l2CaptureDriver::setInput(void* argument) {
    const int input = *static_cast<int*>(argument);
    if (receive("VIDIOC_S_INPUT " + std::to_string(input)) != 0) {
        return -1;
    }
    return input == 0 ? 0 : refuse(EINVAL);
}

int V4l2CaptureDriver::getFormat(void* argument) {
    auto& format = *static_cast<v4l2_format*>(argument);
    if (receive("VIDIOC_G_FMT " + bufferTypeName(format.type)) != 0) {
        return -1;
    }
    if (format.type != V4L2_BUF_TYPE_VIDEO_CAPTURE) {
        return refuse(EINVAL);
    }
    std::lock_guard<std::mutex> lock(mutex_);
    fillPixFormat(format.fmt.pix, pixelFormat_);
    return 0;
}

// The sensor has one size and one format: whatever is asked, those are set and read back.
int V4l2CaptureDriver::setFormat(void* argument) {
    auto& format = *static_cast<v4l2_format*>(argument);
    const v4l2_pix_format& pix = format.fmt.pix;
    if (receive("VIDIOC_S_FMT " + bufferTypeName(format.type) + " " + std::to_string(pix.width) +
                "x" + std::to_string(pix.height) + " " + fourccText(pix.pixelformat)) != 0) {
        return -1;
    }
    if (format.type != V4L2_BUF_TYPE_VIDEO_CAPTURE) {
        return refuse(EINVAL);
    }
    std::lock_guard<std::mutex> lock(mutex_);
    if (streaming()) {
        return refuse(EBUSY);
    }
    fillPixFormat(format.fmt.pix, pixelFormat_);
    return 0;
}

int V4l2CaptureDriver::setControl(void* argument) {
    const auto& control = *static_cast<v4l2_control*>(argument);
    const bool exposure = control.id == V4L2_CID_EXPOSURE;
    if (receive("VIDIOC_S_CTRL " + (exposure ? std::string("exposure") : hexText(control.id)) +
                " " + std::to_string(control.value)) != 0) {
        return -1;
    }
    if (!exposure) {
        return refuse(EINVAL);
    }
    world_.setExposure(unsigned(control.value));
    return 0;
}

size_t V4l2CaptureDriver::bufferBytes() const {
    return size_t(kSensorWidth) * kSensorHeight * kBytesPerSample;
}

// The frame is read out without the lock, so that the application can queue and dequeue
// meanwhile; the buffer is the driver's until it is marked done.
void V4l2CaptureDriver::tick(std::unique_lock<std::mutex>& lock) {
    const int index = takeQueued();
    if (index < 0) {
        return;
    }
    Buffer& b = buffer(index);
    lock.unlock();
    world_.readFrame(reinterpret_cast<uint16_t*>(b.memory));
    lock.lock();
    b.bytesUsed = uint32_t(bufferBytes());
    markDone(index);
}

std::chrono::nanoseconds V4l2CaptureDriver::framePeriod() const {
    return world_.framePeriod();
}

}  // namespace fakekernel
