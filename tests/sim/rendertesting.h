#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include "endfacerenderer.h"

// A rendered window kept with its place on the frame, read in 8-bit levels (10-bit / 4).
struct RenderedWindow {
    int left, top, width, height;
    std::vector<uint16_t> raw;

    RenderedWindow(const sim::EndFaceScene& scene, int left, int top, int width, int height)
        : left(left), top(top), width(width), height(height), raw(size_t(width) * height) {
        status = sim::renderRaw(scene, left, top, width, height, raw.data());
    }
    explicit RenderedWindow(const sim::EndFaceScene& scene)
        : RenderedWindow(scene, 0, 0, kSensorWidth, kSensorHeight) {}

    // Level at frame pixel (x, y).
    double at(int x, int y) const { return raw[size_t(y - top) * width + (x - left)] / 4.0; }

    // Mean level of the frame pixels whose distance to (cx, cy) lies in [inner, outer).
    double meanInRing(double cx, double cy, double inner, double outer) const {
        double sum = 0.0;
        int count = 0;
        for (int y = top; y < top + height; ++y) {
            for (int x = left; x < left + width; ++x) {
                const double r = std::hypot(x - cx, y - cy);
                if (r >= inner && r < outer) {
                    sum += at(x, y);
                    ++count;
                }
            }
        }
        return count > 0 ? sum / count : NAN;
    }

    int status = 0;
};

// A scene without sensor noise or vignetting, for measuring geometry and levels.
inline sim::EndFaceScene quietScene() {
    sim::EndFaceScene scene;
    scene.noiseSigma = 0.0;
    scene.vignetting = 0.0;
    return scene;
}
