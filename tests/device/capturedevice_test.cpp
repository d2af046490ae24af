// The capture layer's device functions through the fake kernel: the requests they make, in
// order and with their arguments, what each failure prints and what it cleans up.

#include <gtest/gtest.h>
#include <linux/videodev2.h>

#include <QThread>
#include <cerrno>

#include "devicetesting.h"
#include "libcapture.h"
#include "platformroot.h"

namespace {

constexpr uint32_t kBA10 = V4L2_PIX_FMT_SGRBG10;

const Lines kOpenSequence = {
    "open",
    "VIDIOC_G_INPUT",
    "VIDIOC_ENUMINPUT 0",
    "VIDIOC_S_INPUT 0",
    "VIDIOC_ENUMINPUT 0",
    "VIDIOC_QUERYCAP",
    "VIDIOC_G_FMT capture",
    "VIDIOC_S_FMT capture 1600x1200 BA10",
    "VIDIOC_G_FMT capture",
    "VIDIOC_S_CTRL exposure 20",
    "VIDIOC_REQBUFS capture mmap 2",
    "VIDIOC_QUERYBUF capture 0",
    "mmap 0 3840000",
    "VIDIOC_QBUF capture mmap 0",
    "VIDIOC_QUERYBUF capture 1",
    "mmap 1 3840000",
    "VIDIOC_QBUF capture mmap 1",
};

struct CaptureDeviceTest : TwinTest {
    fakekernel::V4l2CaptureDriver& camera = kernel.capture();

    // Opens the device and returns what it printed, stdout then stderr.
    static std::string initPrinting(int& result) { return printedBy(init_capture_device, result); }

