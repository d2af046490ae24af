#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

// A plain 8-bit picture for tests, painted with simple shapes. Shapes have a one pixel wide
// soft edge, as any optics give them: a picture of two pure levels would put the Otsu
// threshold on the darker level itself, and then nothing is darker than the threshold.
struct TestPicture {
    int width, height;
    std::vector<unsigned char> pixels;

    TestPicture(int w, int h, unsigned char level) : width(w), height(h), pixels(w * h, level) {}

    void disc(double cx, double cy, double radius, unsigned char level) {
        ellipse(cx, cy, radius, radius, level);
    }

    // Axis-aligned, with semi-axes rx and ry; the soft edge is about a pixel wide.
    void ellipse(double cx, double cy, double rx, double ry, unsigned char level) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const double normalised = std::hypot((x - cx) / rx, (y - cy) / ry);
                blend(x, y, level, (1.0 - normalised) * std::min(rx, ry) + 0.5);
            }
        }
    }

    // A disc of pure level, without soft edge: a binary picture's object.
    void hardDisc(double cx, double cy, double radius, unsigned char level) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                if (std::hypot(x - cx, y - cy) <= radius) {
                    pixels[y * width + x] = level;
                }
            }
        }
    }

    // Pure level inside, half way to it on the one pixel ring around.
    void rectangle(int left, int top, int w, int h, unsigned char level) {
        for (int y = std::max(top - 1, 0); y < std::min(top + h + 1, height); ++y) {
            for (int x = std::max(left - 1, 0); x < std::min(left + w + 1, width); ++x) {
                const bool inside = x >= left && x < left + w && y >= top && y < top + h;
                blend(x, y, level, inside ? 1.0 : 0.5);
            }
        }
    }

    unsigned char at(int x, int y) const { return pixels[y * width + x]; }
    const unsigned char* data() const { return pixels.data(); }

private:
    void blend(int x, int y, unsigned char level, double coverage) {
        coverage = std::clamp(coverage, 0.0, 1.0);
        unsigned char& pixel = pixels[y * width + x];
        pixel = static_cast<unsigned char>(std::lround(pixel + (level - pixel) * coverage));
    }
};
