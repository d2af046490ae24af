#pragma once

#include <cstdint>

#include "canvas.h"
#include "endfacescene.h"

namespace sim {

// What the sensor makes of the light on it: the illumination falling off toward the frame's
// corners, the exposure, the read noise, and the 10-bit quantisation (rounded, clipped to
// 0..1023). Writes light.height rows of light.width words, stride words apart.
void readOut(const EndFaceScene& scene, const Canvas& light, uint16_t* out, int stride);

}  // namespace sim
