#include "endfacescene.h"

#include <cmath>
#include <initializer_list>

namespace sim {

namespace {

bool allFinite(std::initializer_list<double> values) {
    for (double v : values) {
        if (!std::isfinite(v)) {
            return false;
        }
    }
    return true;
}

bool isValidSpot(const Spot& spot) {
    return allFinite({spot.x, spot.y, spot.diameterUm, spot.contrast}) && spot.diameterUm > 0.0 &&
           spot.contrast >= 0.0;
}

bool isValidScratch(const Scratch& s) {
    return allFinite({s.x1, s.y1, s.x2, s.y2, s.widthUm, s.contrast}) && s.widthUm > 0.0 &&
           s.contrast >= 0.0;
}

bool hasValidFace(const EndFaceScene& s) {
    return allFinite({s.centerX, s.centerY, s.claddingDiameterUm, s.coreDiameterUm, s.ferruleLevel,
                      s.claddingLevel, s.coreLevel, s.edgeDarkRing, s.edgeBrightHalo}) &&
           s.claddingDiameterUm > 0.0 && s.coreDiameterUm >= 0.0 && s.ferruleLevel >= 0.0 &&
           s.claddingLevel >= 0.0 && s.coreLevel >= 0.0 && s.edgeDarkRing >= 0.0 &&
           s.edgeBrightHalo >= 0.0;
}

bool hasValidCamera(const EndFaceScene& s) {
    return allFinite({s.blurSigmaPx, s.noiseSigma, s.exposure, s.vignetting}) &&
           s.blurSigmaPx >= 0.0 && s.blurSigmaPx <= kMaxBlurSigmaPx && s.noiseSigma >= 0.0 &&
           s.exposure >= 0.0 && s.vignetting >= 0.0 && s.vignetting <= 1.0;
}

double orDefault(double level, double fallback) {
    return level > 0.0 ? level : fallback;
}

}  // namespace

double micronsToPixels(double microns) {
    return microns / kUmPerPixel;
}

Spot spotAtRadius(const EndFaceScene& scene, double radiusUm, double angleDeg, double diameterUm,
                  double contrast, bool bright) {
    const double angle = angleDeg * M_PI / 180.0;
    const double distance = micronsToPixels(radiusUm);
    Spot spot;
    spot.x = scene.centerX + distance * std::cos(angle);
    spot.y = scene.centerY - distance * std::sin(angle);  // y grows downward
    spot.diameterUm = diameterUm;
    spot.contrast = contrast;
    spot.bright = bright;
    return spot;
}

bool isValidScene(const EndFaceScene& scene) {
    if (!hasValidFace(scene) || !hasValidCamera(scene)) {
        return false;
    }
    for (const Spot& spot : scene.spots) {
        if (!isValidSpot(spot)) {
            return false;
        }
    }
    for (const Scratch& scratch : scene.scratches) {
        if (!isValidScratch(scratch)) {
            return false;
        }
    }
    return true;
}

SurfaceLevels surfaceLevels(const EndFaceScene& scene) {
    return {orDefault(scene.ferruleLevel, kDefaultFerruleLevel),
            orDefault(scene.claddingLevel, kDefaultCladdingLevel),
            orDefault(scene.coreLevel, kDefaultCoreLevel)};
}

}  // namespace sim
