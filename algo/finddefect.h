#pragma once

#include "defectinfo.h"
#include "taskrecords.h"

// Defect (spot) detection in a gray image of the end face around a fiber center:
// every zone of the task with defect checking on becomes rings cut by the excluded bands
// (pairs of diameters in um), pixels of the rings whose local contrast exceeds the zone's
// threshold form a binary map, pixels under the mask (value 255, may be null) are removed,
// the map is split into defects, and the defects are graded into the task's zoneResults.
//
// defectMap and defectMap2 are caller-owned width x height bytes: the candidate map, and the
// pixels of the accepted defects. zoneMap (width x height, may be null) gives each pixel's
// zone index. labelMap (width x height shorts, may be null) receives each defect's index over
// its bounding box. Returns the number of defects written to defectList, or -1 when there
// are more than maxDefects, when the extraction failed, or when the task's zones and the bands
// would make more rings than the map holds (10): a task that cannot be inspected whole is
// refused rather than half inspected.
int AlgGetFiberDefect(const unsigned char* image, const unsigned char* maskRegion,
                      unsigned char* defectMap, unsigned char* defectMap2,
                      const unsigned char* zoneMap, TaskInfoSetting& task, int width, int height,
                      int centerX, int centerY, float scale, const int* bands, int bandCount,
                      defect_info_struct* defectList, short* labelMap, int maxDefects);
