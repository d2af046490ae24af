#include "facepainter.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "pixelcoverage.h"
#include "surfacetexture.h"

namespace sim {

namespace {

// Grain before the blur, 8-bit levels: the ceramic is grainy, the glass nearly smooth. After
// the nominal 1 px blur and with the nominal sensor noise the ferrule's fine detail spreads by
// about 1.25 levels; the real pictures show 0.8 to 1.3.
constexpr float kFerruleGrain = 2.0f;
constexpr float kGlassGrain = 0.8f;

// Where the rim's rings sit (signed distance from the cladding's edge, px, outward positive)
// and how wide they are (gaussian sigma, px), from the real pictures' radial profiles.
constexpr double kDarkRingOffset = -1.6;
constexpr double kDarkRingWidth = 0.8;
constexpr double kHaloOffset = 1.8;
constexpr double kHaloWidth = 1.0;
constexpr double kRimReach = 6.0;  // px beyond which the rings are negligible

struct Disc {
    double x, y, radius;
    bool operator()(double px, double py) const {
        return (px - x) * (px - x) + (py - y) * (py - y) < radius * radius;
    }
};

double gaussianBump(double offset, double width) {
    return std::exp(-0.5 * (offset / width) * (offset / width));
}

class FacePixel {
public:
    explicit FacePixel(const EndFaceScene& scene)
        : levels_(surfaceLevels(scene)),
          hasFiber_(scene.hasFiber),
          darkRing_(scene.edgeDarkRing),
          brightHalo_(scene.edgeBrightHalo),
          cladding_{scene.centerX, scene.centerY, micronsToPixels(scene.claddingDiameterUm) / 2},
          core_{scene.centerX, scene.centerY, micronsToPixels(scene.coreDiameterUm) / 2} {}

    double ferrule(float shading, float grain) const {
        return levels_.ferrule * shading + kFerruleGrain * grain;
    }

    bool isFerruleOnly(double x, double y) const {
        if (!hasFiber_) {
            return true;
        }
        const double reach = cladding_.radius + kRimReach;
        return (x - cladding_.x) * (x - cladding_.x) + (y - cladding_.y) * (y - cladding_.y) >=
               reach * reach;
    }

    // The brightness where the fiber (or its rim) is in the pixel at (x, y).
    double withFiber(double x, double y, double ferrule, float grain) const {
        const double r = std::hypot(x - cladding_.x, y - cladding_.y);
        const double edge = r - cladding_.radius;
        const double inCladding = coverage(edge, x, y, cladding_);
        const double inCore = std::min(inCladding, coverage(r - core_.radius, x, y, core_));
        return ferrule * (1.0 - inCladding) + levels_.cladding * (inCladding - inCore) +
               levels_.core * inCore + kGlassGrain * grain * inCladding + rim(edge);
    }

private:
    double rim(double edge) const {
        return brightHalo_ * gaussianBump(edge - kHaloOffset, kHaloWidth) -
               darkRing_ * gaussianBump(edge - kDarkRingOffset, kDarkRingWidth);
    }

    SurfaceLevels levels_;
    bool hasFiber_;
    double darkRing_;
    double brightHalo_;
    Disc cladding_;
    Disc core_;
};

}  // namespace

void paintFace(const EndFaceScene& scene, Canvas& canvas) {
    const SurfaceTexture texture(scene.seed, canvas.left, canvas.width);
    const FacePixel face(scene);
    std::vector<float> shading(canvas.width);
    std::vector<float> grain(canvas.width);
    for (int j = 0; j < canvas.height; ++j) {
        const int y = canvas.top + j;
        texture.fillShadingRow(y, shading.data());
        texture.fillGrainRow(y, grain.data());
        float* out = canvas.row(j);
        for (int i = 0; i < canvas.width; ++i) {
            const int x = canvas.left + i;
            const double ferrule = face.ferrule(shading[i], grain[i]);
            out[i] =
                float(face.isFerruleOnly(x, y) ? ferrule : face.withFiber(x, y, ferrule, grain[i]));
        }
    }
}

}  // namespace sim
