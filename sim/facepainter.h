#pragma once

#include "canvas.h"
#include "endfacescene.h"

namespace sim {

// Paints the sharp end face without defects: the textured ferrule, the darker cladding disc
// with its rim (dark ring inside, bright halo outside) and the core, edges anti-aliased by
// area so that the disc's centroid is the scene's fiber center to a small fraction of a pixel.
void paintFace(const EndFaceScene& scene, Canvas& canvas);

}  // namespace sim
