#include "smallcard.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <vector>

SmallCard::SmallCard(const QString& path, int kilobytes) : path_(path) {
    const QByteArray options = "size=" + QByteArray::number(kilobytes) + "k";
    mounted_ = mount("tmpfs", path.toLocal8Bit().constData(), "tmpfs", 0, options.constData()) == 0;
}

SmallCard::~SmallCard() {
    if (mounted_) {
        umount2(path_.toLocal8Bit().constData(), MNT_DETACH);
    }
}

void SmallCard::fill() const {
    const int fd = open((path_ + "/filler").toLocal8Bit().constData(),
                        O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    const std::vector<char> block(4096, 'x');
    while (fd >= 0 && write(fd, block.data(), block.size()) > 0) {
    }
    // The last few bytes of a block that did not fit.
    while (fd >= 0 && write(fd, block.data(), 1) > 0) {
    }
    if (fd >= 0) {
        close(fd);
    }
}
