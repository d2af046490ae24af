#include "libdisplay.h"

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/mman.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "deviceio.h"
#include "processexit.h"

int VIDEO_WIDTH = 240;
int VIDEO_HEIGHT = 240;
int VIDEO2LCD_OFFSET = 0;

namespace {

const char* const display_dev_name = "/dev/video1";
constexpr int kLcdWidth = 800;
constexpr int kLcdHeight = 480;
constexpr int kRotationDegrees = 90;
constexpr unsigned kSquareWindow = 480;
constexpr uint8_t kNeutralChroma = 128;

int display_fd = -1;
unsigned display_numbuffers = kDisplayBuffers;
display_buffer_info display_buff_info[kDisplayBuffers];
int disp_buf_index = -1;

int displayRequest(unsigned long request, void* argument) {
    return deviceRequest(display_fd, request, argument);
}

bool fullScreen() {
    return VIDEO_WIDTH == kLcdWidth && VIDEO_HEIGHT == kLcdHeight;
}

bool fail(const char* message) {
    std::printf("%s", message);
    return false;
}

void closeDevice() {
    systemCalls().close(display_fd);
    display_fd = -1;
}

bool failAndClose(const char* message) {
    std::printf("%s", message);
    closeDevice();
    return false;
}

// Without its format the output cannot show anything: the process ends.
bool failAndExit(const char* message) {
    failAndClose(message);
    exitProcess(0);
    return false;
}

bool openAndQuery() {
    display_fd = systemCalls().open(devicePath(display_dev_name), O_RDWR);
    if (display_fd < 0) {
        display_fd = -1;
        return fail("failed to open display device\n");
    }
    v4l2_capability capabilities{};
    if (displayRequest(VIDIOC_QUERYCAP, &capabilities) < 0) {
        std::perror("VIDIOC_QUERYCAP");
        closeDevice();
        return false;
    }
    return true;
}

bool rotateForFullScreen() {
    v4l2_control control{V4L2_CID_ROTATE, kRotationDegrees};
    if (fullScreen() && displayRequest(VIDIOC_S_CTRL, &control) < 0) {
        return fail("Set rotation error\n");
    }
    return true;
}

bool setPictureFormat() {
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_OUTPUT;
    if (displayRequest(VIDIOC_G_FMT, &format) < 0) {
        return failAndClose("Get Format failed\n");
    }
    format.fmt.pix.width = uint32_t(VIDEO_WIDTH);
    format.fmt.pix.height = uint32_t(VIDEO_HEIGHT);
    format.fmt.pix.pixelformat = V4L2_PIX_FMT_UYVY;
    if (displayRequest(VIDIOC_S_FMT, &format) < 0) {
        return failAndClose("Set Format failed\n");
    }
    if (displayRequest(VIDIOC_G_FMT, &format) < 0) {
        return failAndExit("VIDIOC_G_FMT\n");
    }
    return true;
}

// The output hardware scales the picture into this window.
bool setOverlayWindow() {
    v4l2_format window{};
    window.type = V4L2_BUF_TYPE_VIDEO_OVERLAY;
    window.fmt.win.w.left = 0;
    window.fmt.win.w.top = VIDEO2LCD_OFFSET;
    window.fmt.win.w.width = fullScreen() ? kLcdWidth : kSquareWindow;
    window.fmt.win.w.height = fullScreen() ? kLcdHeight : kSquareWindow;
    if (displayRequest(VIDIOC_S_FMT, &window) < 0) {
        return failAndExit("VIDIOC_S_FMT\n");
    }
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_OUTPUT;
    if (displayRequest(VIDIOC_G_FMT, &format) < 0) {
        return fail("Get Format failed\n");
    }
    return true;
}

bool requestBuffers() {
    v4l2_requestbuffers request{};
    request.count = kDisplayBuffers;
    request.type = V4L2_BUF_TYPE_VIDEO_OUTPUT;
    request.memory = V4L2_MEMORY_MMAP;
    if (displayRequest(VIDIOC_REQBUFS, &request) < 0) {
        return fail("Could not allocate the buffers\n");
    }
    // As for the camera: more buffers than the module's records would be written past them.
    if (request.count > kDisplayBuffers) {
        std::printf("Display: the driver granted %u buffers, %u are supported\n", request.count,
                    kDisplayBuffers);
        return false;
    }
    display_numbuffers = request.count;
    return true;
}

// Each buffer starts as a black picture: neutral chroma, luma 0.
bool mapBlackPicture(unsigned i) {
    v4l2_buffer buffer{};
    buffer.type = V4L2_BUF_TYPE_VIDEO_OUTPUT;
    buffer.memory = V4L2_MEMORY_MMAP;
    buffer.index = i;
    if (displayRequest(VIDIOC_QUERYBUF, &buffer) < 0) {
        return fail("quering for buffer info failed\n");
    }
    display_buffer_info& info = display_buff_info[i];
    info.index = buffer.index;
    info.length = buffer.length;
    void* start = systemCalls().mmap(nullptr, buffer.length, PROT_READ | PROT_WRITE, MAP_SHARED,
                                     display_fd, off_t(buffer.m.offset));
    if (start == MAP_FAILED) {
        std::printf("Cannot mmap = %d buffer\n", int(i));
        return false;
    }
    info.start = start;
    auto* bytes = static_cast<uint8_t*>(start);
    std::memset(bytes, kNeutralChroma, buffer.length);
    for (unsigned k = 1; k < buffer.length; k += 2) {
        bytes[k] = 0;
    }
    return true;
}

bool queueBuffer(unsigned index) {
    v4l2_buffer buffer{};
    buffer.type = V4L2_BUF_TYPE_VIDEO_OUTPUT;
    buffer.memory = V4L2_MEMORY_MMAP;
    buffer.index = index;
    if (displayRequest(VIDIOC_QBUF, &buffer) < 0) {
        return fail("VIDIOC_QBUF\n");
    }
    return true;
}

bool mapAndQueueAll() {
    for (unsigned i = 0; i < display_numbuffers; ++i) {
        if (!mapBlackPicture(i)) {
            return false;
        }
    }
    for (unsigned i = 0; i < display_numbuffers; ++i) {
        if (!queueBuffer(i)) {
            return false;
        }
    }
    return true;
}

int streamRequest(unsigned long request, const char* name) {
    uint32_t type = V4L2_BUF_TYPE_VIDEO_OUTPUT;
    if (displayRequest(request, &type) < 0) {
        std::perror(name);
        return -1;
    }
    return 0;
}

}  // namespace

