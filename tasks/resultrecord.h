#pragma once

#include <QDateTime>
#include <QImage>
#include <QString>

#include "taskinfo.h"

// Save modes, as the main window's save box lists them.
enum ResultSaveMode {
    kSaveNothing = 0,
    kSaveData = 1,
    kSaveReport = 2,
    kSaveDataAndReport = 3,
    kSavePassedDataAndReport = 4,  // data and report, only when the run passed
    kSaveFailedDataAndReport = 5,  // data and report, only when the run failed
};

// What the result files of one single-fiber measurement are made from. The caller fills it at
// the end of the run; the report texts come from the settings (DESCRIBER, MANUFACTURER,
// OPERATOR).
struct SingleFiberResultRecord {
    int saveMode = kSaveNothing;  // a ResultSaveMode
    QString connectorId;          // names the report file, so it must be a valid file name
    int language = 0;             // 0 English, any other value Chinese
    bool passed = false;
    TaskInfoSetting task = {};  // the task with its zoneResults of this run
    QImage measured;            // the measured region, 8-bit gray
    QImage overlay;             // the drawn result, RGB
    QDateTime time;             // when it was measured; names the day folder
    QString describer;
    QString manufacturer;
    QString operatorName;
};
