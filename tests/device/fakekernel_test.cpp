// The fake kernel behind the device layers' table of system calls gives out real descriptors.
// (Its streaming, record and failures are seen through the device layers' tests.)

#include "fakekernel.h"

#include <fcntl.h>
#include <gtest/gtest.h>

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

}  // namespace
