#include "resultstorage.h"

#include <QFileInfo>

#include "platformroot.h"

bool isSdCardExists() {
    return QFileInfo(platformPath("/mnt/sdcard/sd")).isDir();
}

QString resultDayFolder(const QDateTime& time) {
    const QDateTime when = time.isValid() ? time : QDateTime::currentDateTime();
    return platformPath("/mnt/sdcard/sd/Measure_Result/") + when.toString("yyyyMMdd");
}
