#pragma once

// The circle Hough transform by the gradient method, over an 8-bit gray picture (one byte a
// pixel, rows packed), with one accumulator cell per pixel.
//
// 1. Canny edges (cannyedges.h) with the upper threshold cannyUpper and half of it as the
//    lower one.
// 2. Every edge pixel votes for the cells along its gradient, on both sides, from minRadius to
//    maxRadius pixels away: the center of a circle through it lies on that line.
// 3. A center is a cell with more than accThreshold votes that is a maximum among its four
//    neighbours.
// 4. Its radius is the one at which the most edge pixels lie (within a pixel): the circle's
//    support. The center and radius are then fitted, by least squares, to those edge pixels,
//    which puts the center between cells.
// 5. Circles are ordered by support, the best-supported first; a circle whose center lies
//    closer than minDist to a better-supported one is dropped.
//
// Counting whole edge pixels (not edge pixels per unit of radius) is what lets a large faint
// circle win over a small bright structure at its middle: a lit fiber core, or a scratch
// crossing the center, supports a tiny circle there with a few pixels, the cladding around it
// supports the right one with hundreds.

struct HoughCircle {
    // Center in the picture's continuous coordinates, where pixel (i, j) covers
    // [i, i + 1) x [j, j + 1), so that its middle is (i + 0.5, j + 0.5).
    float x, y;
    float radius;  // pixels
    int support;   // edge pixels on the circle
};

// minRadius and maxRadius in pixels; maxRadius 0 sets no upper limit. Writes at most
// `capacity` circles, best-supported first, and returns their number; -1 when memory ran out.
int houghCirclesGradient(const unsigned char* image, int width, int height, double minDist,
                         double cannyUpper, double accThreshold, int minRadius, int maxRadius,
                         HoughCircle* circles, int capacity);
