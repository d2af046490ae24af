#pragma once

#include "canvas.h"

namespace sim {

// How far, in pixels, the blur of the given sigma reaches; a sharp canvas must extend this far
// beyond the blurred one on every side.
int blurReach(double sigma);

// Blurs the part of sharp that lies under blurred (same frame coordinates) with a gaussian of
// the given sigma, cut at blurReach(sigma) and normalised. Every output pixel is summed in the
// same order from the same neighbours, so it does not depend on where the canvases start.
void gaussianBlur(const Canvas& sharp, double sigma, Canvas& blurred);

}  // namespace sim
