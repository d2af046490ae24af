#pragma once

#include <vector>

#include "scratchrecord.h"

// The line segment detector sees a scratch wider than a few pixels as its two edges: two
// parallel lines whose gradients point opposite ways, too far apart for the merging to join.
// This pairs them back into one scratch: two parallel lines that overlap along most of their
// length, no more than the widest scratch apart, with a band between them darker than the
// picture on both outer sides (or brighter than both), become one scratch along the middle of
// the band, as wide as the lines lie apart, spanning both lines' lengths.
//
// `image` is the 8-bit gray picture the lines were found in (width x height, rows packed).
// Returns the number of lines left, or -1 (lines unchanged) when memory ran out.
int pairScratchEdges(const unsigned char* image, int width, int height,
                     std::vector<ScratchRecord>& lines);
