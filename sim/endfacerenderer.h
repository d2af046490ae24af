#pragma once

#include <cstdint>
#include <string>

#include "endfacescene.h"

namespace sim {

// Renders the rectangle (left, top, width, height) of the scene's 10-bit frame into out
// (width x height little-endian 16-bit words, stride width, values 0..1023). Any rectangle
// is allowed, also one reaching past the sensor: the scene goes on there. A rectangle of a
// frame is exactly the same rectangle cut from the whole frame. Returns 1, or -1 when out is
// null, width or height is not positive or above 65536, left or top lies more than 2^24 px
// away, or the scene is not valid (isValidScene).
int renderRaw(const EndFaceScene& scene, int left, int top, int width, int height, uint16_t* out);

// The light falling on the sensor over the same rectangle, before it is read out: the blurred
// scene times the illumination, in 8-bit levels at nominal exposure, without the exposure
// factor and without noise (width x height floats, stride width). The twin reads frames out of
// it with its own exposure and noise. Returns 1, or -1 as renderRaw.
int renderLight(const EndFaceScene& scene, int left, int top, int width, int height, float* out);

// The same rectangle as 8-bit gray, as the instrument converts it (each 10-bit value >> 2).
int renderGray(const EndFaceScene& scene, int left, int top, int width, int height, uint8_t* out);

// The scene's ground truth as one JSON object: fiber center and radii in pixels and
// micrometres, every spot and scratch with its pixel geometry, and the rendering parameters.
// originX/originY shift every pixel position, so that the truth of a cut-out region is in the
// region's own coordinates (pass the region's left and top).
std::string groundTruthJson(const EndFaceScene& scene, int originX = 0, int originY = 0);

}  // namespace sim
