// The capture device functions of libcapture.h over the table of system calls.

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/mman.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "deviceio.h"
#include "libcapture.h"

namespace {

constexpr const char* kCaptureDevice = "/dev/video0";
constexpr uint32_t kRawFormat = v4l2_fourcc('B', 'A', '1', '0');
constexpr unsigned kInitialExposure = 20;
constexpr int kFrameWaitMs = 1000;
constexpr size_t kSaveBufferBytes = 20480;

// Written by the capture thread when it opens and closes the device, read by set_exposure on
// the user-interface thread while the thread runs.
std::atomic<int> capture_fd{-1};
unsigned numbuffers = kCaptureBuffers;
capture_buffer_info capture_buff_info[kCaptureBuffers];
int capture_buf_index = -1;
char vbufferOut[kSaveBufferBytes];

int captureRequest(unsigned long request, void* argument) {
    return deviceRequest(capture_fd, request, argument);
}

// Every failure while opening closes the device again.
bool closeOnFailure() {
    systemCalls().close(capture_fd);
    capture_fd = -1;
    return false;
}

bool failWith(const char* what) {
    std::perror(what);
    return closeOnFailure();
}

bool selectInput() {
    int input = 0;
    v4l2_input description{};
    if (captureRequest(VIDIOC_G_INPUT, &input) < 0) {
        return failWith("VIDIOC_G_INPUT");
    }
    description.index = uint32_t(input);
    if (captureRequest(VIDIOC_ENUMINPUT, &description) < 0) {
        return failWith("VIDIOC_ENUMINPUT");
    }
    input = 0;
    if (captureRequest(VIDIOC_S_INPUT, &input) < 0) {
        return failWith("VIDIOC_S_INPUT");
    }
    description = v4l2_input{};
    if (captureRequest(VIDIOC_ENUMINPUT, &description) < 0) {
        return failWith("VIDIOC_ENUMINPUT");
    }
    return true;
}

bool canStream() {
    v4l2_capability capabilities{};
    if (captureRequest(VIDIOC_QUERYCAP, &capabilities) < 0) {
        return failWith("VIDIOC_QUERYCAP");
    }
    if (!(capabilities.capabilities & V4L2_CAP_STREAMING)) {
        return closeOnFailure();
    }
    return true;
}

bool setRawFormat() {
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (captureRequest(VIDIOC_G_FMT, &format) < 0) {
        return failWith("VIDIOC_G_FMT");
    }
    format.fmt.pix.width = kSensorWidth;
    format.fmt.pix.height = kSensorHeight;
    format.fmt.pix.pixelformat = kRawFormat;
    if (captureRequest(VIDIOC_S_FMT, &format) < 0) {
        return failWith("VIDIOC_S_FMT");
    }
    if (captureRequest(VIDIOC_G_FMT, &format) < 0) {
        return failWith("VIDIOC_G_FMT");
    }
    if (format.fmt.pix.pixelformat != kRawFormat) {
        std::printf("%s: Requested pixel format not supported\n", "Capture");
        return closeOnFailure();
    }
    return true;
}

bool setInitialExposure() {
    v4l2_control control{V4L2_CID_EXPOSURE, int32_t(kInitialExposure)};
    if (captureRequest(VIDIOC_S_CTRL, &control) < 0) {
        return failWith("VIDIOC_S_CTRL");
    }
    return true;
}

// Asks for the module's buffers; numbuffers becomes the number granted. The count asked is
// always the module's: after a failed mapping numbuffers tells how many were mapped, and a
// later open must not ask for that many.
bool requestBuffers() {
    v4l2_requestbuffers request{};
    request.count = kCaptureBuffers;
    request.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    request.memory = V4L2_MEMORY_MMAP;
    if (captureRequest(VIDIOC_REQBUFS, &request) < 0) {
        return failWith("Cannot allocate memory");
    }
    numbuffers = request.count;
    // The module holds two buffer records: a driver that grants more would have the rest
    // written past them, so such a driver is refused.
    if (numbuffers > kCaptureBuffers) {
        std::fprintf(stderr, "Capture: the driver granted %u buffers, %u are supported\n",
                     numbuffers, kCaptureBuffers);
        numbuffers = 0;
        return closeOnFailure();
    }
    return true;
}

void unmapBuffers() {
    for (unsigned i = 0; i < numbuffers; ++i) {
        systemCalls().munmap(capture_buff_info[i].start, capture_buff_info[i].length);
        capture_buff_info[i].start = nullptr;
    }
}

int failMapping() {
    unmapBuffers();
    closeOnFailure();
    return -1;
}

// Looks up, maps, fills with mid gray and queues buffer i; numbuffers becomes the number of
// buffers mapped when one fails.
bool mapAndQueue(unsigned i) {
    v4l2_buffer buffer{};
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    buffer.index = i;
    if (captureRequest(VIDIOC_QUERYBUF, &buffer) < 0) {
        std::perror("VIDIOC_QUERYCAP");
        numbuffers = i;
        return false;
    }
    capture_buffer_info& info = capture_buff_info[i];
    info.index = buffer.index;
    info.length = buffer.length;
    void* start = systemCalls().mmap(nullptr, buffer.length, PROT_READ | PROT_WRITE, MAP_SHARED,
                                     capture_fd, off_t(buffer.m.offset));
    if (start == MAP_FAILED) {
        std::printf("Cannot mmap = %d buffer\n", int(i));
        numbuffers = i;
        return false;
    }
    info.start = start;
    std::memset(start, 128, buffer.length);
    if (captureRequest(VIDIOC_QBUF, &buffer) < 0) {
        std::perror("VIDIOC_QBUF");
        numbuffers = i + 1;
        return false;
    }
    return true;
}

bool frameWithinASecond() {
    pollfd ready{capture_fd, POLLIN, 0};
    if (systemCalls().poll(&ready, 1, kFrameWaitMs) > 0) {
        return true;
    }
    std::fprintf(stderr, "VIDIOC_DQBUF: no frame within a second\n");
    return false;
}

}  // namespace

