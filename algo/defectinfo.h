#pragma once

#include <cstdint>

// One defect (spot) found in an inspected image: its bounding box in pixels of that image
// (bounds inclusive), the zone it lies in and its size class. Sizes are taken from the box
// without adding 1: (bottom - top) and (right - left).
struct defect_info_struct {
    int16_t top;
    int16_t bottom;
    int16_t left;
    int16_t right;
    int16_t zone;       // smallest zone index under the defect; 255 when it lies in no zone
    int16_t sizeClass;  // 0 small, 1 middle, 2 large: set by the grading
};

constexpr int16_t kNoZone = 255;
