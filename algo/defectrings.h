#pragma once

#include "taskrecords.h"

// The rings in which defects are searched: each zone with defect checking on, cut by the
// excluded diameter bands (around the core edge and the cladding edge, where the fiber's own
// boundary would look like a defect).

namespace defect {

// Appends the rings of the zone [dMin, dMax] (diameters, um) to ringList as (inner, outer)
// pairs starting at ring `position`, cut by `bandCount` bands (start, end) given in order.
// Returns the position after the last ring written; a zone adds at most bandCount + 1 rings.
// A band touching a zone boundary leaves a zero-width ring, which matches no pixel.
int GetFiberRegion(int dMin, int dMax, const int* bands, int bandCount, int* ringList,
                   int position);

}  // namespace defect

// The contrast threshold of a zone's rings. It depends on the zone's position in the task (the
// innermost zone is the most sensitive), not its name, and on the fiber and connector kind.
double zoneDefectThreshold(const TaskInfoSetting& task, int zoneIndex);

// A ring value in micrometres of diameter as a pixel radius, truncated.
int ringRadiusPx(int diameterUm, float scale);
