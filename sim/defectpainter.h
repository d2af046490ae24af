#pragma once

#include <cstdint>

#include "canvas.h"
#include "endfacescene.h"

namespace sim {

// Dust, pits and scratches lighten or darken what lies under them by their contrast, in
// proportion to the share of each pixel they cover.

// index numbers the spot within its scene; with the seed it picks the irregular outline.
void paintSpot(const Spot& spot, uint32_t seed, int index, Canvas& canvas);

void paintScratch(const Scratch& scratch, Canvas& canvas);

}  // namespace sim
