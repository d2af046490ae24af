#pragma once

#include <QJsonObject>

#include "singlefibersequence.h"

// The tool's JSON for one inspection: where the fiber was found, and for a measured region its
// place, the verdict, every zone's counts and verdicts, the defects and the scratches.
QJsonObject placeJson(const FiberPlace& place);
QJsonObject measurementJson(const MeasureSingleFiberThread& run, const MeasureRegion& region);
