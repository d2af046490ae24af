#pragma once

#include <QString>

#include "resultrecord.h"

// Writes the connector's report from the report template: the measurement's values beside
// their labels, one table row per zone (name, inner and outer diameter, defect count and
// verdict, scratch count and verdict), the measured image under "Original" and the overlay
// under "Analyse", each scaled to fit 280 pixels. An existing report of the same connector is
// replaced in one step. False, with any existing report as it was, when the template cannot be
// read or the report cannot be written; `error` (may be null) then says why. A missing (null)
// picture is left out.
bool saveMeasureResultReportAsXlsxSF(const QString& reportFile, const QString& templateFile,
                                     const SingleFiberResultRecord& record,
                                     QString* error = nullptr);
