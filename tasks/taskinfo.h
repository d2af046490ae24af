#pragma once

#include <QList>
#include <QMetaType>

#include "taskrecords.h"

// The task records as Qt sees them: the short names the signals use, and their registration
// for queued connections between threads.

// The short names that signal signatures use.
using TaskInfo = TaskInfoSetting;
using ZoneResult = TaskZoneResult;

Q_DECLARE_METATYPE(TaskInfoSetting)
Q_DECLARE_METATYPE(TaskZoneResult)

// Registers the records under their own and their short names (and the result list pointer of
// the measurement signal) so that queued connections can carry them. Safe to call repeatedly.
void registerTaskMetaTypes();
