#include "systemcalls.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>

namespace {

int linuxOpen(const char* path, int flags) {
    return ::open(path, flags);
}

int linuxIoctl(int fd, unsigned long request, void* argument) {
    return ::ioctl(fd, request, argument);
}

const SystemCalls kLinux = {linuxOpen, ::close, linuxIoctl, ::mmap,
                            ::munmap,  ::read,  ::write,    ::poll};

// Installed by one thread while the device threads may already be reading it.
std::atomic<const SystemCalls*> installed{&kLinux};

}  // namespace

const SystemCalls& linuxSystemCalls() {
    return kLinux;
}

const SystemCalls& systemCalls() {
    return *installed.load(std::memory_order_acquire);
}

void installSystemCalls(const SystemCalls* table) {
    installed.store(table != nullptr ? table : &kLinux, std::memory_order_release);
}
