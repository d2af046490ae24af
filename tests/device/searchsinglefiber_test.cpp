// The capture thread's fiber search on whole frames: the coarse circle search, the refinement
// around it and the window clamping.

#include <gtest/gtest.h>

#include <vector>

#include "capturethread.h"
#include "endfacerenderer.h"

namespace {

struct Search {
    int found;
    unsigned x, y, rawX, rawY;
};

class SearchSingleFiber : public ::testing::Test {
protected:
    Search search(const sim::EndFaceScene& scene, unsigned window = 960, bool refine = true) {
        return search(render(scene), window, window, refine);
    }

    Search search(const std::vector<uint16_t>& frame, unsigned windowWidth, unsigned windowHeight,
                  bool refine) {
        Search s{0, 1, 2, 3, 4};
        s.found =
            capture_.searchSingleFiber(frame.data(), sim::kFrameWidth, sim::kFrameHeight, s.x, s.y,
                                       s.rawX, s.rawY, windowWidth, windowHeight, refine);
        return s;
    }

    static std::vector<uint16_t> render(const sim::EndFaceScene& scene) {
        std::vector<uint16_t> frame(size_t(sim::kFrameWidth) * sim::kFrameHeight);
        sim::renderRaw(scene, 0, 0, sim::kFrameWidth, sim::kFrameHeight, frame.data());
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
    const std::vector<uint16_t> flat(size_t(sim::kFrameWidth) * sim::kFrameHeight, 600);
    const Search s = search(flat, 1800, 1400, true);
    EXPECT_EQ(s.found, 0);
    EXPECT_EQ(s.x, 800u);
    EXPECT_EQ(s.y, 600u);
    EXPECT_EQ(s.rawX, 800u);
    EXPECT_EQ(s.rawY, 600u);
}

TEST_F(SearchSingleFiber, TheRefinedCenterIsTheFiberCenter) {
    const Search s = search(fiberAt(811.3, 587.6));
    ASSERT_EQ(s.found, 1);
    EXPECT_NEAR(s.rawX, 811.3, 1.5);
    EXPECT_NEAR(s.rawY, 587.6, 1.5);
    EXPECT_EQ(s.x, s.rawX);
    EXPECT_EQ(s.y, s.rawY);
}

TEST_F(SearchSingleFiber, TheWindowIsKeptInsideTheFrame) {
    const Search left = search(fiberAt(130.0, 1090.0), 640);
    ASSERT_EQ(left.found, 1);
    EXPECT_NEAR(left.rawX, 130.0, 6.0);
    EXPECT_NEAR(left.rawY, 1090.0, 6.0);
    EXPECT_EQ(left.x, 320u);
    EXPECT_EQ(left.y, 1200u - 320u - 1u);

    const Search right = search(fiberAt(1500.0, 300.0), 960);
    ASSERT_EQ(right.found, 1);
    EXPECT_EQ(right.x, 1600u - 480u - 1u);
    EXPECT_EQ(right.y, 480u);
    EXPECT_NEAR(right.rawX, 1500.0, 6.0);
}

TEST_F(SearchSingleFiber, NoRefinementWhereTheCropWouldLeaveTheFrame) {
    for (const auto& at : {std::make_pair(150.0, 600.0), std::make_pair(1460.0, 600.0),
                           std::make_pair(800.0, 1060.0)}) {
        const std::vector<uint16_t> frame = render(fiberAt(at.first, at.second));
        const Search refined = search(frame, 960, 960, true);
        const Search coarse = search(frame, 960, 960, false);
        ASSERT_EQ(refined.found, 1);
        EXPECT_EQ(refined.rawX, coarse.rawX) << at.first << "," << at.second;
        EXPECT_EQ(refined.rawY, coarse.rawY) << at.first << "," << at.second;
    }
}

TEST_F(SearchSingleFiber, AFiberOfAnotherSizeKeepsTheCoarseCenter) {
    sim::EndFaceScene scene = fiberAt(800.0, 600.0);
    scene.claddingDiameterUm = 100.0;  // 195 px: no blob has the expected size
    const std::vector<uint16_t> frame = render(scene);
    const Search refined = search(frame, 960, 960, true);
    const Search coarse = search(frame, 960, 960, false);
    ASSERT_EQ(refined.found, 1);
    EXPECT_EQ(refined.rawX, coarse.rawX);
    EXPECT_EQ(refined.rawY, coarse.rawY);
}

TEST_F(SearchSingleFiber, ASmallCircleIsFoundAtHalfScaleOnly) {
    // A dark disc of 15 px radius is lost in the quarter-size picture but not at half size;
    // the half-size center is divided by 0.5.
    sim::EndFaceScene scene = fiberAt(700.0, 500.0);
    scene.claddingDiameterUm = 30.0 * sim::kMicronsPerPixel;
    scene.coreDiameterUm = 0.0;
    const std::vector<uint16_t> frame = render(scene);
    unsigned x = 0, y = 0;
    std::vector<unsigned char> gray(frame.size());
    for (size_t i = 0; i < frame.size(); ++i) {
        gray[i] = static_cast<unsigned char>(frame[i] >> 2);
    }
    ASSERT_EQ(capture_.cvSearchSingleFiber(gray.data(), 1600, 1200, 0.25, 0, 0, x, y), 0);
    const Search s = search(frame, 960, 960, false);
    ASSERT_EQ(s.found, 1);
    EXPECT_NEAR(s.rawX, 700.0, 4.0);
    EXPECT_NEAR(s.rawY, 500.0, 4.0);
}
