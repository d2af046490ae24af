#pragma once

#include "defectinfo.h"
#include "taskrecords.h"

// Grades the defects: each gets its size class from its zone's two size limits and is counted
// into that zone's results with its area; then every zone of the task gets its three defect
// verdicts against its limits (-1 allows any number, a count above the limit fails).
// The size of a defect is q = 0.8 (w^2 + h^2) with w, h its box sides in um, compared with
// the squared limits: below dLimit1^2 small, up to and including dLimit2^2 middle, above it
// large (with equal limits there is no middle class). Defects outside the task's zones are
// left unclassified and uncounted.
void DefecetFilter(defect_info_struct* list, int count, TaskInfoSetting& task, float scale);
