// The fake kernel behind the device layers' table of system calls: real descriptors, the record
// of requests, injected failures, and streaming that poll can wait for.

#include "fakekernel.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/videodev2.h>
#include <sys/mman.h>

#include <cerrno>

#include "platformroot.h"
#include "temproot.h"
#include "twinworld.h"

namespace {

using Lines = std::vector<std::string>;

struct FakeKernelTest : ::testing::Test {
    TempRoot root;
    sim::TwinWorld world;
    fakekernel::FakeKernel kernel{world};
    const SystemCalls& sys = systemCalls();

    int openCamera() { return sys.open(platformPath("/dev/video0").toUtf8().constData(), O_RDWR); }
};

TEST_F(FakeKernelTest, DevicePathsGiveRealDescriptorsAndOtherPathsPassThrough) {
    const int camera = openCamera();
    const int display = sys.open(platformPath("/dev/video1").toUtf8().constData(), O_RDWR);
    const int plain = sys.open("/dev/null", O_RDONLY);
    ASSERT_GE(camera, 0);
    EXPECT_EQ(fcntl(camera, F_GETFD), FD_CLOEXEC);  // a live descriptor of this process
    EXPECT_NE(camera, display);
    EXPECT_NE(camera, plain);
    for (int fd : {camera, display, plain}) {
        EXPECT_EQ(sys.close(fd), 0);
    }
    EXPECT_EQ(kernel.capture().requests(), (Lines{"open", "close"}));
}

TEST_F(FakeKernelTest, TheNthRequestFailsWithTheChosenError) {
    kernel.capture().failRequest(2, EIO);
    const int fd = openCamera();
    int input = -1;
    EXPECT_EQ(sys.ioctl(fd, VIDIOC_G_INPUT, &input), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(sys.ioctl(fd, VIDIOC_G_INPUT, &input), 0);
    EXPECT_EQ(input, 0);
    kernel.capture().failRequests("VIDIOC_S_INPUT", EBUSY);
    EXPECT_EQ(sys.ioctl(fd, VIDIOC_S_INPUT, &input), -1);
    EXPECT_EQ(errno, EBUSY);
    sys.close(fd);
    EXPECT_EQ(kernel.capture().requests(),
              (Lines{"open", "VIDIOC_G_INPUT", "VIDIOC_G_INPUT", "VIDIOC_S_INPUT 0", "close"}));
}

// One buffer queued: poll reports the frame when the clock has filled it, the mapping sees it;
// while the application holds it, frames are dropped.
TEST_F(FakeKernelTest, AStreamedFrameWakesPollAndShowsInTheMapping) {
    world.setFramePeriod(std::chrono::milliseconds(5));
    const int fd = openCamera();
    v4l2_requestbuffers request{};
    request.count = 1;
    request.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    request.memory = V4L2_MEMORY_MMAP;
    ASSERT_EQ(sys.ioctl(fd, VIDIOC_REQBUFS, &request), 0);
    v4l2_buffer buffer{};
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    ASSERT_EQ(sys.ioctl(fd, VIDIOC_QUERYBUF, &buffer), 0);
    auto* frame = static_cast<uint16_t*>(
        sys.mmap(nullptr, buffer.length, PROT_READ | PROT_WRITE, MAP_SHARED, fd, buffer.m.offset));
    ASSERT_NE(frame, MAP_FAILED);
    frame[0] = 0xFFFF;  // no 10-bit sample has this value
    ASSERT_EQ(sys.ioctl(fd, VIDIOC_QBUF, &buffer), 0);
    pollfd ready{fd, POLLIN, 0};
    EXPECT_EQ(sys.poll(&ready, 1, 0), 0);
    uint32_t type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    ASSERT_EQ(sys.ioctl(fd, VIDIOC_STREAMON, &type), 0);
    EXPECT_EQ(sys.poll(&ready, 1, 5000), 1);
    ASSERT_EQ(sys.ioctl(fd, VIDIOC_DQBUF, &buffer), 0);
    EXPECT_EQ(sys.poll(&ready, 1, 0), 0);
    EXPECT_LT(frame[0], 1024);
    EXPECT_EQ(buffer.bytesused, 2u * kSensorWidth * kSensorHeight);
    // The application holds the only buffer: the frames meanwhile find none and are dropped.
    const unsigned dropped = kernel.capture().missedTicks();
    EXPECT_EQ(sys.poll(&ready, 1, 30), 0);
    EXPECT_GT(kernel.capture().missedTicks(), dropped);
    ASSERT_EQ(sys.ioctl(fd, VIDIOC_STREAMOFF, &type), 0);
    EXPECT_EQ(sys.munmap(frame, buffer.length), 0);
    sys.close(fd);
}

}  // namespace
