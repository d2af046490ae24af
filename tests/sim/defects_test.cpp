// Spots and scratches: where they are, how large, and how much they darken or lighten what
// lies under them.

#include <gtest/gtest.h>

#include <cmath>

#include "rendertesting.h"

namespace {

// What a defect changes: the frame with it minus the frame without it, in 8-bit levels, with
// the sum and centroid of that change.
struct DefectImprint {
    DefectImprint(const sim::EndFaceScene& with, int left, int top, int side)
        : left(left), top(top), side(side) {
        sim::EndFaceScene without = with;
        without.spots.clear();
        without.scratches.clear();
        const RenderedWindow a(with, left, top, side, side), b(without, left, top, side, side);
        for (size_t i = 0; i < a.raw.size(); ++i) {
            const double c = (double(a.raw[i]) - double(b.raw[i])) / 4.0;
            change.push_back(c);
            sum += c;
            centroidX += c * (left + int(i % side));
            centroidY += c * (top + int(i / side));
        }
        centroidX /= sum;
        centroidY /= sum;
    }

    double at(int x, int y) const { return change[size_t(y - top) * side + (x - left)]; }
    // Area in pixels, when every covered pixel changes by contrast.
    double area(double contrast) const { return sum / contrast; }

    int left, top, side;
    std::vector<double> change;
    double sum = 0.0, centroidX = 0.0, centroidY = 0.0;
};

sim::EndFaceScene withSpot(double x, double y, double diameterUm, double contrast, bool bright,
                           double blur = 1.0) {
    sim::EndFaceScene scene = quietScene();
    scene.blurSigmaPx = blur;
    scene.spots.push_back({x, y, diameterUm, contrast, bright});
    return scene;
}

}  // namespace

TEST(Spots, ASmallSpotReachesItsContrastInTheMiddle) {
    for (bool bright : {false, true}) {
        const DefectImprint spot(withSpot(500.4, 400.3, 3.0, 40.0, bright), 480, 380, 40);
        const double middle = spot.at(500, 400);
        EXPECT_NEAR(std::abs(middle), 40.0, 2.0);
        EXPECT_EQ(middle > 0, bright);
    }
}

TEST(Spots, BlurLowersTheContrastOfTinySpots) {
    const DefectImprint sharp(withSpot(500.0, 400.0, 1.0, 40.0, false, 0.0), 480, 380, 40);
    const DefectImprint blurred(withSpot(500.0, 400.0, 1.0, 40.0, false, 1.0), 480, 380, 40);
    EXPECT_LT(sharp.at(500, 400), -35.0);
    EXPECT_GT(blurred.at(500, 400), -0.6 * 40.0);
    EXPECT_NEAR(blurred.area(-40.0), sharp.area(-40.0), 0.05);  // the blur keeps the light
}

TEST(Spots, AreaAndCenterAreTheNominalDiscsDespiteTheIrregularOutline) {
    const double diameters[] = {2.0, 5.0, 12.0, 40.0};
    for (int i = 0; i < 4; ++i) {
        const double x = 600.37 + 3.1 * i, y = 420.81 - 1.7 * i;
        sim::EndFaceScene scene = withSpot(x, y, diameters[i], 50.0, false, 0.0);
        scene.seed = 11 + i;
        const DefectImprint spot(scene, 540, 360, 140);
        const double radius = sim::micronsToPixels(diameters[i]) / 2;
        EXPECT_NEAR(spot.area(-50.0), M_PI * radius * radius, 0.02 * M_PI * radius * radius + 0.3)
            << diameters[i];
        EXPECT_NEAR(spot.centroidX, x, 0.03 + 0.02 * radius) << diameters[i];
        EXPECT_NEAR(spot.centroidY, y, 0.03 + 0.02 * radius) << diameters[i];
    }
}

TEST(Spots, OutlinesDifferFromSpotToSpotButNotFromRenderToRender) {
    sim::EndFaceScene scene = quietScene();
    scene.spots.push_back({300.0, 300.0, 30.0, 50.0, false});
    scene.spots.push_back({400.0, 300.0, 30.0, 50.0, false});
    const RenderedWindow w(scene, 250, 250, 200, 100);
    int differing = 0;
    for (int y = 260; y < 340; ++y) {
        for (int x = 260; x < 340; ++x) {
            differing += std::abs(w.at(x, y) - w.at(x + 100, y)) > 5.0;
        }
    }
    EXPECT_GT(differing, 20);
    EXPECT_EQ(w.raw, RenderedWindow(scene, 250, 250, 200, 100).raw);
}

TEST(Scratches, AScratchHasItsContrastAlongItsLengthAndItsArea) {
    sim::EndFaceScene scene = quietScene();
    scene.blurSigmaPx = 0.0;
    scene.scratches.push_back({420.0, 430.5, 560.0, 480.2, 3.0, 25.0, false});
    const DefectImprint scratch(scene, 400, 400, 180);
    EXPECT_NEAR(scratch.at(490, 455), -25.0, 0.5);  // on the axis: fully covered
    EXPECT_NEAR(scratch.at(490, 470), 0.0, 0.3);    // beside it: untouched
    const double length = std::hypot(140.0, 49.7), width = sim::micronsToPixels(3.0);
    const double capsule = length * width + M_PI * width * width / 4;
    EXPECT_NEAR(scratch.area(-25.0), capsule, 0.01 * capsule);
}

TEST(Scratches, BrightThinScratchesKeepTheirLightAfterTheBlur) {
    sim::EndFaceScene scene = quietScene();
    scene.scratches.push_back({410.0, 500.0, 570.0, 500.0, 0.5, 20.0, true});
    const DefectImprint scratch(scene, 400, 400, 180);
    const double widthPx = sim::micronsToPixels(0.5);
    EXPECT_GT(scratch.at(490, 500), 2.0);
    EXPECT_NEAR(scratch.area(20.0), 160.0 * widthPx, 0.03 * 160.0 * widthPx);
}

TEST(Defects, DefectsOutsideTheWindowChangeNothingInIt) {
    sim::EndFaceScene scene = quietScene();
    scene.spots.push_back({50.0, 50.0, 10.0, 80.0, false});
    scene.scratches.push_back({-1e9, 20.0, -1e9 + 50, 30.0, 2.0, 30.0, false});
    const DefectImprint far(scene, 300, 300, 50);
    EXPECT_EQ(far.area(1.0), 0.0);
}
