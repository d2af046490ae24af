// The rendered end face: levels of ferrule, cladding and core, and a cladding disc whose
// geometry is the scene's to a fraction of a pixel.

#include <gtest/gtest.h>

#include <cmath>

#include "rendertesting.h"

namespace {

struct DiscEstimate {
    double x, y, radius;
};

// The cladding as its darkness: each pixel's share of the way from the bare ferrule (the same
// scene rendered without the fiber) down to the cladding's level, summed for the area and
// weighted by position for the center.
DiscEstimate measureDisc(const RenderedWindow& w, const RenderedWindow& bare, double cladding) {
    double area = 0.0, sumX = 0.0, sumY = 0.0;
    for (int y = w.top; y < w.top + w.height; ++y) {
        for (int x = w.left; x < w.left + w.width; ++x) {
            const double darkness = (bare.at(x, y) - w.at(x, y)) / (bare.at(x, y) - cladding);
            area += darkness;
            sumX += darkness * x;
            sumY += darkness * y;
        }
    }
    return {sumX / area, sumY / area, std::sqrt(area / M_PI)};
}

}  // namespace

TEST(EndFaceLevels, FerruleCladdingAndCoreHaveTheirLevels) {
    const sim::EndFaceScene scene = quietScene();
    const double cx = scene.centerX, cy = scene.centerY;
    const double cladding = sim::micronsToPixels(scene.claddingDiameterUm) / 2;
    const double core = sim::micronsToPixels(scene.coreDiameterUm) / 2;
    const RenderedWindow w(scene, int(cx) - 300, int(cy) - 300, 600, 600);
    EXPECT_NEAR(w.meanInRing(cx, cy, cladding + 10, 290), sim::kDefaultFerruleLevel, 1.5);
    EXPECT_NEAR(w.meanInRing(cx, cy, core + 5, cladding - 6), sim::kDefaultCladdingLevel, 1.0);
    EXPECT_NEAR(w.meanInRing(cx, cy, 0, core - 3), sim::kDefaultCoreLevel, 1.0);
}

TEST(EndFaceLevels, ChosenLevelsReplaceTheDefaults) {
    sim::EndFaceScene scene = quietScene();
    scene.ferruleLevel = 140.0;
    scene.claddingLevel = 60.0;
    scene.coreLevel = 50.0;  // a dim core
    scene.coreDiameterUm = 50.0;
    const RenderedWindow w(scene, 500, 300, 600, 600);
    EXPECT_NEAR(w.meanInRing(800, 600, 140, 290), 140.0, 1.5);
    EXPECT_NEAR(w.meanInRing(800, 600, 55, 110), 60.0, 1.0);
    EXPECT_NEAR(w.meanInRing(800, 600, 0, 40), 50.0, 1.0);
}

TEST(EndFaceLevels, TheCladdingRimHasADarkRingAndABrightHalo) {
    const sim::EndFaceScene scene = quietScene();
    const double edge = sim::micronsToPixels(scene.claddingDiameterUm) / 2;
    sim::EndFaceScene plain = scene;
    plain.edgeDarkRing = 0.0;
    plain.edgeBrightHalo = 0.0;
    const RenderedWindow w(scene, 500, 300, 600, 600), p(plain, 500, 300, 600, 600);
    EXPECT_LT(w.meanInRing(800, 600, edge - 3, edge - 1), sim::kDefaultCladdingLevel - 10);
    EXPECT_GT(w.meanInRing(800, 600, edge + 1, edge + 3), sim::kDefaultFerruleLevel + 5);
    EXPECT_GT(p.meanInRing(800, 600, edge - 3, edge - 1), sim::kDefaultCladdingLevel - 1);
    EXPECT_LT(p.meanInRing(800, 600, edge + 1, edge + 3), sim::kDefaultFerruleLevel + 1);
}

TEST(EndFaceGeometry, TheCladdingDiscIsCenteredOnTheSceneToAFewHundredthsOfAPixel) {
    const double centers[][2] = {
        {800.0, 600.0}, {811.3, 587.6}, {402.71, 833.45}, {1203.5, 299.25}};
    for (const auto& c : centers) {
        sim::EndFaceScene scene = quietScene();
        scene.centerX = c[0];
        scene.centerY = c[1];
        scene.coreLevel = sim::kDefaultCladdingLevel;  // only the cladding is dark
        scene.noiseSigma = 1.0;
        scene.seed = uint32_t(c[0]);
        const RenderedWindow w(scene, int(c[0]) - 160, int(c[1]) - 160, 320, 320);
        sim::EndFaceScene bare = scene;
        bare.centerX = -1e6;  // the same ferrule without the fiber
        const RenderedWindow ferrule(bare, w.left, w.top, w.width, w.height);
        const double radius = sim::micronsToPixels(scene.claddingDiameterUm) / 2;
        const DiscEstimate disc = measureDisc(w, ferrule, sim::kDefaultCladdingLevel);
        EXPECT_NEAR(disc.x, c[0], 0.05);
        EXPECT_NEAR(disc.y, c[1], 0.05);
        EXPECT_NEAR(disc.radius, radius, 0.5);
    }
}

TEST(EndFaceGeometry, BlurDoesNotMoveTheEdge) {
    sim::EndFaceScene scene = quietScene();
    scene.centerX = 777.7;
    scene.edgeDarkRing = 0.0;
    scene.edgeBrightHalo = 0.0;
    const double edge = sim::micronsToPixels(scene.claddingDiameterUm) / 2;
    const double midLevel = (sim::kDefaultFerruleLevel + sim::kDefaultCladdingLevel) / 2;
    for (double blur : {0.0, 1.0, 2.5}) {
        scene.blurSigmaPx = blur;
        const RenderedWindow row(scene, 500, 600, 600, 1);
        // Along the row through the center the level crosses the midpoint at the edge.
        int x = 800;
        while (row.at(x, 600) < midLevel) {
            ++x;
        }
        const double before = row.at(x - 1, 600), after = row.at(x, 600);
        const double crossing = x - 1 + (midLevel - before) / (after - before);
        EXPECT_NEAR(crossing, 777.7 + edge, 0.25) << "blur " << blur;
    }
}
