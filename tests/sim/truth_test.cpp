// The ground truth is what is drawn: the cladding disc, the spots and the scratches have the
// scene's geometry and contrast to a fraction of a pixel.

#include <gtest/gtest.h>

#include <cmath>

#include "rendertesting.h"

namespace {

// The cladding as its darkness: each pixel's share of the way from the bare ferrule (the same
// scene rendered without the fiber) down to the cladding's level, summed for the area and
// weighted by position for the center.
struct DiscEstimate {
    double x = 0.0, y = 0.0, radius = 0.0;

    DiscEstimate(const RenderedWindow& w, const RenderedWindow& bare, double cladding) {
        double area = 0.0;
        for (int py = w.top; py < w.top + w.height; ++py) {
            for (int px = w.left; px < w.left + w.width; ++px) {
                const double darkness =
                    (bare.at(px, py) - w.at(px, py)) / (bare.at(px, py) - cladding);
                area += darkness;
                x += darkness * px;
                y += darkness * py;
            }
        }
        x /= area;
        y /= area;
        radius = std::sqrt(area / M_PI);
    }
};

// What the scene's defects change: the frame with them minus the frame without, in 8-bit
// levels, with the sum and centroid of that change.
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

}  // namespace

TEST(RenderedTruth, TheCladdingDiscIsCenteredOnTheSceneToAFewHundredthsOfAPixel) {
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
        const DiscEstimate disc(w, ferrule, sim::kDefaultCladdingLevel);
        EXPECT_NEAR(disc.x, c[0], 0.05);
        EXPECT_NEAR(disc.y, c[1], 0.05);
        EXPECT_NEAR(disc.radius, sim::micronsToPixels(scene.claddingDiameterUm) / 2, 0.5);
    }
}

TEST(RenderedTruth, BlurDoesNotMoveTheEdge) {
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

// Spots of every size darken or lighten the nominal disc's area about its center, whatever
// their irregular outline; a spot larger than the blur reaches its contrast in the middle.
TEST(RenderedTruth, SpotsHaveTheirAreaCenterAndContrast) {
    const struct {
        double diameterUm;
        bool bright;
        double blur;
    } spots[] = {{2.0, false, 0.0},
                 {3.0, true, 1.0},
                 {5.0, false, 0.0},
                 {12.0, true, 0.0},
                 {40.0, false, 0.0}};
    for (const auto& s : spots) {
        SCOPED_TRACE(testing::Message() << s.diameterUm << " um");
        const double x = 600.37 + s.diameterUm / 10, y = 420.81 - s.diameterUm / 20;
        const double contrast = s.bright ? 50.0 : -50.0;
        sim::EndFaceScene scene = quietScene();
        scene.blurSigmaPx = s.blur;
        scene.seed = 11 + int(s.diameterUm);
        scene.spots.push_back({x, y, s.diameterUm, 50.0, s.bright});
        const DefectImprint spot(scene, 540, 360, 140);
        const double radius = sim::micronsToPixels(s.diameterUm) / 2;
        EXPECT_NEAR(spot.area(contrast), M_PI * radius * radius,
                    0.02 * M_PI * radius * radius + 0.3);
        EXPECT_NEAR(spot.centroidX, x, 0.03 + 0.02 * radius);
        EXPECT_NEAR(spot.centroidY, y, 0.03 + 0.02 * radius);
        if (s.diameterUm >= 3.0) {
            EXPECT_NEAR(spot.at(int(std::lround(x)), int(std::lround(y))), contrast, 2.5);
        }
    }
}

TEST(RenderedTruth, ScratchesHaveTheirContrastAlongTheirLengthAndTheirArea) {
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
