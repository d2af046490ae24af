#pragma once

#include <QString>

#include "taskinfo.h"

// Why a task cannot grade an end face, or "" when it can. A task grades nothing when none of
// its zones has an outer diameter above its inner one (a task file whose numbers were written
// as JSON numbers reads as all zeros, and every connector would pass), or when a zone that
// checks defects or scratches has no extent: a run with such a task must fail with this
// reason rather than give a verdict.
QString taskGradingProblem(const TaskInfoSetting& task);
