// Accuracy of the fiber search on rendered frames with known truth: the fiber anywhere in the
// frame, with varied blur and noise.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "capturethread.h"
#include "endfacerenderer.h"

namespace {

// The refinement needs its 320 x 320 crop inside the frame: the coarse center must be more
// than 160 px from every edge. Frames keep 15 px clear of that limit, so that whether the
// refinement ran does not hinge on the coarse search's few pixels of error.
constexpr double kRefineLimit = 160.0;

bool refinementRuns(double x, double y) {
    return x > kRefineLimit && x < kSensorWidth - kRefineLimit && y > kRefineLimit &&
           y < kSensorHeight - kRefineLimit;
}

// A coordinate inside the refinement's limit, or in the margin with the whole cladding still
// on the sensor (125 to 145 px from an edge).
double randomCoordinate(std::mt19937& random, double size, bool inMargin) {
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    if (inMargin) {
        const double fromEdge = 125.0 + 20.0 * unit(random);
        return random() % 2 ? fromEdge : size - fromEdge;
    }
    return kRefineLimit + 15.0 + unit(random) * (size - 2 * (kRefineLimit + 15.0));
}

sim::EndFaceScene randomScene(std::mt19937& random) {
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const int placement = random() % 8;  // one frame in four lies in a margin
    sim::EndFaceScene scene;
    scene.centerX = randomCoordinate(random, kSensorWidth, placement == 0);
    scene.centerY = randomCoordinate(random, kSensorHeight, placement == 1);
    scene.blurSigmaPx = 0.5 + 2.0 * unit(random);
    scene.noiseSigma = 0.5 + 2.5 * unit(random);
    // Single-mode cores are dim; multimode ones dim or as bright as in real pictures.
    scene.coreDiameterUm = random() % 3 == 0 ? 50.0 : 9.0;
    if (scene.coreDiameterUm > 9.0 && random() % 2 == 0) {
        scene.coreLevel = 160.0;
    }
    scene.seed = random();
    return scene;
}

}  // namespace

TEST(SearchAccuracy, RenderedFibersAreFoundAndRefinedToWithinOneAndAHalfPixels) {
    std::mt19937 random(20261122);
    CaptureThread capture;
    std::vector<uint16_t> frame(size_t(kSensorWidth) * kSensorHeight);
    std::vector<double> refinedErrors, coarseErrors;

    for (int i = 0; i < 60; ++i) {
        const sim::EndFaceScene scene = randomScene(random);
        sim::renderRaw(scene, 0, 0, kSensorWidth, kSensorHeight, frame.data());
        unsigned x, y, rawX, rawY;
        ASSERT_EQ(capture.searchSingleFiber(frame.data(), kSensorWidth, kSensorHeight, x, y, rawX,
                                            rawY, 960, 960, true),
                  1)
            << "frame " << i << " at " << scene.centerX << "," << scene.centerY;
        const double dx = rawX - scene.centerX, dy = rawY - scene.centerY;
        const char* where = refinementRuns(scene.centerX, scene.centerY) ? "refined" : "coarse";
        std::printf(
            "frame %2d %-7s at (%7.2f, %7.2f) blur %.2f noise %.2f core %4.1f um "
            "level %3.0f: error (%+.2f, %+.2f)\n",
            i, where, scene.centerX, scene.centerY, scene.blurSigmaPx, scene.noiseSigma,
            scene.coreDiameterUm, sim::surfaceLevels(scene).core, dx, dy);
        if (refinementRuns(scene.centerX, scene.centerY)) {
            EXPECT_LE(std::abs(dx), 1.5) << "frame " << i;
            EXPECT_LE(std::abs(dy), 1.5) << "frame " << i;
            refinedErrors.push_back(std::hypot(dx, dy));
        } else {
            EXPECT_LE(std::hypot(dx, dy), 8.0) << "frame " << i;
            coarseErrors.push_back(std::hypot(dx, dy));
        }
    }

    for (auto* errors : {&refinedErrors, &coarseErrors}) {
        if (errors->empty()) {
            continue;
        }
        std::sort(errors->begin(), errors->end());
        std::printf("%s: %zu frames, distance median %.2f, 90%% %.2f, max %.2f px\n",
                    errors == &refinedErrors ? "refined" : "coarse", errors->size(),
                    (*errors)[errors->size() / 2], (*errors)[errors->size() * 9 / 10],
                    errors->back());
    }
    EXPECT_GE(refinedErrors.size(), 40u);
}
