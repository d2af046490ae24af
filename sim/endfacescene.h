#pragma once

#include <cstdint>
#include <string>
#include <vector>

// A synthetic fiber end face as the instrument's camera sees it, for tests, benchmarks, the
// simulated camera and demos. A scene is pure data; the renderer turns it into 10-bit frames.
// Positions are frame pixels of the 1600 x 1200 sensor, sizes are micrometres on the end face,
// contrasts are 8-bit gray levels (one 8-bit level is four 10-bit levels).
namespace sim {

constexpr int kFrameWidth = 1600;
constexpr int kFrameHeight = 1200;
constexpr double kMicronsPerPixel = 0.5122950673103333;

// A particle or pit. Dark spots absorb (dust, oil), bright ones scatter (chips, glints).
struct Spot {
    double x = 0.0;  // center, frame pixels
    double y = 0.0;
    double diameterUm = 5.0;
    double contrast = 30.0;  // 8-bit levels between the spot's middle and what lies under it
    bool bright = false;
};

// A straight scratch between two endpoints, with rounded ends.
struct Scratch {
    double x1 = 0.0;  // endpoints, frame pixels
    double y1 = 0.0;
    double x2 = 0.0;
    double y2 = 0.0;
    double widthUm = 2.0;
    double contrast = 20.0;  // 8-bit levels
    bool bright = false;
};

struct EndFaceScene {
    double centerX = 800.0;  // fiber center, frame pixels
    double centerY = 600.0;
    double claddingDiameterUm = 125.0;
    double coreDiameterUm = 9.0;  // 9 (single mode), 50 or 62.5 (multimode)

    // Mean 8-bit gray levels at nominal exposure, taken from real pictures.
    double ferruleLevel = 0.0;   // 0 means the renderer's own default
    double claddingLevel = 0.0;  // 0 means the renderer's own default
    double coreLevel = 0.0;      // 0 means the renderer's own default

    double blurSigmaPx = 1.0;  // optical blur, gaussian sigma in pixels (0 = perfectly sharp)
    double noiseSigma = 1.0;   // sensor noise, 8-bit levels (standard deviation)
    double exposure = 1.0;     // multiplies every brightness; 1 is nominal
    uint32_t seed = 1;         // texture and noise; the same scene and seed give the same frame

    std::vector<Spot> spots;
    std::vector<Scratch> scratches;
};

// A spot placed by its distance from the fiber center (micrometres) and its direction
// (degrees, counter-clockwise from the +x axis, with y growing downward on screen).
Spot spotAtRadius(const EndFaceScene& scene, double radiusUm, double angleDeg,
                  double diameterUm, double contrast, bool bright = false);

}  // namespace sim
