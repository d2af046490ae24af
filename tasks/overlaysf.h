#pragma once

#include <QImage>

#include "defectinfo.h"
#include "scratchrecord.h"
#include "taskinfo.h"

// What a single-fiber measurement found, as the overlay draws it.
struct SingleFiberFindings {
    const unsigned char* defectPixels;  // 255 on the pixels of accepted defects
    const short* labelMap;              // defect index over each defect's box, -1 elsewhere
    const defect_info_struct* defects;
    int defectCount;  // -1 when detection failed
    const ScratchRecord* scratches;
    const short* scratchZones;  // zone of each scratch, -1 for none
    int scratchCount;           // -1 when detection failed
};

// Draws the result of a single-fiber measurement. `measured` becomes a copy of the region
// (8-bit gray) and `overlay` an RGB copy with the zones' circles in blue, each defect's pixels
// in red (large) or yellow (small and middle), and each scratch in orange when both scratch
// verdicts of its zone pass (or it lies in no zone) or red when one fails.
//
// The measured image takes the region's line length from its height, which is right for the
// square regions cut around a single fiber; any other region is read with its true line length
// (its height would make a picture Qt refuses, or one read past the region's end).
void drawOverlayImageSF(const unsigned char* region, int width, int height, int centerX,
                        int centerY, const TaskInfoSetting& task, double scale,
                        const SingleFiberFindings& findings, QImage& measured, QImage& overlay);
