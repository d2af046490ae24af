#pragma once

#include <algorithm>

#include "instrumentoptics.h"

namespace sim {

// Brightness share reaching the pixel at (x, y): one in the frame's middle, falling with the
// square of the distance to 1 - vignetting at the corners, and on beyond the frame.
class Illumination {
public:
    explicit Illumination(double vignetting)
        : falloff_(vignetting / (kMiddleX * kMiddleX + kMiddleY * kMiddleY)) {}

    double at(int x, int y) const {
        const double dx = x - kMiddleX, dy = y - kMiddleY;
        return std::max(0.0, 1.0 - falloff_ * (dx * dx + dy * dy));
    }

private:
    static constexpr double kMiddleX = (kSensorWidth - 1) / 2.0;
    static constexpr double kMiddleY = (kSensorHeight - 1) / 2.0;
    double falloff_;
};

}  // namespace sim
