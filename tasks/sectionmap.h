#pragma once

#include "taskinfo.h"

// Paints the zone map of a measurement region: every pixel gets the index of the first zone,
// in task order, whose ring holds it (inner radius included, outer excluded). A pixel in no
// zone keeps 0, like zone 0 itself: the detectors tell the two apart by the zones' radii.
// Radii come from the zones' diameters as in zoneRadiusPx, at the given scale (um per pixel).
void initSectionMapByTaskInfoSF(const TaskInfoSetting& task, unsigned char* zoneMap, int width,
                                int height, int centerX, int centerY, double scale);
