// The capture thread's fiber search on whole frames: the coarse circle search, the refinement
// around it and the window clamping.

#include <gtest/gtest.h>

#include <vector>

#include "capturethread.h"
#include "endfacerenderer.h"
#include "singlefibersearch.h"

namespace {

struct Search {
    int found;
    unsigned x, y, rawX, rawY;
};

class SearchSingleFiber : public ::testing::Test {
protected:
    Search search(const std::vector<uint16_t>& frame, unsigned windowWidth = 960,
                  unsigned windowHeight = 960, bool refine = true) {
        Search s{0, 1, 2, 3, 4};
        s.found = capture_.searchSingleFiber(frame.data(), kSensorWidth, kSensorHeight, s.x, s.y,
                                             s.rawX, s.rawY, windowWidth, windowHeight, refine);
        return s;
    }

    static std::vector<uint16_t> render(const sim::EndFaceScene& scene) {
        std::vector<uint16_t> frame(size_t(kSensorWidth) * kSensorHeight);
        sim::renderRaw(scene, 0, 0, kSensorWidth, kSensorHeight, frame.data());
        return frame;
    }

    static sim::EndFaceScene fiberAt(double x, double y) {
        sim::EndFaceScene scene;
        scene.centerX = x;
        scene.centerY = y;
        return scene;
    }

    CaptureThread capture_;
};

}  // namespace

TEST_F(SearchSingleFiber, AFrameWithoutCircleGivesTheFrameCenterUnclamped) {
    const std::vector<uint16_t> flat(size_t(kSensorWidth) * kSensorHeight, 600);
    const Search s = search(flat, 1800, 1400, true);
    EXPECT_EQ(s.found, 0);
    EXPECT_EQ(s.x, 800u);
    EXPECT_EQ(s.y, 600u);
    EXPECT_EQ(s.rawX, 800u);
    EXPECT_EQ(s.rawY, 600u);
}

TEST_F(SearchSingleFiber, TheFiberIsFoundAndTheWindowKeptInsideTheFrame) {
    const struct {
        double x, y;
        unsigned window;
        double tolerance;      // 1.5 px where the refinement runs
        int windowX, windowY;  // -1: the window is centered on the fiber
    } cases[] = {{811.3, 587.6, 960, 1.5, -1, -1},
                 {130.0, 1090.0, 640, 6.0, 320, 1200 - 320 - 1},
                 {1500.0, 300.0, 960, 6.0, 1600 - 480 - 1, 480}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "fiber at " << c.x << "," << c.y);
        const Search s = search(render(fiberAt(c.x, c.y)), c.window, c.window);
        ASSERT_EQ(s.found, 1);
        EXPECT_NEAR(s.rawX, c.x, c.tolerance);
        EXPECT_NEAR(s.rawY, c.y, c.tolerance);
        EXPECT_EQ(s.x, c.windowX < 0 ? s.rawX : unsigned(c.windowX));
        EXPECT_EQ(s.y, c.windowY < 0 ? s.rawY : unsigned(c.windowY));
    }
}

// Where the refinement's crop would leave the frame, or no blob has the cladding's size, the
// coarse center stands.
TEST_F(SearchSingleFiber, TheCoarseCenterStandsWhereTheRefinementCannotRun) {
    sim::EndFaceScene otherSize = fiberAt(800.0, 600.0);
    otherSize.claddingDiameterUm = 100.0;  // 195 px
    for (const sim::EndFaceScene& scene :
         {fiberAt(150.0, 600.0), fiberAt(1460.0, 600.0), fiberAt(800.0, 1060.0), otherSize}) {
        SCOPED_TRACE(testing::Message() << "fiber at " << scene.centerX << "," << scene.centerY
                                        << ", " << scene.claddingDiameterUm << " um");
        const std::vector<uint16_t> frame = render(scene);
        const Search refined = search(frame);
        const Search coarse = search(frame, 960, 960, false);
        ASSERT_EQ(refined.found, 1);
        EXPECT_EQ(refined.rawX, coarse.rawX);
        EXPECT_EQ(refined.rawY, coarse.rawY);
    }
}

TEST_F(SearchSingleFiber, ASmallCircleIsFoundAtHalfScaleOnly) {
    // A dark disc of 15 px radius is lost in the quarter-size picture but not at half size;
    // the half-size center is divided by 0.5.
    sim::EndFaceScene scene = fiberAt(700.0, 500.0);
    scene.claddingDiameterUm = 30.0 * kUmPerPixel;
    scene.coreDiameterUm = 0.0;
    const std::vector<uint16_t> frame = render(scene);
    unsigned x = 0, y = 0;
    std::vector<unsigned char> gray(frame.size());
    sim::renderGray(scene, 0, 0, kSensorWidth, kSensorHeight, gray.data());
    ASSERT_EQ(cvSearchSingleFiber(gray.data(), 1600, 1200, 0.25, 0, 0, x, y), 0);
    const Search s = search(frame, 960, 960, false);
    ASSERT_EQ(s.found, 1);
    EXPECT_NEAR(s.rawX, 700.0, 4.0);
    EXPECT_NEAR(s.rawY, 500.0, 4.0);
}
