#include "deviceio.h"

#include <QByteArray>
#include <cerrno>

#include "platformroot.h"

int deviceRequest(int fd, unsigned long request, void* argument) {
    int result;
    do {
        result = systemCalls().ioctl(fd, request, argument);
    } while (result == -1 && errno == EINTR);
    return result;
}

const char* devicePath(const char* fixedPath) {
    thread_local QByteArray path;
    path = platformPath(fixedPath).toLocal8Bit();
    return path.constData();
}
