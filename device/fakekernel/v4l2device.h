#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "fakedriver.h"
#include "frameclockthread.h"

struct v4l2_buffer;
struct v4l2_requestbuffers;

namespace fakekernel {

// What every fake Video4Linux2 device shares: memory-mapped streaming. The application asks
// for buffers (VIDIOC_REQBUFS), looks each up (VIDIOC_QUERYBUF) and maps it, then hands buffers
// to the driver (VIDIOC_QBUF) and takes them back when they are done (VIDIOC_DQBUF). While the
// stream is on, a frame clock ticks once a frame period and the device type decides what a
// tick does with the queued buffers (fill one with a frame, show one).
//
// Buffers are real shared memory (a memfd each), so a mapping is a real mapping of the process
// and a frame written by the driver is seen through it. The open file's descriptor is readable
// while a buffer is done, so poll works on it as on a real device.
class V4l2Device : public FakeDriver {
public:
    // `bufferType` is the V4L2 buffer type the device streams (capture or output).
    V4l2Device(std::string fixedPath, uint32_t bufferType);
    ~V4l2Device() override;

    // How many buffers VIDIOC_REQBUFS grants, whatever is asked (a driver may grant fewer,
    // none, or more than asked); without it, what is asked up to kMaxBuffers.
    void setGrantedBuffers(std::optional<unsigned> count);
    static constexpr unsigned kMaxBuffers = 8;

    // Ticks that found no buffer to use since the stream started.
    unsigned missedTicks() const;
    // Buffers the application has taken back (VIDIOC_DQBUF) since the stream started.
    unsigned takenBuffers() const;

    int open(int file, int flags) override;
    int close(int file) override;
    int ioctl(int file, unsigned long request, void* argument) override;
    void* mmap(int file, size_t length, int protection, int flags, off_t offset) override;
    int munmap(void* address, size_t length) override;

protected:
    // The requests that are not about buffers and streaming (capabilities, formats, inputs,
    // controls). The device type writes them down with receive().
    virtual int deviceIoctl(unsigned long request, void* argument) = 0;
    // Bytes of one buffer for the current format.
    virtual size_t bufferBytes() const = 0;
    // One frame period has passed while streaming; called with the device lock held.
    virtual void tick(std::unique_lock<std::mutex>& lock) = 0;
    // The frame period of the device's clock.
    virtual std::chrono::nanoseconds framePeriod() const = 0;
    // The stream stopped and every buffer is the application's again; called with the lock.
    virtual void streamStopped() {}

    struct Buffer {
        int memfd = -1;
        uint8_t* memory = nullptr;  // the driver's own view of the buffer
        size_t length = 0;
        uint32_t bytesUsed = 0;
        uint32_t sequence = 0;
        bool withDriver = false;  // queued, done, or in the driver's hands
    };

    // Device types call this first in their destructors: no tick may run once they are gone.
    void stopStream();

    // For tick(): the oldest queued buffer, taken out of the queue (-1 when none).
    int takeQueued();
    // For tick(): hands a buffer back to the application as done.
    void markDone(int index);
    Buffer& buffer(int index) { return buffers_[size_t(index)]; }
    bool streaming() const { return streaming_; }
    uint32_t bufferType() const { return bufferType_; }

    mutable std::mutex mutex_;  // guards everything below and the device types' state

private:
    int requestBuffers(v4l2_requestbuffers& request);
    static bool allocate(Buffer& b, size_t length);
    int queryBuffer(v4l2_buffer& request);
    int queueBuffer(v4l2_buffer& request);
    int dequeueBuffer(int file, v4l2_buffer& request);
    int streamOn(const uint32_t& type);
    int streamOff(const uint32_t& type);
    void stopStreaming(std::unique_lock<std::mutex>& lock);
    void freeBuffers();
    bool anyMapped() const;
    void setReadiness(bool ready);
    size_t mapOffset(int index) const;

    const uint32_t bufferType_;
    std::optional<unsigned> grantedBuffers_;
    std::vector<Buffer> buffers_;
    std::deque<int> queued_;
    std::deque<int> done_;
    std::map<int, int> openFlags_;         // open file -> its flags
    std::map<void*, int> mappings_;        // the application's mappings -> buffer index
    std::condition_variable doneChanged_;  // a buffer became done, or the stream stopped
    bool streaming_ = false;
    bool clockStopping_ = false;  // the stream is off, its clock not yet stopped
    unsigned missedTicks_ = 0;
    unsigned takenBuffers_ = 0;
    uint32_t sequence_ = 0;
    FrameClockThread clock_;
};

// Names of V4L2 buffer types in request lines: "capture", "output", "overlay", else the number.
std::string bufferTypeName(uint32_t type);
// A pixel format's four characters ("BA10").
std::string fourccText(uint32_t fourcc);

}  // namespace fakekernel
