#pragma once

#include <cstddef>
#include <vector>

namespace sim {

// Light on the sensor, in 8-bit gray levels, over the frame rectangle (left, top, width,
// height). The renderer paints the sharp scene into one and blurs it into another.
struct Canvas {
    Canvas(int left, int top, int width, int height)
        : left(left), top(top), width(width), height(height), pixels(size_t(width) * height) {}

    float* row(int index) { return pixels.data() + size_t(index) * width; }
    const float* row(int index) const { return pixels.data() + size_t(index) * width; }

    int left;
    int top;
    int width;
    int height;
    std::vector<float> pixels;
};

}  // namespace sim
