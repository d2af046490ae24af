#pragma once

#include <vector>

#include "scratchrecord.h"

// Turns the detector's segments into scratches: candidates (long enough, not too wide, not
// pieces of a circle about the fiber center) are merged in two rounds into whole lines, and
// lines spanning too little along both axes are dropped. Every threshold follows the scratch
// sensitivity index sens (1 .. 20). Appends the scratches to out and returns how many; a sens
// outside 1 .. 20 gives none.
int MergeLumaspecSegment(const ScratchRecord* segments, int n, int cx, int cy,
                         std::vector<ScratchRecord>& out, int sens);

// The thresholds of one sensitivity index.
struct MergeRound {
    double angleTol;  // radians
    double p;         // pixels
    double gap;       // pixels
};
struct MergeSettings {
    int minLength;  // pixels, of a first-round candidate
    int maxWidth;   // pixels, of a first-round candidate
    MergeRound first;
    MergeRound second;
    double minSpan;  // pixels, along x or y, of a kept scratch
};
MergeSettings mergeSettingsFor(int sens);
