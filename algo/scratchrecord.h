#pragma once

// One scratch, or one line segment before merging: the seven values the segment detector
// gives per segment, in its order, so that its output can be read as an array of these.
struct ScratchRecord {
    double x1, y1;        // first endpoint, frame pixels
    double x2, y2;        // second endpoint
    double width;         // pixels
    double direction;     // radians
    double significance;  // -log10(NFA) of the detected segment
};

static_assert(sizeof(ScratchRecord) == 7 * sizeof(double), "a record is the detector's 7-tuple");
