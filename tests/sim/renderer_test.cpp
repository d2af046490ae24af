// The renderer's contract: a window is exactly the same part of the whole frame, in 10 and in
// 8 bits, the same scene gives the same frame, and scenes or windows it cannot draw are
// refused.

#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <limits>

#include "rendertesting.h"

namespace {

sim::EndFaceScene busyScene() {
    sim::EndFaceScene scene;
    scene.centerX = 1540.3;  // the fiber reaches past the right edge
    scene.centerY = 611.7;
    scene.blurSigmaPx = 2.3;
    scene.noiseSigma = 2.0;
    scene.seed = 77;
    scene.spots.push_back({1450.2, 540.9, 6.0, 60.0, false});
    scene.spots.push_back({3.5, 2.5, 12.0, 40.0, true});
    scene.scratches.push_back({-40.0, 1150.0, 300.0, 1230.0, 2.0, 25.0, false});
    return scene;
}

}  // namespace

// Every window, on the sensor or reaching past it, is exactly the same part of a window over
// the whole frame and beyond; its 8-bit picture is the 10-bit one shifted by two bits.
TEST(RendererWindows, AWindowIsExactlyTheSamePartOfTheWholeScene) {
    const sim::EndFaceScene scene = busyScene();
    const RenderedWindow wide(scene, -100, -80, 1900, 1430);
    ASSERT_EQ(wide.status, 1);
    const struct {
        int left, top, width, height;
    } windows[] = {{1400, 500, 200, 230}, {0, 0, 1, 1},       {7, 1100, 333, 100},
                   {1599, 3, 1, 1197},    {0, 0, 1600, 1200}, {-100, -80, 150, 90},
                   {1500, 1150, 300, 200}};
    for (const auto& w : windows) {
        SCOPED_TRACE(testing::Message() << "window at " << w.left << "," << w.top);
        const RenderedWindow window(scene, w.left, w.top, w.width, w.height);
        std::vector<uint8_t> gray(size_t(w.width) * w.height);
        ASSERT_EQ(window.status, 1);
        ASSERT_EQ(sim::renderGray(scene, w.left, w.top, w.width, w.height, gray.data()), 1);
        for (int y = w.top; y < w.top + w.height; ++y) {
            for (int x = w.left; x < w.left + w.width; ++x) {
                ASSERT_EQ(window.at(x, y), wide.at(x, y)) << x << "," << y;
                ASSERT_EQ(gray[size_t(y - w.top) * w.width + (x - w.left)],
                          window.raw[size_t(y - w.top) * w.width + (x - w.left)] >> 2)
                    << x << "," << y;
            }
        }
    }
    EXPECT_GT(wide.meanInRing(-60.0, -50.0, 0.0, 20.0), 100.0);  // ferrule, not black
    sim::EndFaceScene other = scene;
    other.seed += 1;  // other texture and noise
    EXPECT_NE(RenderedWindow(other).raw, RenderedWindow(scene).raw);
}

TEST(RendererArguments, BadWindowsAndScenesAreRefused) {
    const sim::EndFaceScene scene;
    uint16_t raw[4];
    uint8_t gray[4];
    EXPECT_EQ(sim::renderRaw(scene, 0, 0, 2, 2, nullptr), -1);
    EXPECT_EQ(sim::renderGray(scene, 0, 0, 2, 2, nullptr), -1);
    EXPECT_EQ(sim::renderRaw(scene, 0, 0, 0, 2, raw), -1);
    EXPECT_EQ(sim::renderRaw(scene, 0, 0, 2, -1, raw), -1);
    EXPECT_EQ(sim::renderGray(scene, 0, 0, -2, 2, gray), -1);
    EXPECT_EQ(sim::renderRaw(scene, std::numeric_limits<int>::max(), 0, 2, 2, raw), -1);

    void (*const spoilers[])(sim::EndFaceScene&) = {
        [](sim::EndFaceScene& s) { s.blurSigmaPx = -0.1; },
        [](sim::EndFaceScene& s) { s.blurSigmaPx = sim::kMaxBlurSigmaPx + 1; },
        [](sim::EndFaceScene& s) { s.centerX = NAN; },
        [](sim::EndFaceScene& s) { s.claddingDiameterUm = 0.0; },
        [](sim::EndFaceScene& s) { s.exposure = -1.0; },
        [](sim::EndFaceScene& s) { s.noiseSigma = INFINITY; },
        [](sim::EndFaceScene& s) { s.vignetting = 1.5; },
        [](sim::EndFaceScene& s) {
            s.spots.push_back({0, 0, -3.0, 10, false});
        },
        [](sim::EndFaceScene& s) {
            s.scratches.push_back({0, 0, 5, 5, 1.0, -2.0, false});
        },
    };
    for (size_t i = 0; i < std::size(spoilers); ++i) {
        sim::EndFaceScene bad;
        spoilers[i](bad);
        EXPECT_FALSE(sim::isValidScene(bad)) << "scene " << i;
        EXPECT_EQ(sim::renderRaw(bad, 0, 0, 2, 2, raw), -1) << "scene " << i;
        EXPECT_EQ(sim::renderGray(bad, 0, 0, 2, 2, gray), -1) << "scene " << i;
    }
    EXPECT_TRUE(sim::isValidScene(sim::EndFaceScene()));
}
