// The capture thread's fiber search on rendered frames whose truth is known: the coarse circle
// search, the refinement around it and the window kept inside the frame.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "capturethread.h"
#include "endfacerenderer.h"
#include "singlefibersearch.h"

namespace {

struct Search {
    int found;
    unsigned x, y, rawX, rawY;
};

Search search(const std::vector<uint16_t>& frame, unsigned window = 960, bool refine = true) {
    CaptureThread capture;
    Search s{0, 1, 2, 3, 4};
    s.found = capture.searchSingleFiber(frame.data(), kSensorWidth, kSensorHeight, s.x, s.y, s.rawX,
                                        s.rawY, window, window, refine);
    return s;
}

std::vector<uint16_t> render(const sim::EndFaceScene& scene) {
    std::vector<uint16_t> frame(size_t(kSensorWidth) * kSensorHeight);
    sim::renderRaw(scene, 0, 0, kSensorWidth, kSensorHeight, frame.data());
    return frame;
}

sim::EndFaceScene fiberAt(double x, double y) {
    sim::EndFaceScene scene;
    scene.centerX = x;
    scene.centerY = y;
    return scene;
}

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

TEST(FiberSearch, RenderedFibersAreFoundAndRefinedToWithinOneAndAHalfPixels) {
    std::mt19937 random(20261122);
    std::vector<double> refinedErrors;
    for (int i = 0; i < 60; ++i) {
        const sim::EndFaceScene scene = randomScene(random);
        SCOPED_TRACE(testing::Message()
                     << "frame " << i << " at " << scene.centerX << "," << scene.centerY << " blur "
                     << scene.blurSigmaPx << " core " << scene.coreDiameterUm << " um");
        const Search s = search(render(scene));
        ASSERT_EQ(s.found, 1);
        const double dx = s.rawX - scene.centerX, dy = s.rawY - scene.centerY;
        if (refinementRuns(scene.centerX, scene.centerY)) {
            EXPECT_LE(std::max(std::abs(dx), std::abs(dy)), 1.5) << dx << "," << dy;
            refinedErrors.push_back(std::hypot(dx, dy));
        } else {
            EXPECT_LE(std::hypot(dx, dy), 8.0) << "the coarse center";
        }
    }
    ASSERT_GE(refinedErrors.size(), 40u);
    std::sort(refinedErrors.begin(), refinedErrors.end());
    std::printf("refined: %zu frames, distance median %.2f, max %.2f px\n", refinedErrors.size(),
                refinedErrors[refinedErrors.size() / 2], refinedErrors.back());
}

TEST(FiberSearch, TheWindowIsKeptInsideTheFrameAndWithoutFiberCenteredUnclamped) {
    const struct {
        double x, y;
        unsigned window;
        int windowX, windowY;
    } cases[] = {{130.0, 1090.0, 640, 320, 1200 - 320 - 1},
                 {1500.0, 300.0, 960, 1600 - 480 - 1, 480}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "fiber at " << c.x << "," << c.y);
        const Search s = search(render(fiberAt(c.x, c.y)), c.window);
        ASSERT_EQ(s.found, 1);
        EXPECT_NEAR(s.rawX, c.x, 6.0);
        EXPECT_NEAR(s.rawY, c.y, 6.0);
        EXPECT_EQ((std::vector<int>{int(s.x), int(s.y)}), (std::vector<int>{c.windowX, c.windowY}));
    }
    const Search none =
        search(std::vector<uint16_t>(size_t(kSensorWidth) * kSensorHeight, 600), 1800);
    EXPECT_EQ(none.found, 0);
    EXPECT_EQ(std::vector<unsigned>({none.x, none.y, none.rawX, none.rawY}),
              std::vector<unsigned>({800, 600, 800, 600}));
}

// Where the refinement's crop would leave the frame, or no blob has the cladding's size, the
// coarse center stands.
TEST(FiberSearch, TheCoarseCenterStandsWhereTheRefinementCannotRun) {
    sim::EndFaceScene otherSize = fiberAt(800.0, 600.0);
    otherSize.claddingDiameterUm = 100.0;  // 195 px
    for (const sim::EndFaceScene& scene :
         {fiberAt(150.0, 600.0), fiberAt(1460.0, 600.0), fiberAt(800.0, 1060.0), otherSize}) {
        SCOPED_TRACE(testing::Message() << "fiber at " << scene.centerX << "," << scene.centerY
                                        << ", " << scene.claddingDiameterUm << " um");
        const std::vector<uint16_t> frame = render(scene);
        const Search refined = search(frame), coarse = search(frame, 960, false);
        ASSERT_EQ(refined.found, 1);
        EXPECT_EQ((std::vector<unsigned>{refined.rawX, refined.rawY}),
                  (std::vector<unsigned>{coarse.rawX, coarse.rawY}));
    }
}

TEST(FiberSearch, ASmallCircleIsFoundAtHalfScaleOnly) {
    // A dark disc of 15 px radius is lost in the quarter-size picture but not at half size;
    // the half-size center is divided by 0.5.
    sim::EndFaceScene scene = fiberAt(700.0, 500.0);
    scene.claddingDiameterUm = 30.0 * kUmPerPixel;
    scene.coreDiameterUm = 0.0;
    std::vector<unsigned char> gray(size_t(kSensorWidth) * kSensorHeight);
    sim::renderGray(scene, 0, 0, kSensorWidth, kSensorHeight, gray.data());
    unsigned x = 0, y = 0;
    ASSERT_EQ(cvSearchSingleFiber(gray.data(), kSensorWidth, kSensorHeight, 0.25, 0, 0, x, y), 0);
    const Search s = search(render(scene), 960, false);
    ASSERT_EQ(s.found, 1);
    EXPECT_NEAR(s.rawX, 700.0, 4.0);
    EXPECT_NEAR(s.rawY, 500.0, 4.0);
}
