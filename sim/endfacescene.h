#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "instrumentoptics.h"

// A synthetic fiber end face as the instrument's camera sees it, for tests, benchmarks, the
// simulated camera and demos. A scene is pure data; the renderer turns it into 10-bit frames.
// Positions are frame pixels of the 1600 x 1200 sensor (the middle of pixel (x, y) is at (x, y)),
// sizes are micrometres on the end face, contrasts are 8-bit gray levels (one 8-bit level is
// four 10-bit levels).
namespace sim {

// The blur the renderer accepts at most; it bounds how far a pixel's neighbours reach.
constexpr double kMaxBlurSigmaPx = 20.0;

// Mean 8-bit levels the renderer uses when a scene leaves its levels at 0, measured on real
// end faces at nominal exposure (ferrule 138..197, cladding 75..92; cores are either dim,
// 0..5 above the cladding, or bright, 160..166). The default core is a dim one, as a
// single-mode core under the instrument's light shows; scenes set coreLevel for a bright one.
constexpr double kDefaultFerruleLevel = 190.0;
constexpr double kDefaultCladdingLevel = 85.0;
constexpr double kDefaultCoreLevel = 90.0;

// A particle or pit. Dark spots absorb (dust, oil), bright ones scatter (chips, glints).
// The outline is slightly irregular, but its area is exactly that of the nominal disc.
struct Spot {
    double x = 0.0;  // center, frame pixels
    double y = 0.0;
    double diameterUm = 5.0;
    // 8-bit levels between the spot's middle and what lies under it, before the optical blur.
    // The nominal 1 px blur leaves a 3 um spot about 98 % of it, a 2 um spot about 85 % and
    // a 1 um spot under 40 %.
    double contrast = 30.0;
    bool bright = false;
};

// A straight scratch between two endpoints, with rounded ends.
struct Scratch {
    double x1 = 0.0;  // endpoints, frame pixels
    double y1 = 0.0;
    double x2 = 0.0;
    double y2 = 0.0;
    double widthUm = 2.0;
    double contrast = 20.0;  // 8-bit levels, before the optical blur
    bool bright = false;
};

struct EndFaceScene {
    bool hasFiber = true;    // false: an empty ferrule, the ceramic face alone
    double centerX = 800.0;  // fiber center, frame pixels
    double centerY = 600.0;
    double claddingDiameterUm = 125.0;
    double coreDiameterUm = 9.0;  // 9 (single mode), 50 or 62.5 (multimode); 0 for none

    // Mean 8-bit gray levels at nominal exposure, taken from real pictures.
    double ferruleLevel = 0.0;   // 0 means the renderer's own default
    double claddingLevel = 0.0;  // 0 means the renderer's own default
    double coreLevel = 0.0;      // 0 means the renderer's own default

    // The cladding's rim as real end faces show it: the rounded-off glass just inside the edge
    // sends light away from the lens (a dark ring), the ferrule's lip just outside catches it
    // (a bright halo). 8-bit levels at the rings' middles before the blur; 0 for a plain edge.
    double edgeDarkRing = 45.0;
    double edgeBrightHalo = 25.0;

    double blurSigmaPx = 1.0;  // optical blur, gaussian sigma in pixels (0 = perfectly sharp)
    double noiseSigma = 1.0;   // sensor noise, 8-bit levels (standard deviation)
    double exposure = 1.0;     // multiplies every brightness; 1 is nominal
    double vignetting = 0.05;  // share of the brightness lost at the frame's corners
    uint32_t seed = 1;         // texture and noise; the same scene and seed give the same frame

    std::vector<Spot> spots;
    std::vector<Scratch> scratches;
};

// A spot placed by its distance from the fiber center (micrometres) and its direction
// (degrees, counter-clockwise from the +x axis, with y growing downward on screen).
Spot spotAtRadius(const EndFaceScene& scene, double radiusUm, double angleDeg, double diameterUm,
                  double contrast, bool bright = false);

// True when every number of the scene is finite and within its range: sizes positive (the
// core may be 0), levels, contrasts, noise and exposure not negative, blur at most
// kMaxBlurSigmaPx, vignetting between 0 and 1. The renderer draws nothing else.
bool isValidScene(const EndFaceScene& scene);

// Micrometres on the end face as frame pixels.
double micronsToPixels(double microns);

// The scene's mean 8-bit levels with the renderer's defaults in place of the zeros.
struct SurfaceLevels {
    double ferrule;
    double cladding;
    double core;
};
SurfaceLevels surfaceLevels(const EndFaceScene& scene);

}  // namespace sim
