#pragma once

#include <vector>

#include "defectinfo.h"
#include "scratchrecord.h"
#include "taskrecords.h"

// Scratch detection on a single fiber's end face. The zones with scratch checking on, less
// the excluded ranges (pairs of inner and outer diameters, um: the cladding edge), are searched
// for line segments, which are merged into scratches and stretched to span the inspection
// circle (circleDiameter) wherever they reach into it. Each scratch goes to the first zone,
// in task order, whose outer diameter its line passes inside; there it counts as not bigger
// when 0.8 of its width is under the zone's width limit, else as bigger. The zones' counts are
// added to (the caller clears them) and every zone gets its two scratch verdicts.
//
// Fills scratches and zoneIndex (capacity entries each; a scratch in no zone keeps its index)
// and count. Returns the number of scratches, or -1, touching no count or verdict, when there
// are more than capacity. defectRects (the defect boxes) produce no segments. A task without
// a zone that checks scratches has nothing to search: 0, and the verdicts.
int FindSectionScratch(const unsigned char* image, int width, int height, ScratchRecord* scratches,
                       short* zoneIndex, int capacity, int& count, TaskInfoSetting& task,
                       float pixelSize, int cx, int cy, double outerDiameter, double circleDiameter,
                       const double* excludedRanges, int excludedRangeCount,
                       const defect_info_struct* defectRects, int defectRectCount);

// The segment search, merging and extension to the inspection circle of radius circleRadius
// about (cx, cy): searchAnnuli are (inner, outer) radius pairs in pixels, searchRadius the
// detector's radius. Returns the scratches in out, or -1 when there are more than capacity.
int FindLines(const unsigned char* image, int width, int height, int cx, int cy,
              double searchRadius, double circleRadius, const std::vector<double>& searchAnnuli,
              const defect_info_struct* defectRects, int defectRectCount, int sens, int capacity,
              std::vector<ScratchRecord>& out);

// Puts each scratch into the first zone whose outer diameter its line passes inside, counts it
// there as not bigger or bigger, and sets every zone's two scratch verdicts.
void gradeScratches(TaskInfoSetting& task, const ScratchRecord* scratches, int n, int cx, int cy,
                    float pixelSize, short* zoneIndex);

// The scratch sensitivity index of a task: the mean sSensitivity of the zones with scratch
// checking on (integer division) plus 10; 0 when no zone checks scratches.
int scratchSensitivity(const TaskInfoSetting& task);

// The annuli to search, as (inner, outer) radius pairs in pixels: the checked zones less the
// excluded ranges, within the outer diameter.
std::vector<double> scratchSearchAnnuli(const TaskInfoSetting& task, float pixelSize,
                                        double outerDiameter, const double* excludedRanges,
                                        int excludedRangeCount);
