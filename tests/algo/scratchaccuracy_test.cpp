// Scratch detection on rendered 960 x 960 measurement regions with known scratches, under the
// first built-in task and the multimode task.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "endfacerenderer.h"
#include "factorytasks.h"
#include "renderedscratches.h"

namespace {

// A scratch crossing the searched zones (radius up to 55 um) at a random distance from the
// center and angle, long enough to cross the inspection circle.
sim::Scratch randomScratch(const sim::EndFaceScene& scene, std::mt19937& random) {
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const double offsetUm = 50.0 * unit(random);
    const double angle = M_PI * unit(random);
    const double widthUm = 2.0 + 3.0 * unit(random);
    const double contrast = 15.0 + 25.0 * unit(random);
    return crossingScratch(scene, offsetUm, angle, widthUm, contrast, random() % 4 == 0);
}

}  // namespace

TEST(ScratchAccuracy, RenderedScratchesAreFoundAndTheirWidthClassed) {
    std::mt19937 random(3);
    const QList<TaskInfoSetting> tasks = {factoryTasks().value(0), factoryTasks().value(3)};
    int rendered = 0, found = 0, widthChecked = 0, widthRight = 0;
    for (int r = 0; r < 80; ++r) {
        const TaskInfoSetting& task = tasks[r % 2];
        sim::EndFaceScene scene = randomFace(random, task);
        scene.scratches.push_back(randomScratch(scene, random));
        const FoundScratches result = findRenderedScratches(scene, task);
        ASSERT_GE(result.count, 0);
        const sim::Scratch& truth = scene.scratches[0];
        ++rendered;
        int hit = -1;
        for (int i = 0; i < result.count; ++i) {
            if (matchesScratch(result.scratches[i], truth)) {
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
            const bool narrow = 0.8 * kUmPerPixel * result.scratches[hit].width < limit;
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
        sim::EndFaceScene scene = randomFace(random, task);
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        for (int k = 0; k < 8; ++k) {
            scene.spots.push_back(sim::spotAtRadius(scene, 10 + 100 * unit(random),
                                                    360 * unit(random), 3 + 12 * unit(random),
                                                    20 + 40 * unit(random), random() % 3 == 0));
        }
        ++regions;
        const FoundScratches result = findRenderedScratches(scene, task);
        falseRegions += result.count > 0;
    }
    std::printf("regions with spots only: %d, with a scratch reported: %d\n", regions,
                falseRegions);
    EXPECT_LE(falseRegions, regions * 2 / 100);
}