int init_capture_device() {
    // A second open would lose the first one's buffers and descriptor.
    if (capture_fd >= 0) {
        std::fprintf(stderr, "Capture: %s is already open\n", kCaptureDevice);
        return -1;
    }
    for (capture_buffer_info& info : capture_buff_info) {
        info.index = 0;
    }
    const char* path = devicePath(kCaptureDevice);
    capture_fd = systemCalls().open(path, O_RDWR);
    if (capture_fd < 0) {
        std::printf("Cannot open = %s device\n", path);
        capture_fd = -1;
        return -1;
    }
    if (!selectInput() || !canStream() || !setRawFormat() || !setInitialExposure() ||
        !requestBuffers()) {
        return -1;
    }
    for (unsigned i = 0; i < numbuffers; ++i) {
        if (!mapAndQueue(i)) {
            return failMapping();
        }
    }
    return 0;
}

int start_capture() {
    if (capture_fd < 0) {
        return -1;
    }
    uint32_t type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (captureRequest(VIDIOC_STREAMON, &type) < 0) {
        std::perror("VIDIOC_STREAMON1");
        return -1;
    }
    return 0;
}

int stop_capture() {
    if (capture_fd < 0) {
        return -1;
    }
    uint32_t type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (captureRequest(VIDIOC_STREAMOFF, &type) < 0) {
        std::perror("VIDIOC_STREAMOFF");
        return -1;
    }
    return 0;
}

// Waits at most a second for the frame: a stalled camera must not hang the thread that stops
// the capture, and with it the screen.
int get_capture_frame(void** frame) {
    if (capture_fd >= 0 && !frameWithinASecond()) {
        return -1;
    }
    v4l2_buffer buffer{};
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    if (captureRequest(VIDIOC_DQBUF, &buffer) < 0) {
        std::perror("VIDIOC_DQBUF");
        return -1;
    }
    if (buffer.index >= numbuffers) {
        std::fprintf(stderr, "VIDIOC_DQBUF: buffer %u is not one of ours\n", buffer.index);
        return -1;
    }
    capture_buf_index = int(buffer.index);
    *frame = capture_buff_info[buffer.index].start;
    return 0;
}

int release_capture_frame() {
    v4l2_buffer buffer{};
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    buffer.index = uint32_t(capture_buf_index);
    if (captureRequest(VIDIOC_QBUF, &buffer) < 0) {
        std::perror("VIDIOC_QBUF");
        return -1;
    }
    return 0;
}

int release_capture_device() {
    if (capture_fd < 0) {
        return -1;
    }
    unmapBuffers();
    systemCalls().close(capture_fd);
    capture_fd = -1;
    return 0;
}

int set_exposure(unsigned int exposure) {
    if (capture_fd < 0) {
        return -1;
    }
    v4l2_control control{V4L2_CID_EXPOSURE, int32_t(exposure)};
    if (captureRequest(VIDIOC_S_CTRL, &control) < 0) {
        std::perror("VIDIOC_S_CTRL");
        return -1;
    }
    return 0;
}

int save_capture_frame(const char* path, const void* data, int bytesPerPixel) {
    FILE* file = std::fopen(path, "wb");
    if (file == nullptr) {
        std::printf("Open file %s failed!! \n", path);
        return -1;
    }
    if (std::setvbuf(file, vbufferOut, _IOFBF, sizeof vbufferOut) != 0) {
        std::perror("Failed to setvbuf on output file descriptor");
        std::fclose(file);
        return -1;
    }
    const size_t bytes = size_t(kSensorPixels) * size_t(bytesPerPixel);
    // The tail of the frame reaches the file only when the stream is closed: a full card shows
    // there as well.
    const bool written = std::fwrite(data, bytes, 1, file) == 1;
    if (std::fclose(file) != 0 || !written) {
        std::printf("fwrite error!! ");
        return -1;
    }
    return 0;
}
