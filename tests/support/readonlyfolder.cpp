#include "readonlyfolder.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

ReadOnlyFolder::ReadOnlyFolder(const QString& path) : path_(path) {
    const QByteArray native = path.toLocal8Bit();
    if (geteuid() != 0) {
        chmodded_ = chmod(native.constData(), 0555) == 0;
        return;
    }
    if (mount(native.constData(), native.constData(), nullptr, MS_BIND, nullptr) != 0) {
        return;
    }
    mounted_ =
        mount(nullptr, native.constData(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
    if (!mounted_) {
        umount2(native.constData(), MNT_DETACH);
    }
}

ReadOnlyFolder::~ReadOnlyFolder() {
    const QByteArray native = path_.toLocal8Bit();
    if (mounted_) {
        umount2(native.constData(), MNT_DETACH);
    }
    if (chmodded_) {
        chmod(native.constData(), 0755);
    }
}
