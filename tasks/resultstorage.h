#pragma once

#include <QDateTime>
#include <QString>

// Where the result files go: "/mnt/sdcard/sd/Measure_Result/yyyyMMdd/" for each day, with the
// reports in its "Report" sub-folder.

// Whether the SD card is there: its folder "/mnt/sdcard/sd" exists.
bool isSdCardExists();

// The day folder for a measurement taken at `time` (now, when time is not valid).
QString resultDayFolder(const QDateTime& time);
