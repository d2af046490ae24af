#pragma once

#include <sys/types.h>

#include <cstddef>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace fakekernel {

// One device of the fake kernel, at a fixed path of the instrument ("/dev/video0"). A driver
// writes down every request it receives as one line ("VIDIOC_S_INPUT 0"), so that a test can
// compare what a device layer asked for, in order and with its arguments, with a table; and it
// can be told to fail a request with a chosen error number, so that every failure path of a
// layer can be walked.
//
// The calls below are the kernel's side of the system calls on the driver's open files: they
// return what the system call returns and set errno on failure.
class FakeDriver {
public:
    explicit FakeDriver(std::string fixedPath);
    virtual ~FakeDriver();
    FakeDriver(const FakeDriver&) = delete;
    FakeDriver& operator=(const FakeDriver&) = delete;

    const std::string& fixedPath() const { return fixedPath_; }

    // The requests received so far, oldest first (the latest kRecordLimit), and forgetting
    // them. The record is bounded so that a device streaming for hours does not grow it
    // without end.
    static constexpr size_t kRecordLimit = 10000;
    std::vector<std::string> requests() const;
    void clearRequests();

    // The nth request from now on (1: the next one) fails with `error`.
    void failRequest(int n, int error);
    // Every request whose line starts with `name` ("VIDIOC_DQBUF") fails with `error` until
    // stopFailing().
    void failRequests(const std::string& name, int error);
    void stopFailing();

    // `file` is the descriptor the kernel gave the open file (a real eventfd): the driver
    // makes it readable when the file has something to take, so poll reports it.
    virtual int open(int file, int flags);
    virtual int close(int file);
    virtual int ioctl(int file, unsigned long request, void* argument);
    virtual void* mmap(int file, size_t length, int protection, int flags, off_t offset);
    virtual int munmap(void* address, size_t length);
    virtual ssize_t read(int file, void* buffer, size_t count);
    virtual ssize_t write(int file, const void* buffer, size_t count);

protected:
    // Writes the request down; returns 0, or -1 with errno set when it is to fail.
    int receive(const std::string& line);

    // Sets errno and returns -1, for the requests a driver does not know or refuses.
    static int refuse(int error);

private:
    bool shouldFail(const std::string& line, int& error);

    const std::string fixedPath_;
    mutable std::mutex recordMutex_;
    std::deque<std::string> requests_;
    int failAt_ = 0;  // requests to come until the one that fails; 0: none
    int failAtError_ = 0;
    std::string failName_;
    int failNameError_ = 0;
};

// "0x30314142" style text for request arguments that are codes.
std::string hexText(unsigned long value);

}  // namespace fakekernel
