#pragma once

#include "defectinfo.h"
#include "lsd.h"

// The segment search of the scratch detection: the line segment detector (lsd.h) run on the
// 8-bit gray frame with the instrument's settings, confined to the zones to search.

// What the scratch sensitivity index sens (the mean sSensitivity of the zones checked for
// scratches, plus 10) sets in the detector: the gaussian's sigma_scale, and the mode (2 adds
// the pass for faint segments).
//   sens 5..9, 15..19:  0.8, mode 1        sens 20:  0.8, mode 2
//   sens 10:            1.2, mode 2        others:   1.2, mode 1
struct LumaspecSegmentSettings {
    double sigmaScale;
    int mode;
};
LumaspecSegmentSettings lumaspecSegmentSettings(int sens);

// Finds the line segments of the width x height gray image about the fiber center (cx, cy).
// When r exceeds rLimit (the inspection circle's radius) the whole frame is searched;
// otherwise the square [cx - r, cx + r] x [cy - r, cy + r], clipped to the frame, is cut out
// and searched. Within it the detector keeps to the annulusCount annuli (annulusRadii:
// (inner, outer) pairs of radii about the center, pixels, ascending, cut at r; none: all of it)
// and off the exclusion rectangles (frame pixels; the caller's list is not changed).
//
// Returns the number of segments and sets *segments to their 7-tuples (x1, y1, x2, y2, width,
// direction, -log10(NFA); lsd.h), in frame pixels, and *segmentCount to their number. Release
// *segments with freeLineSegments; it is null when the square is empty (r below a pixel).
// Ends the process with "error: not enough memory" when the frame cannot be converted.
int FindLumaspecSegment(const unsigned char* image, int width, int height, int cx, int cy, double r,
                        double rLimit, int annulusCount, const double* annulusRadii,
                        const defect_info_struct* exclusions, int exclusionCount, int sens,
                        double** segments, int* segmentCount);
