#pragma once

#include <cstdint>

#include "focuscal.h"
#include "sharpnessregions.h"

// The focus measure of a raw frame over a plan's squares (see sharpnessregions.h): each square
// converted to 8 bits in `work` (room for the largest square, 161 x 161 bytes), measured, the
// measures summed and multiplied by the plan's factor; 0 when the plan has no square.
double measurePlan(MathCal::FocusCal& focus, const uint16_t* frame, const SharpnessPlan& plan,
                   unsigned char* work);

// The measure single-fiber live view (mode 8) takes of a whole frame with the fiber center at
// (fiberX, fiberY), not truncated.
double liveViewSharpness(const uint16_t* frame, unsigned fiberX, unsigned fiberY);
