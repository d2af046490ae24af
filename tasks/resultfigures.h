#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include "resultrecord.h"

// What the data and report workbooks show of a measurement, so both show the same.

// The measurement's own values in the workbooks' order: connector id, description, company,
// task name, time ("yyyy-MM-dd HH:mm:ss"), operator, verdict.
QStringList measurementValues(const SingleFiberResultRecord& record);

// The figures of one zone. Defects and scratches are the counts over all size classes (the
// data workbook shows them as numbers), and a zone's defects or scratches pass when every one
// of its size classes passed (the report shows these beside the counts).
struct ZoneFigures {
    QString name;
    int diameterMin = 0;
    int diameterMax = 0;
    int defects = 0;
    bool defectsPass = false;
    int scratches = 0;
    bool scratchesPass = false;
};

// The task's zones in use, innermost first.
QList<ZoneFigures> zoneFigures(const TaskInfoSetting& task);

// "Pass" / "Fail", or their Chinese words when language is not 0.
QString verdictText(bool passed, int language);
