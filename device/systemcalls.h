#pragma once

#include <poll.h>
#include <sys/types.h>

#include <cstddef>

// The system calls through which every device layer reaches its devices. On the instrument the
// table calls the C library; on a development host an in-process fake kernel installs its own
// table and serves the fixed device paths under the platform root, with the same return values
// and errno as the kernel. The device layers reach their devices through nothing else (plain
// files, such as a raw frame dump, are written with the C library as anywhere).
struct SystemCalls {
    int (*open)(const char* path, int flags);
    int (*close)(int fd);
    int (*ioctl)(int fd, unsigned long request, void* argument);
    void* (*mmap)(void* address, size_t length, int protection, int flags, int fd, off_t offset);
    int (*munmap)(void* address, size_t length);
    ssize_t (*read)(int fd, void* buffer, size_t count);
    ssize_t (*write)(int fd, const void* buffer, size_t count);
    int (*poll)(pollfd* fds, nfds_t count, int timeoutMs);
};

// The table that calls the C library.
const SystemCalls& linuxSystemCalls();

// The table in use: the Linux one unless another was installed.
const SystemCalls& systemCalls();

// Makes `table` the table in use (it must outlive its use); null returns to the Linux table.
void installSystemCalls(const SystemCalls* table);
