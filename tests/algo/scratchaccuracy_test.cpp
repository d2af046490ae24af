// Scratch detection on rendered 960 x 960 measurement regions with known scratches, under the
// first built-in task and the multimode task.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "endfacerenderer.h"
#include "factorytasks.h"
#include "scratchcheck.h"
#include "scratchgeometry.h"

namespace {

constexpr int kRegion = 960;
constexpr float kScale = kUmPerPixel;
constexpr double kCladdingRange[] = {110.0, 135.0};

struct Found {
    int count;
    std::vector<ScratchRecord> scratches;
    std::vector<short> zones;
    TaskInfoSetting task;
};

Found findScratches(const sim::EndFaceScene& scene, const TaskInfoSetting& task) {
    std::vector<unsigned char> gray(kRegion * kRegion);
    const int left = int(std::lround(scene.centerX)) - kRegion / 2;
    const int top = int(std::lround(scene.centerY)) - kRegion / 2;
    sim::renderGray(scene, left, top, kRegion, kRegion, gray.data());
    Found found{0, std::vector<ScratchRecord>(200), std::vector<short>(200, -1), task};
    FindSectionScratch(gray.data(), kRegion, kRegion, found.scratches.data(), found.zones.data(),
                       200, found.count, found.task, kScale, kRegion / 2, kRegion / 2, 125.0, 125.0,
                       kCladdingRange, 1, nullptr, 0);
    // Back to frame coordinates, as the scene has them.
    for (int i = 0; i < found.count; ++i) {
        ScratchRecord& s = found.scratches[i];
        s.x1 += left, s.x2 += left, s.y1 += top, s.y2 += top;
    }
    found.scratches.resize(std::max(found.count, 0));
    return found;
}

double lineAngle(double dx, double dy) {
    double a = std::atan2(dy, dx);
    return a < 0 ? a + M_PI : a;
}

// A reported scratch matches a rendered one when both its ends lie within 3 px of the rendered
// line and the two directions differ by 2 degrees at most.
bool matches(const ScratchRecord& r, const sim::Scratch& s) {
    const double d1 = Point2LineDistance(r.x1, r.y1, s.x1, s.y1, s.x2, s.y2);
    const double d2 = Point2LineDistance(r.x2, r.y2, s.x1, s.y1, s.x2, s.y2);
    double da = std::abs(lineAngle(r.x2 - r.x1, r.y2 - r.y1) - lineAngle(s.x2 - s.x1, s.y2 - s.y1));
    da = std::min(da, M_PI - da);
    return d1 <= 3.0 && d2 <= 3.0 && da <= 2.0 * M_PI / 180.0;
}

// A scratch crossing the searched zones (radius up to 55 um) at a random distance from the
// center and angle, long enough to cross the inspection circle.
sim::Scratch randomScratch(const sim::EndFaceScene& scene, std::mt19937& random) {
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const double offsetPx = (50.0 * unit(random)) / kScale;
    const double angle = M_PI * unit(random);
    const double nx = -std::sin(angle), ny = std::cos(angle);
    const double half = 90.0 / kScale;
    const double mx = scene.centerX + offsetPx * nx, my = scene.centerY + offsetPx * ny;
    sim::Scratch s;
    s.x1 = mx - half * std::cos(angle);
    s.y1 = my - half * std::sin(angle);
    s.x2 = mx + half * std::cos(angle);
    s.y2 = my + half * std::sin(angle);
    s.widthUm = 2.0 + 3.0 * unit(random);
    s.contrast = 15.0 + 25.0 * unit(random);
    s.bright = random() % 4 == 0;
    return s;
}

sim::EndFaceScene randomScene(std::mt19937& random, const TaskInfoSetting& task) {
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    sim::EndFaceScene scene;
    scene.centerX = 700 + 200 * unit(random);
    scene.centerY = 500 + 200 * unit(random);
    scene.coreDiameterUm = task.opticalType == 0 ? 9.0 : 50.0;
    scene.blurSigmaPx = 0.5 + 0.5 * unit(random);
    scene.noiseSigma = 0.5 + 1.5 * unit(random);
    scene.seed = random();
    return scene;
}

}  // namespace

TEST(ScratchAccuracy, RenderedScratchesAreFoundAndTheirWidthClassed) {
    std::mt19937 random(3);
    const QList<TaskInfoSetting> tasks = {factoryTasks().value(0), factoryTasks().value(3)};
    int rendered = 0, found = 0, widthChecked = 0, widthRight = 0;
    for (int r = 0; r < 80; ++r) {
        const TaskInfoSetting& task = tasks[r % 2];
        sim::EndFaceScene scene = randomScene(random, task);
        scene.scratches.push_back(randomScratch(scene, random));
        const Found result = findScratches(scene, task);
        ASSERT_GE(result.count, 0);
        const sim::Scratch& truth = scene.scratches[0];
        ++rendered;
        int hit = -1;
        for (int i = 0; i < result.count; ++i) {
            if (matches(result.scratches[i], truth)) {
                hit = i;
            }
        }
        if (hit < 0) {
            ADD_FAILURE() << "missed a scratch " << truth.widthUm << " um wide of contrast "
                          << truth.contrast << " in region " << r;

            continue;
        }
        ++found;
        const int zone = result.zones[hit];
        if (zone < 0) {
            continue;
        }
        const double limit = task.sections[zone].sWidthLimit;
        if (std::abs(truth.widthUm - limit) >= 0.3 * std::max(limit, 1.0)) {
            ++widthChecked;
            const bool narrow = 0.8 * kScale * result.scratches[hit].width < limit;
            widthRight += narrow == (truth.widthUm < limit);
        }
    }
    std::printf("scratches: %d rendered, %d found; width class checked %d, right %d\n", rendered,
                found, widthChecked, widthRight);
    EXPECT_GE(found, rendered * 95 / 100);
    EXPECT_GE(widthRight, widthChecked * 95 / 100);
}

TEST(ScratchAccuracy, SpotsAloneAreNoScratch) {
    std::mt19937 random(4);
    const QList<TaskInfoSetting> tasks = {factoryTasks().value(0), factoryTasks().value(3)};
    int regions = 0, falseRegions = 0;
    for (int r = 0; r < 80; ++r) {
        const TaskInfoSetting& task = tasks[r % 2];
        sim::EndFaceScene scene = randomScene(random, task);
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        for (int k = 0; k < 8; ++k) {
            scene.spots.push_back(sim::spotAtRadius(scene, 10 + 100 * unit(random),
                                                    360 * unit(random), 3 + 12 * unit(random),
                                                    20 + 40 * unit(random), random() % 3 == 0));
        }
        ++regions;
        const Found result = findScratches(scene, task);
        falseRegions += result.count > 0;
    }
    std::printf("regions with spots only: %d, with a scratch reported: %d\n", regions,
                falseRegions);
    EXPECT_LE(falseRegions, regions * 2 / 100);
}
