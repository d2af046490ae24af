#include "v4l2device.h"

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>

namespace fakekernel {

namespace {

constexpr size_t kPageBytes = 4096;

std::string memoryName(uint32_t memory) {
    return memory == V4L2_MEMORY_MMAP ? "mmap" : std::to_string(memory);
}

}  // namespace

V4l2Device::V4l2Device(std::string fixedPath, uint32_t bufferType)
    : FakeDriver(std::move(fixedPath)), bufferType_(bufferType) {}

V4l2Device::~V4l2Device() {
    freeBuffers();
}

void V4l2Device::stopStream() {
    std::unique_lock<std::mutex> lock(mutex_);
    stopStreaming(lock);
}

void V4l2Device::setGrantedBuffers(std::optional<unsigned> count) {
    std::lock_guard<std::mutex> lock(mutex_);
    grantedBuffers_ = count;
}

unsigned V4l2Device::missedTicks() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return missedTicks_;
}

unsigned V4l2Device::takenBuffers() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return takenBuffers_;
}

int V4l2Device::open(int file, int flags) {
    if (receive("open") != 0) {
        return -1;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    openFlags_[file] = flags;
    return 0;
}

// Closing the last file stops the stream and frees the buffers, as the kernel does; mappings
// the application still holds stay valid until it unmaps them.
int V4l2Device::close(int file) {
    receive("close");
    std::unique_lock<std::mutex> lock(mutex_);
    openFlags_.erase(file);
    if (openFlags_.empty()) {
        stopStreaming(lock);
        freeBuffers();
    }
    return 0;
}

int V4l2Device::ioctl(int file, unsigned long request, void* argument) {
    switch (request) {
        case VIDIOC_REQBUFS:
            return requestBuffers(*static_cast<v4l2_requestbuffers*>(argument));
        case VIDIOC_QUERYBUF:
            return queryBuffer(*static_cast<v4l2_buffer*>(argument));
        case VIDIOC_QBUF:
            return queueBuffer(*static_cast<v4l2_buffer*>(argument));
        case VIDIOC_DQBUF:
            return dequeueBuffer(file, *static_cast<v4l2_buffer*>(argument));
        case VIDIOC_STREAMON:
            return streamOn(*static_cast<uint32_t*>(argument));
        case VIDIOC_STREAMOFF:
            return streamOff(*static_cast<uint32_t*>(argument));
        default:
            return deviceIoctl(request, argument);
    }
}

int V4l2Device::requestBuffers(v4l2_requestbuffers& request) {
    if (receive("VIDIOC_REQBUFS " + bufferTypeName(request.type) + " " +
                memoryName(request.memory) + " " + std::to_string(request.count)) != 0) {
        return -1;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    if (request.type != bufferType_ || request.memory != V4L2_MEMORY_MMAP) {
        return refuse(EINVAL);
    }
    if (streaming_ || clockStopping_ || anyMapped()) {
        return refuse(EBUSY);
    }
    freeBuffers();
    const unsigned granted =
        request.count == 0 ? 0 : grantedBuffers_.value_or(std::min(request.count, kMaxBuffers));
    const size_t length = bufferBytes();
    for (unsigned i = 0; i < granted; ++i) {
        Buffer b;
        if (!allocate(b, length)) {
            return refuse(ENOMEM);
        }
        buffers_.push_back(b);
    }
    request.count = granted;
    return 0;
}

// A buffer is shared memory of its own, mapped once for the driver.
bool V4l2Device::allocate(Buffer& b, size_t length) {
    b.length = length;
    b.memfd = memfd_create("lumaspecter-v4l2-buffer", MFD_CLOEXEC);
    if (b.memfd < 0) {
        return false;
    }
    void* memory = ftruncate(b.memfd, off_t(length)) == 0
                       ? ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, b.memfd, 0)
                       : MAP_FAILED;
    if (memory == MAP_FAILED) {
        ::close(b.memfd);
        return false;
    }
    b.memory = static_cast<uint8_t*>(memory);
    return true;
}

int V4l2Device::queryBuffer(v4l2_buffer& request) {
    if (receive("VIDIOC_QUERYBUF " + bufferTypeName(request.type) + " " +
                std::to_string(request.index)) != 0) {
        return -1;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    if (request.type != bufferType_ || request.index >= buffers_.size()) {
        return refuse(EINVAL);
    }
    const Buffer& b = buffers_[request.index];
    request.memory = V4L2_MEMORY_MMAP;
    request.length = uint32_t(b.length);
    request.m.offset = uint32_t(mapOffset(int(request.index)));
    request.bytesused = b.bytesUsed;
    request.flags = V4L2_BUF_FLAG_MAPPED | (b.withDriver ? V4L2_BUF_FLAG_QUEUED : 0);
    return 0;
}

void* V4l2Device::mmap(int /*file*/, size_t length, int protection, int flags, off_t offset) {
    std::lock_guard<std::mutex> lock(mutex_);
    int index = -1;
    for (size_t i = 0; i < buffers_.size(); ++i) {
        if (off_t(mapOffset(int(i))) == offset) {
            index = int(i);
        }
    }
    if (receive("mmap " + std::to_string(index) + " " + std::to_string(length)) != 0) {
        return MAP_FAILED;
    }
    if (index < 0 || length == 0 || length > buffers_[size_t(index)].length ||
        !(flags & MAP_SHARED)) {
        refuse(EINVAL);
        return MAP_FAILED;
    }
    void* address = ::mmap(nullptr, length, protection, flags, buffers_[size_t(index)].memfd, 0);
    if (address != MAP_FAILED) {
        mappings_[address] = index;
    }
    return address;
}

int V4l2Device::munmap(void* address, size_t length) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto mapping = mappings_.find(address);
    const int index = mapping == mappings_.end() ? -1 : mapping->second;
    if (receive("munmap " + std::to_string(index)) != 0) {
        return -1;
    }
    if (mapping != mappings_.end()) {
        mappings_.erase(mapping);
    }
    return ::munmap(address, length);
}

int V4l2Device::queueBuffer(v4l2_buffer& request) {
    if (receive("VIDIOC_QBUF " + bufferTypeName(request.type) + " " + memoryName(request.memory) +
                " " + std::to_string(request.index)) != 0) {
        return -1;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    if (request.type != bufferType_ || request.memory != V4L2_MEMORY_MMAP ||
        request.index >= buffers_.size() || buffers_[request.index].withDriver) {
        return refuse(EINVAL);
    }
    Buffer& b = buffers_[request.index];
    b.withDriver = true;
    b.bytesUsed = request.bytesused;
    queued_.push_back(int(request.index));
    return 0;
}

int V4l2Device::dequeueBuffer(int file, v4l2_buffer& request) {
    if (receive("VIDIOC_DQBUF " + bufferTypeName(request.type) + " " +
                memoryName(request.memory)) != 0) {
        return -1;
    }
    std::unique_lock<std::mutex> lock(mutex_);
    if (request.type != bufferType_ || request.memory != V4L2_MEMORY_MMAP) {
        return refuse(EINVAL);
    }
    const auto flags = openFlags_.find(file);
    const bool blocking = flags != openFlags_.end() && !(flags->second & O_NONBLOCK);
    if (blocking) {
        doneChanged_.wait(lock, [this] { return !done_.empty() || !streaming_; });
    }
    if (done_.empty()) {
        return refuse(streaming_ ? EAGAIN : EINVAL);
    }
    const int index = done_.front();
    done_.pop_front();
    ++takenBuffers_;
    setReadiness(!done_.empty());
    Buffer& b = buffers_[size_t(index)];
    b.withDriver = false;
    request.index = uint32_t(index);
    request.bytesused = b.bytesUsed;
    request.sequence = b.sequence;
    request.length = uint32_t(b.length);
    request.m.offset = uint32_t(mapOffset(index));
    request.flags = V4L2_BUF_FLAG_MAPPED | V4L2_BUF_FLAG_DONE;
    return 0;
}

int V4l2Device::streamOn(const uint32_t& type) {
    if (receive("VIDIOC_STREAMON " + bufferTypeName(type)) != 0) {
        return -1;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    if (type != bufferType_ || buffers_.empty()) {
        return refuse(EINVAL);
    }
    if (!streaming_ && !clockStopping_) {
        streaming_ = true;
        missedTicks_ = 0;
        takenBuffers_ = 0;
        clock_.start([this] { return framePeriod(); },
                     [this] {
                         std::unique_lock<std::mutex> tickLock(mutex_);
                         if (streaming_) {
                             tick(tickLock);
                         }
                     });
    }
    return 0;
}

int V4l2Device::streamOff(const uint32_t& type) {
    if (receive("VIDIOC_STREAMOFF " + bufferTypeName(type)) != 0) {
        return -1;
    }
    std::unique_lock<std::mutex> lock(mutex_);
    if (type != bufferType_) {
        return refuse(EINVAL);
    }
    stopStreaming(lock);
    return 0;
}

// Every buffer returns to the application, queued or done alike.
void V4l2Device::stopStreaming(std::unique_lock<std::mutex>& lock) {
    if (streaming_) {
        streaming_ = false;
        clockStopping_ = true;
        doneChanged_.notify_all();
        // A tick may be waiting for the lock: the clock is stopped without it.
        lock.unlock();
        clock_.stop();
        lock.lock();
        clockStopping_ = false;
    }
    queued_.clear();
    done_.clear();
    for (Buffer& b : buffers_) {
        b.withDriver = false;
    }
    setReadiness(false);
    streamStopped();
}

int V4l2Device::takeQueued() {
    if (queued_.empty()) {
        ++missedTicks_;
        return -1;
    }
    const int index = queued_.front();
    queued_.pop_front();
    return index;
}

void V4l2Device::markDone(int index) {
    buffers_[size_t(index)].sequence = sequence_++;
    done_.push_back(index);
    setReadiness(true);
    doneChanged_.notify_all();
}

void V4l2Device::freeBuffers() {
    for (Buffer& b : buffers_) {
        ::munmap(b.memory, b.length);
        ::close(b.memfd);
    }
    buffers_.clear();
}

bool V4l2Device::anyMapped() const {
    return !mappings_.empty();
}

// The open files' descriptors are eventfds: a count above 0 makes them readable.
void V4l2Device::setReadiness(bool ready) {
    for (const auto& file : openFlags_) {
        uint64_t count = 1;
        const ssize_t done = ready ? ::write(file.first, &count, sizeof count)
                                   : ::read(file.first, &count, sizeof count);
        (void)done;  // a drained eventfd refuses the read; that is the state wanted
    }
}

size_t V4l2Device::mapOffset(int index) const {
    const size_t length = buffers_.empty() ? 0 : buffers_[0].length;
    return size_t(index) * ((length + kPageBytes - 1) / kPageBytes * kPageBytes);
}

std::string bufferTypeName(uint32_t type) {
    switch (type) {
        case V4L2_BUF_TYPE_VIDEO_CAPTURE:
            return "capture";
        case V4L2_BUF_TYPE_VIDEO_OUTPUT:
            return "output";
        case V4L2_BUF_TYPE_VIDEO_OVERLAY:
            return "overlay";
        default:
            return std::to_string(type);
    }
}

std::string fourccText(uint32_t fourcc) {
    return {char(fourcc & 0xff), char((fourcc >> 8) & 0xff), char((fourcc >> 16) & 0xff),
            char((fourcc >> 24) & 0xff)};
}

}  // namespace fakekernel
