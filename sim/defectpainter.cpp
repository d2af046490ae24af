#include "defectpainter.h"

#include <algorithm>
#include <cmath>

#include "paintbounds.h"
#include "pixelcoverage.h"
#include "pixelhash.h"

namespace sim {

namespace {

// A spot's outline is a circle bent by a few low harmonics (2, 3 and 5 lobes) of random
// phase and small random depth, like dust grains and pits. No first harmonic, which would
// shift the spot, and the base radius is shrunk so that the area stays that of the nominal
// disc.
constexpr int kLobes[] = {2, 3, 5};
constexpr double kMaxLobeDepth[] = {0.08, 0.05, 0.03};  // share of the radius
constexpr int kHarmonics = 3;

class SpotOutline {
public:
    SpotOutline(const Spot& spot, uint32_t seed, int index) : x_(spot.x), y_(spot.y) {
        const uint32_t key = lineKey(seed, HashStream::SpotOutline, index);
        double squaredDepths = 0.0;
        for (int k = 0; k < kHarmonics; ++k) {
            depth_[k] = kMaxLobeDepth[k] * unitFromHash(pixelHash(key, 2 * k));
            phase_[k] = 2.0 * M_PI * unitFromHash(pixelHash(key, 2 * k + 1));
            squaredDepths += depth_[k] * depth_[k];
        }
        baseRadius_ = micronsToPixels(spot.diameterUm) / 2 / std::sqrt(1.0 + squaredDepths / 2);
    }

    double maxRadius() const {
        return baseRadius_ * (1.0 + kMaxLobeDepth[0] + kMaxLobeDepth[1] + kMaxLobeDepth[2]);
    }

    double radiusAt(double dx, double dy) const {
        const double angle = std::atan2(dy, dx);
        double scale = 1.0;
        for (int k = 0; k < kHarmonics; ++k) {
            scale += depth_[k] * std::cos(kLobes[k] * angle + phase_[k]);
        }
        return baseRadius_ * scale;
    }

    // Radial distance to the outline; never more than the true distance by over 1/0.7, as
    // the lobes are shallow.
    double outlineDistance(double px, double py) const {
        const double dx = px - x_, dy = py - y_;
        return 0.7 * (std::hypot(dx, dy) - radiusAt(dx, dy));
    }

    bool operator()(double px, double py) const {
        const double dx = px - x_, dy = py - y_;
        const double radius = radiusAt(dx, dy);
        return dx * dx + dy * dy < radius * radius;
    }

private:
    double x_, y_;
    double baseRadius_;
    double depth_[kHarmonics];
    double phase_[kHarmonics];
};

// A capsule: every point within half the width of the segment.
class ScratchBody {
public:
    explicit ScratchBody(const Scratch& s)
        : x1_(s.x1),
          y1_(s.y1),
          dx_(s.x2 - s.x1),
          dy_(s.y2 - s.y1),
          halfWidth_(micronsToPixels(s.widthUm) / 2) {}

    double outlineDistance(double px, double py) const {
        return distanceToAxis(px, py) - halfWidth_;
    }

    bool operator()(double px, double py) const { return distanceToAxis(px, py) < halfWidth_; }

private:
    double distanceToAxis(double px, double py) const {
        const double lengthSquared = dx_ * dx_ + dy_ * dy_;
        double t = 0.0;
        if (lengthSquared > 0.0) {
            t = std::clamp(((px - x1_) * dx_ + (py - y1_) * dy_) / lengthSquared, 0.0, 1.0);
        }
        return std::hypot(px - x1_ - t * dx_, py - y1_ - t * dy_);
    }

    double x1_, y1_, dx_, dy_;
    double halfWidth_;
};

template <class Shape>
void addCoverage(const Shape& shape, const PaintBounds& bounds, double contrast, Canvas& canvas) {
    for (int j = bounds.firstRow; j <= bounds.lastRow; ++j) {
        const double y = canvas.top + j;
        float* row = canvas.row(j);
        for (int i = bounds.firstColumn; i <= bounds.lastColumn; ++i) {
            const double x = canvas.left + i;
            row[i] += float(contrast * coverage(shape.outlineDistance(x, y), x, y, shape));
        }
    }
}

double signedContrast(double contrast, bool bright) {
    return bright ? contrast : -contrast;
}

}  // namespace

void paintSpot(const Spot& spot, uint32_t seed, int index, Canvas& canvas) {
    const SpotOutline outline(spot, seed, index);
    const double reach = outline.maxRadius();
    const PaintBounds bounds(canvas, spot.x - reach, spot.y - reach, spot.x + reach,
                             spot.y + reach);
    addCoverage(outline, bounds, signedContrast(spot.contrast, spot.bright), canvas);
}

void paintScratch(const Scratch& scratch, Canvas& canvas) {
    const ScratchBody body(scratch);
    const double reach = micronsToPixels(scratch.widthUm) / 2;
    const PaintBounds bounds(
        canvas, std::min(scratch.x1, scratch.x2) - reach, std::min(scratch.y1, scratch.y2) - reach,
        std::max(scratch.x1, scratch.x2) + reach, std::max(scratch.y1, scratch.y2) + reach);
    addCoverage(body, bounds, signedContrast(scratch.contrast, scratch.bright), canvas);
}

}  // namespace sim
