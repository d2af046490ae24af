#include "fakedriver.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstdio>

namespace fakekernel {

FakeDriver::FakeDriver(std::string fixedPath) : fixedPath_(std::move(fixedPath)) {}

FakeDriver::~FakeDriver() = default;

std::vector<std::string> FakeDriver::requests() const {
    std::lock_guard<std::mutex> lock(recordMutex_);
    return {requests_.begin(), requests_.end()};
}

void FakeDriver::clearRequests() {
    std::lock_guard<std::mutex> lock(recordMutex_);
    requests_.clear();
}

void FakeDriver::failRequest(int n, int error) {
    std::lock_guard<std::mutex> lock(recordMutex_);
    failAt_ = n;
    failAtError_ = error;
}

void FakeDriver::failRequests(const std::string& name, int error) {
    std::lock_guard<std::mutex> lock(recordMutex_);
    failName_ = name;
    failNameError_ = error;
}

void FakeDriver::stopFailing() {
    std::lock_guard<std::mutex> lock(recordMutex_);
    failAt_ = 0;
    failName_.clear();
}

bool FakeDriver::shouldFail(const std::string& line, int& error) {
    if (failAt_ > 0 && --failAt_ == 0) {
        error = failAtError_;
        return true;
    }
    if (!failName_.empty() && line.compare(0, failName_.size(), failName_) == 0) {
        error = failNameError_;
        return true;
    }
    return false;
}

int FakeDriver::receive(const std::string& line) {
    std::lock_guard<std::mutex> lock(recordMutex_);
    requests_.push_back(line);
    if (requests_.size() > kRecordLimit) {
        requests_.pop_front();
    }
    int error = 0;
    return shouldFail(line, error) ? refuse(error) : 0;
}

int FakeDriver::refuse(int error) {
    errno = error;
    return -1;
}

int FakeDriver::open(int /*file*/, int /*flags*/) {
    return receive("open");
}

int FakeDriver::close(int /*file*/) {
    receive("close");
    return 0;  // a close always releases the file, as the kernel's does
}

int FakeDriver::ioctl(int /*file*/, unsigned long request, void* /*argument*/) {
    return receive("ioctl " + hexText(request)) == 0 ? refuse(ENOTTY) : -1;
}

void* FakeDriver::mmap(int /*file*/, size_t /*length*/, int /*protection*/, int /*flags*/,
                       off_t /*offset*/) {
    if (receive("mmap") == 0) {
        refuse(ENODEV);
    }
    return MAP_FAILED;
}

int FakeDriver::munmap(void* /*address*/, size_t /*length*/) {
    return receive("munmap") == 0 ? refuse(EINVAL) : -1;
}

ssize_t FakeDriver::read(int /*file*/, void* /*buffer*/, size_t /*count*/) {
    return receive("read") == 0 ? refuse(EINVAL) : -1;
}

ssize_t FakeDriver::write(int /*file*/, const void* /*buffer*/, size_t /*count*/) {
    return receive("write") == 0 ? refuse(EINVAL) : -1;
}

std::string hexText(unsigned long value) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%lx", value);
    return text;
}

}  // namespace fakekernel