    void TearDown() override { release_capture_device(); }
};

TEST_F(CaptureDeviceTest, AFrameCycleMakesTheRequestsInOrder) {
    world.setFramePeriod(std::chrono::milliseconds(2));
    std::vector<uint16_t> first(kSensorPixels);
    world.readFrame(first.data());  // the scene's light is drawn before the one-second wait
    ASSERT_EQ(init_capture_device(), 0);
    EXPECT_EQ(set_exposure(33), 0);
    EXPECT_EQ(world.exposure(), 33u);
    ASSERT_EQ(start_capture(), 0);
    void* frame = nullptr;
    ASSERT_EQ(get_capture_frame(&frame), 0);
    EXPECT_LT(static_cast<uint16_t*>(frame)[kSensorPixels - 1], 1024);  // no longer mid gray
    // The application holds one buffer, the other waits done: the frames between are dropped.
    const unsigned dropped = camera.missedTicks();
    for (int wait = 0; wait < 500 && camera.missedTicks() == dropped; ++wait) {
        QThread::msleep(10);
    }
    EXPECT_GT(camera.missedTicks(), dropped);
    EXPECT_EQ(release_capture_frame(), 0);
    EXPECT_EQ(stop_capture(), 0);
    EXPECT_EQ(release_capture_device(), 0);
    EXPECT_EQ(camera.requests(),
              prefixThen(kOpenSequence, kOpenSequence.size(),
                         {"VIDIOC_S_CTRL exposure 33", "VIDIOC_STREAMON capture",
                          "VIDIOC_DQBUF capture mmap", "VIDIOC_QBUF capture mmap 0",
                          "VIDIOC_STREAMOFF capture", "munmap 0", "munmap 1", "close"}));
    // Closed: nothing more reaches the driver.
    EXPECT_EQ((std::vector<int>{start_capture(), set_exposure(20), release_capture_device()}),
              (std::vector<int>{-1, -1, -1}));
}

// The request that fails, what is printed, and the clean-up that follows it.
struct OpenFailure {
    size_t failing;  // 1: the open itself
    const char* printed;
    Lines cleanup;
};

const OpenFailure kOpenFailures[] = {
    {1, "Cannot open = {path} device\n", {}},
    {2, "VIDIOC_G_INPUT: Input/output error\n", {"close"}},
    {3, "VIDIOC_ENUMINPUT: Input/output error\n", {"close"}},
    {4, "VIDIOC_S_INPUT: Input/output error\n", {"close"}},
    {5, "VIDIOC_ENUMINPUT: Input/output error\n", {"close"}},
    {6, "VIDIOC_QUERYCAP: Input/output error\n", {"close"}},
    {7, "VIDIOC_G_FMT: Input/output error\n", {"close"}},
    {8, "VIDIOC_S_FMT: Input/output error\n", {"close"}},
    {9, "VIDIOC_G_FMT: Input/output error\n", {"close"}},
    {10, "VIDIOC_S_CTRL: Input/output error\n", {"close"}},
    {11, "Cannot allocate memory: Input/output error\n", {"close"}},
    {12, "VIDIOC_QUERYCAP: Input/output error\n", {"close"}},  // the buffer query, so named
    {13, "Cannot mmap = 0 buffer\n", {"close"}},
    {14, "VIDIOC_QBUF: Input/output error\n", {"munmap 0", "close"}},
    {15, "VIDIOC_QUERYCAP: Input/output error\n", {"munmap 0", "close"}},
    {16, "Cannot mmap = 1 buffer\n", {"munmap 0", "close"}},
    {17, "VIDIOC_QBUF: Input/output error\n", {"munmap 0", "munmap 1", "close"}},
};

TEST_F(CaptureDeviceTest, AFailureAtEveryStepIsReportedAndUndone) {
    const int descriptors = openDescriptors(), mappings = bufferMappings();
    for (const OpenFailure& f : kOpenFailures) {
        SCOPED_TRACE(kOpenSequence[f.failing - 1]);
        camera.clearRequests();
        camera.failRequest(int(f.failing), EIO);
        int result = 0;
        std::string printed = initPrinting(result);
        EXPECT_EQ(result, -1);
        std::string expected = f.printed;
        const size_t path = expected.find("{path}");
        if (path != std::string::npos) {
            expected.replace(path, 6, platformPath("/dev/video0").toStdString());
        }
        EXPECT_EQ(printed, expected);
        EXPECT_EQ(camera.requests(), prefixThen(kOpenSequence, f.failing, f.cleanup));
        EXPECT_EQ(openDescriptors(), descriptors);
        EXPECT_EQ(bufferMappings(), mappings);
    }
    EXPECT_EQ(init_capture_device(), 0);
}

// Drivers the layer cannot use are refused; one that grants no buffer is accepted.
TEST_F(CaptureDeviceTest, DriversThatDoNotFitAreRefused) {
    const struct {
        bool canStream;
        uint32_t format;
        std::optional<unsigned> granted;
        int result;
        const char* printed;
        Lines tail;  // the last requests
    } drivers[] = {
        {false, kBA10, {}, -1, "", {"VIDIOC_QUERYCAP", "close"}},
        {true,
         V4L2_PIX_FMT_GREY,
         {},
         -1,
         "Capture: Requested pixel format not supported\n",
         {"VIDIOC_G_FMT capture", "close"}},
        {true,
         kBA10,
         3,
         -1,
         "Capture: the driver granted 3 buffers, 2 are supported\n",
         {"VIDIOC_REQBUFS capture mmap 2", "close"}},
        {true, kBA10, 0, 0, "", {"VIDIOC_REQBUFS capture mmap 2"}},
    };
    for (const auto& d : drivers) {
        SCOPED_TRACE(d.printed);
        camera.clearRequests();
        camera.setStreamingCapability(d.canStream);
        camera.setPixelFormat(d.format);
        camera.setGrantedBuffers(d.granted);
        int result = 0;
        EXPECT_EQ(initPrinting(result), d.printed);
        EXPECT_EQ(result, d.result);
        const Lines requests = camera.requests();
        EXPECT_EQ(Lines(requests.end() - long(d.tail.size()), requests.end()), d.tail);
        release_capture_device();
    }
}

TEST_F(CaptureDeviceTest, ASecondOpenIsRefused) {
    ASSERT_EQ(init_capture_device(), 0);
    int result = 0;
    EXPECT_EQ(initPrinting(result), "Capture: /dev/video0 is already open\n");
    EXPECT_EQ(result, -1);
    EXPECT_EQ(camera.requests(), kOpenSequence);
}

}  // namespace
