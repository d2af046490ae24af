// The display layer through the fake kernel: the requests for each picture geometry, the black
// first pictures, and what each failure prints, closes or ends.

#include <gtest/gtest.h>

#include <cerrno>

#include "devicetesting.h"
#include "libdisplay.h"
#include "processexit.h"

namespace {

int exitStatus = -1;

struct DisplayDeviceTest : TwinTest {
    fakekernel::V4l2OutputDriver& display = kernel.output();

    void SetUp() override {
        exitStatus = -1;
        setProcessExitHook([](int status) { exitStatus = status; });
    }
    void TearDown() override {
        release_display_device();
        setProcessExitHook(nullptr);
        setGeometry(240, 240, 0);
    }
    static void setGeometry(int width, int height, int offset) {
        VIDEO_WIDTH = width;
        VIDEO_HEIGHT = height;
        VIDEO2LCD_OFFSET = offset;
    }
};

Lines openSequence(const std::string& picture, const std::string& window, bool rotated,
                   const std::string& bufferBytes) {
    Lines lines = {"open", "VIDIOC_QUERYCAP"};
    if (rotated) {
        lines.push_back("VIDIOC_S_CTRL rotate 90");
    }
    const Lines rest = {"VIDIOC_G_FMT output",       "VIDIOC_S_FMT output " + picture + " UYVY",
                        "VIDIOC_G_FMT output",       "VIDIOC_S_FMT overlay " + window,
                        "VIDIOC_G_FMT output",       "VIDIOC_REQBUFS output mmap 2",
                        "VIDIOC_QUERYBUF output 0",  "mmap 0 " + bufferBytes,
                        "VIDIOC_QUERYBUF output 1",  "mmap 1 " + bufferBytes,
                        "VIDIOC_QBUF output mmap 0", "VIDIOC_QBUF output mmap 1"};
    lines.insert(lines.end(), rest.begin(), rest.end());
    return lines;
}

TEST_F(DisplayDeviceTest, EachGeometryIsSetUpAndStartsBlack) {
    struct Geometry {
        int width, height, offset;
        Lines requests;
    };
    const Geometry geometries[] = {
        {240, 240, 0, openSequence("240x240", "0,0 480x480", false, "115200")},
        {480, 480, 254, openSequence("480x480", "0,254 480x480", false, "460800")},
        {800, 480, 0, openSequence("800x480", "0,0 800x480", true, "768000")},
    };
    world.setFramePeriod(std::chrono::milliseconds(2));
    for (const Geometry& g : geometries) {
        SCOPED_TRACE(g.width);
        display.clearRequests();
        setGeometry(g.width, g.height, g.offset);
        ASSERT_EQ(init_display_device(), 0);
        EXPECT_EQ(display.requests(), g.requests);
        ASSERT_EQ(start_display(), 0);
        void* picture = nullptr;
        ASSERT_EQ(get_disp_frame(&picture), 0);
        const auto* bytes = static_cast<const uint8_t*>(picture);
        const size_t size = size_t(g.width) * g.height * 2;
        EXPECT_EQ(std::count(bytes, bytes + size, 128) + std::count(bytes, bytes + size, 0),
                  long(size));
        EXPECT_EQ((std::vector<int>{bytes[size - 2], bytes[size - 1]}), (std::vector<int>{128, 0}));
        EXPECT_EQ(release_disp_frame(), 0);
        EXPECT_EQ(stop_display(), 0);
        EXPECT_EQ(release_display_device(), 0);
        const Lines all = display.requests();
        EXPECT_EQ(Lines(all.end() - 7, all.end()),
                  (Lines{"VIDIOC_STREAMON output", "VIDIOC_DQBUF output mmap",
                         "VIDIOC_QBUF output mmap 0", "VIDIOC_STREAMOFF output", "munmap 0",
                         "munmap 1", "close"}));
    }
}

// The request that fails (counted in the 240 x 240 set-up, or the 800 x 480 one for the
// rotation), what is printed, and whether the device is closed and the process ended.
struct SetUpFailure {
    int width;
    size_t failing;
    const char* printed;
    bool closed;
    bool exits;
};

const SetUpFailure kSetUpFailures[] = {
    {240, 1, "failed to open display device\n", true, false},
    {240, 2, "VIDIOC_QUERYCAP: Input/output error\n", true, false},
    {800, 3, "Set rotation error\n", false, false},
    {240, 3, "Get Format failed\n", true, false},
    {240, 4, "Set Format failed\n", true, false},
    {240, 5, "VIDIOC_G_FMT\n", true, true},
    {240, 6, "VIDIOC_S_FMT\n", true, true},
    {240, 7, "Get Format failed\n", false, false},
    {240, 8, "Could not allocate the buffers\n", false, false},
    {240, 9, "quering for buffer info failed\n", false, false},
    {240, 10, "Cannot mmap = 0 buffer\n", false, false},
    {240, 11, "quering for buffer info failed\n", false, false},
    {240, 12, "Cannot mmap = 1 buffer\n", false, false},
    {240, 13, "VIDIOC_QBUF\n", false, false},
    {240, 14, "VIDIOC_QBUF\n", false, false},
};

TEST_F(DisplayDeviceTest, AFailureAtEveryStepIsReported) {
    const int descriptors = openDescriptors(), mappings = bufferMappings();
    for (const SetUpFailure& f : kSetUpFailures) {
        const bool wide = f.width == 800;
        const Lines sequence = wide ? openSequence("800x480", "0,0 800x480", true, "768000")
                                    : openSequence("240x240", "0,0 480x480", false, "115200");
        SCOPED_TRACE(sequence[f.failing - 1]);
        setGeometry(f.width, wide ? 480 : 240, 0);
        exitStatus = -1;
        display.clearRequests();
        display.failRequest(int(f.failing), EIO);
        int result = 0;
        EXPECT_EQ(printedBy(init_display_device, result), f.printed);
        EXPECT_EQ(result, -1);
        const bool opened = f.failing > 1;
        EXPECT_EQ(display.requests(),
                  prefixThen(sequence, f.failing, opened && f.closed ? Lines{"close"} : Lines{}));
        EXPECT_EQ(exitStatus, f.exits ? 0 : -1);
        // What stays open is closed by the release, as the capture thread always calls it.
        EXPECT_EQ(release_display_device(), f.closed ? -1 : 0);
        EXPECT_EQ(openDescriptors(), descriptors);
        EXPECT_EQ(bufferMappings(), mappings);
    }
}

}  // namespace
