#pragma once

#include <QString>

#include "resultrecord.h"

// Appends the measurement as one row under the last used row of the day's data workbook
// (the first row under the titles in a fresh copy of the template): connector id, DESCRIBER,
// MANUFACTURER, task name, time, OPERATOR and verdict, then for each zone its name, inner and
// outer diameter, defect count and scratch count (counts over all size classes), centred in
// Arial. The workbook is replaced in one step, so a crash leaves the previous rows intact.
// False, with the workbook as it was, when it cannot be read or written; `error` (may be null)
// then says why.
bool saveMeasureResultDataAsXlsxSF(const QString& dataFile, const SingleFiberResultRecord& record,
                                   QString* error = nullptr);
