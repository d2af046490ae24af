#pragma once

// Refinement of a fiber's position in an 8-bit gray picture of at most 2000 x 2000 pixels:
// the dark cladding disc is found as a blob, edge points are collected along rays from its
// center, and an ellipse fitted to them gives the center and the radius.
//
// Returns 1 when the fiber was located and fitted: (x, y) is the fitted center (truncated to
// whole pixels) and r half the fitted ellipse's smaller axis, rounded. Returns 0 when no dark
// object was found or fewer than 20 edge points were (then (x, y) is the blob's center), -1
// when the picture held as many objects as the blob table (200) or is not 1 .. 2000 pixels
// in each direction, -2 when no object had the fiber's size and roundness. On 0 without a
// blob, -1 and -2, (x, y) is the picture's center. The entry values of x and y are not used;
// r keeps its entry value unless the fit ran.
int AlgGetFiberCenterXY(const unsigned char* image8, int width, int height, int expectedRadius,
                        int& x, int& y, int& r);

// Capacity of the point arrays that FillPoints appends to.
constexpr int kFillPointsCapacity = 6400;

// Collects cladding edge points from a binary picture (255 = fiber): along rows and then
// columns every `step` pixels outward from (cx, cy) while the fiber continues, the first
// non-fiber pixel on each ray beyond 50 pixels from the center (the 50 keeps the core out).
// Points are appended to xs, ys (each kFillPointsCapacity long) and counted in n, which the
// caller sets to 0; once the arrays are full, further points are dropped. A center outside the
// picture adds nothing.
void FillPoints(const unsigned char* binary, int width, int height, int cx, int cy, int step,
                int* xs, int* ys, int& n);
