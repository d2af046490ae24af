#include "fakekernel.h"

#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <unistd.h>

#include <QString>
#include <atomic>
#include <cerrno>

#include "platformroot.h"

namespace fakekernel {

namespace {

std::atomic<FakeKernel*> installedKernel{nullptr};

FakeKernel& kernel() {
    return *installedKernel.load(std::memory_order_acquire);
}

const SystemCalls kFakeTable = {
    [](const char* path, int flags) { return kernel().open(path, flags); },
    [](int fd) { return kernel().close(fd); },
    [](int fd, unsigned long request, void* argument) {
        return kernel().ioctl(fd, request, argument);
    },
    [](void* address, size_t length, int protection, int flags, int fd, off_t offset) {
        return kernel().mmap(address, length, protection, flags, fd, offset);
    },
    [](void* address, size_t length) { return kernel().munmap(address, length); },
    [](int fd, void* buffer, size_t count) { return kernel().read(fd, buffer, count); },
    [](int fd, const void* buffer, size_t count) { return kernel().write(fd, buffer, count); },
    // The fake descriptors are real eventfds that the drivers keep readable or not.
    ::poll,
};

}  // namespace

FakeKernel::FakeKernel(sim::TwinWorld& world) {
    capture_ =
        static_cast<V4l2CaptureDriver*>(&addDriver(std::make_unique<V4l2CaptureDriver>(world)));
    output_ = static_cast<V4l2OutputDriver*>(&addDriver(std::make_unique<V4l2OutputDriver>(world)));
    hwctl_ = static_cast<HwctlDriver*>(&addDriver(std::make_unique<HwctlDriver>(world)));
    motor_ =
        static_cast<SpiMotorDriver*>(&addDriver(std::make_unique<SpiMotorDriver>(world, *hwctl_)));
    installedKernel.store(this, std::memory_order_release);
    installSystemCalls(&kFakeTable);
}

FakeKernel::~FakeKernel() {
    installSystemCalls(nullptr);
    installedKernel.store(nullptr, std::memory_order_release);
    // Files a device layer left open are closed, so that no stream outlives its kernel.
    for (const auto& file : files_) {
        file.second->close(file.first);
        ::close(file.first);
    }
}

FakeDriver& FakeKernel::addDriver(std::unique_ptr<FakeDriver> driver) {
    drivers_.push_back(std::move(driver));
    return *drivers_.back();
}

FakeDriver* FakeKernel::driverAt(const char* path) {
    for (const auto& driver : drivers_) {
        if (platformPath(QString::fromStdString(driver->fixedPath())) == QString(path)) {
            return driver.get();
        }
    }
    return nullptr;
}

FakeDriver* FakeKernel::driverOf(int fd) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto file = files_.find(fd);
    return file == files_.end() ? nullptr : file->second;
}

int FakeKernel::open(const char* path, int flags) {
    FakeDriver* driver = driverAt(path);
    if (driver == nullptr) {
        return ::open(path, flags);
    }
    const int fd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (fd < 0) {
        return -1;
    }
    {
        std::lock_guard<std::mutex> lock(mutex_);
        files_[fd] = driver;
    }
    if (driver->open(fd, flags) != 0) {
        const int error = errno;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            files_.erase(fd);
        }
        ::close(fd);
        errno = error;
        return -1;
    }
    return fd;
}

int FakeKernel::close(int fd) {
    FakeDriver* driver = driverOf(fd);
    if (driver != nullptr) {
        driver->close(fd);
        std::lock_guard<std::mutex> lock(mutex_);
        files_.erase(fd);
    }
    return ::close(fd);
}

int FakeKernel::ioctl(int fd, unsigned long request, void* argument) {
    FakeDriver* driver = driverOf(fd);
    if (driver == nullptr) {
        return linuxSystemCalls().ioctl(fd, request, argument);
    }
    return driver->ioctl(fd, request, argument);
}

void* FakeKernel::mmap(void* address, size_t length, int protection, int flags, int fd,
                       off_t offset) {
    FakeDriver* driver = driverOf(fd);
    if (driver == nullptr) {
        return ::mmap(address, length, protection, flags, fd, offset);
    }
    void* mapped = driver->mmap(fd, length, protection, flags, offset);
    if (mapped != MAP_FAILED) {
        std::lock_guard<std::mutex> lock(mutex_);
        mappings_[mapped] = driver;
    }
    return mapped;
}

int FakeKernel::munmap(void* address, size_t length) {
    FakeDriver* driver = nullptr;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        const auto mapping = mappings_.find(address);
        if (mapping != mappings_.end()) {
            driver = mapping->second;
            mappings_.erase(mapping);
        }
    }
    return driver != nullptr ? driver->munmap(address, length) : ::munmap(address, length);
}

ssize_t FakeKernel::read(int fd, void* buffer, size_t count) {
    FakeDriver* driver = driverOf(fd);
    return driver != nullptr ? driver->read(fd, buffer, count) : ::read(fd, buffer, count);
}

ssize_t FakeKernel::write(int fd, const void* buffer, size_t count) {
    FakeDriver* driver = driverOf(fd);
    return driver != nullptr ? driver->write(fd, buffer, count) : ::write(fd, buffer, count);
}

}  // namespace fakekernel
