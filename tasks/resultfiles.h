#pragma once

#include "resultdata.h"
#include "resultfilename.h"
#include "resultrecord.h"
#include "resultreport.h"
#include "resultstorage.h"
#include "resulttemplates.h"

// Saving the result files of a single-fiber measurement on the SD card.

enum class SaveOutcome {
    NotSaved,         // nothing was due (mode 0, or mode 4/5 against the verdict)
    Saved,            // every file the mode asks for was written
    NoSdCard,         // nothing written: the caller shows "no SD card" (noSDCard())
    InvalidFileName,  // nothing written: the connector id cannot name a file (invalidFileName())
    Failed,  // a file the mode asks for could not be written (full or read-only card, a name
             // too long for the file system); what was on the card before is still there
};

// Saves the measurement by its save mode:
// - 0: nothing. Then, in this order: no SD card → NoSdCard; an invalid connector id →
//   InvalidFileName; mode 4 with a failed run or mode 5 with a passed one → NotSaved. None of
//   these touches the card.
// - Otherwise the day folder "/mnt/sdcard/sd/Measure_Result/yyyyMMdd" and its "Report"
//   folder are created when missing, and the first measurement of a day copies the data
//   template ("/etc/MeasureResultDataTemplate_EN.xlsx", or _CN for Chinese) with "cp" to
//   "MeasureData_EN.xlsx" (_CN) in it. Modes 1, 3, 4 and 5 append the row to that workbook;
//   modes 2, 3, 4 and 5 write the report "Report/<id>_EN.xlsx" (_CN) from the report template,
//   replacing an earlier report of the same id that day. Then "sync" runs.
// Saves from several threads and several programs (the instrument, the batch tool) take turns
// through a lock file in the day folder. Every workbook is replaced in one step, so a crash or
// power cut during a save leaves the day's data and any report as they were before it.
// On Failed, `failure` (may be null) says what could not be written and why.
SaveOutcome saveMeasureResultSF(const SingleFiberResultRecord& record, QString* failure = nullptr);
