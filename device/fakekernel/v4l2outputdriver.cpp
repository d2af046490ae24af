#include "v4l2outputdriver.h"

#include <linux/videodev2.h>

#include <cerrno>
#include <cstring>

#include "twinworld.h"

namespace fakekernel {

namespace {

constexpr unsigned kBytesPerPixel = 2;

std::string sizeText(unsigned width, unsigned height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

}  // namespace

V4l2OutputDriver::V4l2OutputDriver(const sim::TwinWorld& world)
    : V4l2Device("/dev/video1", V4L2_BUF_TYPE_VIDEO_OUTPUT),
      world_(world),
      pixelFormat_(V4L2_PIX_FMT_UYVY) {}

V4l2OutputDriver::~V4l2OutputDriver() {
    stopStream();
}

std::vector<uint8_t> V4l2OutputDriver::shownPicture(unsigned& width, unsigned& height) const {
    std::lock_guard<std::mutex> lock(mutex_);
    width = width_;
    height = height_;
    return shownPicture_;
}

int V4l2OutputDriver::deviceIoctl(unsigned long request, void* argument) {
    switch (request) {
        case VIDIOC_QUERYCAP:
            return queryCapabilities(argument);
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

int V4l2OutputDriver::queryCapabilities(void* argument) {
    if (receive("VIDIOC_QUERYCAP") != 0) {
        return -1;
    }
    auto& caps = *static_cast<v4l2_capability*>(argument);
    std::memset(&caps, 0, sizeof caps);
    std::strncpy(reinterpret_cast<char*>(caps.driver), "twin", sizeof caps.driver);
    std::strncpy(reinterpret_cast<char*>(caps.card), "twin display", sizeof caps.card);
    caps.device_caps = V4L2_CAP_VIDEO_OUTPUT | V4L2_CAP_VIDEO_OUTPUT_OVERLAY | V4L2_CAP_STREAMING;
    caps.capabilities = caps.device_caps | V4L2_CAP_DEVICE_CAPS;
    return 0;
}

int V4l2OutputDriver::getFormat(void* argument) {
    auto& format = *static_cast<v4l2_format*>(argument);
    if (receive("VIDIOC_G_FMT " + bufferTypeName(format.type)) != 0) {
        return -1;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    if (format.type == V4L2_BUF_TYPE_VIDEO_OVERLAY) {
        format.fmt.win.w = {windowLeft_, windowTop_, windowWidth_, windowHeight_};
        return 0;
    }
    if (format.type != V4L2_BUF_TYPE_VIDEO_OUTPUT) {
        return refuse(EINVAL);
    }
    v4l2_pix_format& pix = format.fmt.pix;
    pix.width = width_;
    pix.height = height_;
    pix.pixelformat = pixelFormat_;
    pix.field = V4L2_FIELD_NONE;
    pix.bytesperline = width_ * kBytesPerPixel;
    pix.sizeimage = pix.bytesperline * height_;
    return 0;
}

int V4l2OutputDriver::setFormat(void* argument) {
    auto& format = *static_cast<v4l2_format*>(argument);
    const bool overlay = format.type == V4L2_BUF_TYPE_VIDEO_OVERLAY;
    const v4l2_rect& w = format.fmt.win.w;
    const v4l2_pix_format& pix = format.fmt.pix;
    const std::string what =
        overlay ? std::to_string(w.left) + "," + std::to_string(w.top) + " " +
                      sizeText(w.width, w.height)
                : sizeText(pix.width, pix.height) + " " + fourccText(pix.pixelformat);
    if (receive("VIDIOC_S_FMT " + bufferTypeName(format.type) + " " + what) != 0) {
        return -1;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    if (overlay) {
        windowLeft_ = w.left;
        windowTop_ = w.top;
        windowWidth_ = w.width;
        windowHeight_ = w.height;
        return 0;
    }
    if (format.type != V4L2_BUF_TYPE_VIDEO_OUTPUT || pix.width == 0 || pix.height == 0) {
        return refuse(EINVAL);
    }
    if (streaming()) {
        return refuse(EBUSY);
    }
    width_ = pix.width;
    height_ = pix.height;
    return 0;
}

int V4l2OutputDriver::setControl(void* argument) {
    const auto& control = *static_cast<v4l2_control*>(argument);
    const bool rotate = control.id == V4L2_CID_ROTATE;
    if (receive("VIDIOC_S_CTRL " + (rotate ? std::string("rotate") : hexText(control.id)) + " " +
                std::to_string(control.value)) != 0) {
        return -1;
    }
    return rotate ? 0 : refuse(EINVAL);
}

size_t V4l2OutputDriver::bufferBytes() const {
    return size_t(width_) * height_ * kBytesPerPixel;
}

void V4l2OutputDriver::tick(std::unique_lock<std::mutex>& /*lock*/) {
    const int next = takeQueued();
    if (next < 0) {
        return;
    }
    if (shown_ >= 0) {
        markDone(shown_);
    }
    shown_ = next;
    const Buffer& b = buffer(next);
    shownPicture_.assign(b.memory, b.memory + b.length);
}

void V4l2OutputDriver::streamStopped() {
    shown_ = -1;
}

std::chrono::nanoseconds V4l2OutputDriver::framePeriod() const {
    return world_.framePeriod();
}

}  // namespace fakekernel
