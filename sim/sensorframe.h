#pragma once

#include <cstdint>

#include "lightfield.h"
#include "noisebank.h"

namespace sim {

// What differs from one frame to the next when the twin's sensor reads out the light.
struct FrameReadout {
    double gain = 4.0;    // 10-bit levels per 8-bit level of light (exposure, flicker)
    double shakeX = 0.0;  // the picture's shift, pixels, less than one either way
    double shakeY = 0.0;
    uint32_t noiseStart = 0;  // where in the noise bank the frame's noise begins
};

// Reads one kSensorWidth x kSensorHeight frame of 10-bit samples out of the light: shifted by
// the shake (bilinear), scaled by the gain, with shot noise (growing with the square root of
// the signal) and read noise from the bank, rounded and clipped to 0..1023.
void readOutFrame(const LightField& light, const NoiseBank& noise, const FrameReadout& readout,
                  uint16_t* frame);

}  // namespace sim
