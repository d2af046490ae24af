// The renderer's contract: deterministic frames, windows identical to the same part of the
// whole frame, exposure, 8-bit conversion and refused arguments.

#include <gtest/gtest.h>

#include <cmath>
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

TEST(RendererDeterminism, TheSameSceneGivesTheSameFrameAndAnotherSeedAnotherOne) {
    const RenderedWindow first(busyScene());
    ASSERT_EQ(first.status, 1);
    EXPECT_EQ(first.raw, RenderedWindow(busyScene()).raw);
    sim::EndFaceScene other = busyScene();
    other.seed += 1;  // other texture and noise
    EXPECT_NE(first.raw, RenderedWindow(other).raw);
}

// Every window, on the sensor or reaching past it, is exactly the same part of a window over
// the whole frame and beyond.
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
        const RenderedWindow window(scene, w.left, w.top, w.width, w.height);
        ASSERT_EQ(window.status, 1);
        for (int y = w.top; y < w.top + w.height; ++y) {
            for (int x = w.left; x < w.left + w.width; ++x) {
                ASSERT_EQ(window.at(x, y), wide.at(x, y))
                    << "window at " << w.left << "," << w.top << " pixel " << x << "," << y;
            }
        }
    }
    EXPECT_GT(wide.meanInRing(-60.0, -50.0, 0.0, 20.0), 100.0);  // ferrule, not black
}

TEST(RendererOutput, GrayIsTheRawFrameShiftedByTwoBits) {
    const sim::EndFaceScene scene = busyScene();
    const RenderedWindow raw(scene, 1300, 400, 300, 200);
    std::vector<uint8_t> gray(300 * 200);
    ASSERT_EQ(sim::renderGray(scene, 1300, 400, 300, 200, gray.data()), 1);
    for (size_t i = 0; i < gray.size(); ++i) {
        ASSERT_EQ(gray[i], raw.raw[i] >> 2) << i;
    }
}

TEST(RendererOutput, ExposureScalesBrightnessAndClipsAtFullScale) {
    sim::EndFaceScene scene = quietScene();
    const double nominal = RenderedWindow(scene, 100, 100, 50, 50).meanInRing(125, 125, 0, 30);
    scene.exposure = 0.5;
    const double half = RenderedWindow(scene, 100, 100, 50, 50).meanInRing(125, 125, 0, 30);
    EXPECT_NEAR(half, nominal / 2, 0.5);

    scene.exposure = 3.0;
    EXPECT_EQ(RenderedWindow(scene, 100, 100, 50, 50).raw, std::vector<uint16_t>(2500, 1023));
    scene.exposure = 0.0;
    EXPECT_EQ(RenderedWindow(scene, 100, 100, 50, 50).raw, std::vector<uint16_t>(2500, 0));
}

TEST(RendererOutput, VignettingDarkensTheCornersOnly) {
    sim::EndFaceScene scene = quietScene();
    scene.centerX = -1000.0;  // no fiber in view
    const double flatCorner = RenderedWindow(scene, 0, 0, 40, 40).meanInRing(0, 0, 0, 20);
    scene.vignetting = 0.2;
    const double corner = RenderedWindow(scene, 0, 0, 40, 40).meanInRing(0, 0, 0, 20);
    const double middle = RenderedWindow(scene, 780, 580, 40, 40).meanInRing(800, 600, 0, 10);
    scene.vignetting = 0.0;
    const double flatMiddle = RenderedWindow(scene, 780, 580, 40, 40).meanInRing(800, 600, 0, 10);
    EXPECT_NEAR(corner / flatCorner, 0.8, 0.01);
    EXPECT_NEAR(middle, flatMiddle, 0.3);
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

    const auto refused = [&](void (*spoil)(sim::EndFaceScene&)) {
        sim::EndFaceScene bad;
        spoil(bad);
        return !sim::isValidScene(bad) && sim::renderRaw(bad, 0, 0, 2, 2, raw) == -1 &&
               sim::renderGray(bad, 0, 0, 2, 2, gray) == -1;
    };
    EXPECT_TRUE(refused([](sim::EndFaceScene& s) { s.blurSigmaPx = -0.1; }));
    EXPECT_TRUE(refused([](sim::EndFaceScene& s) { s.blurSigmaPx = sim::kMaxBlurSigmaPx + 1; }));
    EXPECT_TRUE(refused([](sim::EndFaceScene& s) { s.centerX = NAN; }));
    EXPECT_TRUE(refused([](sim::EndFaceScene& s) { s.claddingDiameterUm = 0.0; }));
    EXPECT_TRUE(refused([](sim::EndFaceScene& s) { s.exposure = -1.0; }));
    EXPECT_TRUE(refused([](sim::EndFaceScene& s) { s.noiseSigma = INFINITY; }));
    EXPECT_TRUE(refused([](sim::EndFaceScene& s) { s.vignetting = 1.5; }));
    EXPECT_TRUE(refused([](sim::EndFaceScene& s) { s.spots.push_back({0, 0, -3.0, 10, false}); }));
    EXPECT_TRUE(refused([](sim::EndFaceScene& s) {
        s.scratches.push_back({0, 0, 5, 5, 1.0, -2.0, false});
    }));
    EXPECT_TRUE(sim::isValidScene(sim::EndFaceScene()));
}