int init_display_device() {
    for (display_buffer_info& info : display_buff_info) {
        info = display_buffer_info{0, 0, nullptr};
    }
    display_numbuffers = 0;
    const bool ready = openAndQuery() && rotateForFullScreen() && setPictureFormat() &&
                       setOverlayWindow() && requestBuffers() && mapAndQueueAll();
    return ready ? 0 : -1;
}

int start_display() {
    return streamRequest(VIDIOC_STREAMON, "VIDIOC_STREAMON");
}

int stop_display() {
    return streamRequest(VIDIOC_STREAMOFF, "VIDIOC_STREAMOFF");
}

int get_disp_frame(void** picture) {
    v4l2_buffer buffer{};
    buffer.type = V4L2_BUF_TYPE_VIDEO_OUTPUT;
    buffer.memory = V4L2_MEMORY_MMAP;
    if (displayRequest(VIDIOC_DQBUF, &buffer) < 0 || buffer.index >= display_numbuffers) {
        std::printf("VIDIOC_DQBUF\n");
        return -1;
    }
    disp_buf_index = int(buffer.index);
    *picture = display_buff_info[buffer.index].start;
    return 0;
}

int release_disp_frame() {
    return queueBuffer(unsigned(disp_buf_index)) ? 0 : -1;
}

// Unmaps what was mapped, also after a set-up that failed half way.
int release_display_device() {
    if (display_fd < 0) {
        return -1;
    }
    for (display_buffer_info& info : display_buff_info) {
        if (info.start != nullptr) {
            systemCalls().munmap(info.start, info.length);
            info.start = nullptr;
        }
    }
    closeDevice();
    return 0;
}
