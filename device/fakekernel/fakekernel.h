#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "fakedriver.h"
#include "hwctldriver.h"
#include "spimotordriver.h"
#include "systemcalls.h"
#include "v4l2capturedriver.h"
#include "v4l2outputdriver.h"

namespace sim {
class TwinWorld;
}

namespace fakekernel {

// The simulated instrument's kernel, in this process. While it exists it is the table of
// system calls of every device layer: it serves the instrument's device paths under the
// platform root ("<root>/dev/video0") with its fake drivers, which share the twin's world, and
// passes every other path, descriptor and mapping on to the C library.
//
// The descriptors it gives out are real ones (an eventfd per open), so their numbers never
// clash with the process's other files and poll works on them.
class FakeKernel {
public:
    // Installs the fake kernel as the table of system calls; one at a time. The world must
    // outlive it.
    explicit FakeKernel(sim::TwinWorld& world);
    // Puts the Linux table back. Device layers must be closed by then.
    ~FakeKernel();
    FakeKernel(const FakeKernel&) = delete;
    FakeKernel& operator=(const FakeKernel&) = delete;

    V4l2CaptureDriver& capture() { return *capture_; }
    V4l2OutputDriver& output() { return *output_; }
    SpiMotorDriver& motor() { return *motor_; }
    HwctlDriver& hardwareControl() { return *hwctl_; }

    // Serves one more device at its fixed path.
    FakeDriver& addDriver(std::unique_ptr<FakeDriver> driver);

    // The system calls, as the installed table makes them.
    int open(const char* path, int flags);
    int close(int fd);
    int ioctl(int fd, unsigned long request, void* argument);
    void* mmap(void* address, size_t length, int protection, int flags, int fd, off_t offset);
    int munmap(void* address, size_t length);
    ssize_t read(int fd, void* buffer, size_t count);
    ssize_t write(int fd, const void* buffer, size_t count);

private:
    FakeDriver* driverAt(const char* path);
    FakeDriver* driverOf(int fd);

    V4l2CaptureDriver* capture_;
    V4l2OutputDriver* output_;
    HwctlDriver* hwctl_;
    SpiMotorDriver* motor_;
    std::vector<std::unique_ptr<FakeDriver>> drivers_;
    std::mutex mutex_;  // guards the two maps
    std::map<int, FakeDriver*> files_;
    std::map<void*, FakeDriver*> mappings_;
};

}  // namespace fakekernel
