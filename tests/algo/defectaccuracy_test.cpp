// Defect detection on rendered 960 x 960 measurement regions with known spots, under the
// built-in single-fiber tasks.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

#include "defectrings.h"
#include "endfacerenderer.h"
#include "factorytasks.h"
#include "finddefect.h"
#include "sectionmap.h"

namespace {

constexpr int kRegion = 960;
constexpr float kScale = kUmPerPixel;

struct Region {
    sim::EndFaceScene scene;
    int left = 0, top = 0, centerX = 0, centerY = 0;
    std::vector<unsigned char> gray = std::vector<unsigned char>(kRegion * kRegion);
};

struct Detected {
    int count;
    std::vector<defect_info_struct> defects;
};

Detected detect(const Region& region, TaskInfoSetting task) {
    std::vector<unsigned char> map(kRegion * kRegion), map2(kRegion * kRegion),
        zones(kRegion * kRegion);
    std::vector<short> labels(kRegion * kRegion, -1);
    Detected detected{0, std::vector<defect_info_struct>(500)};
    initSectionMapByTaskInfoSF(task, zones.data(), kRegion, kRegion, region.centerX, region.centerY,
                               kScale);
    const std::vector<int> bands =
        task.opticalType == 0 ? std::vector<int>{110, 135} : std::vector<int>{48, 60, 110, 135};
    detected.count =
        AlgGetFiberDefect(region.gray.data(), nullptr, map.data(), map2.data(), zones.data(), task,
                          kRegion, kRegion, region.centerX, region.centerY, kScale, bands.data(),
                          int(bands.size() / 2), detected.defects.data(), labels.data(), 500);
    detected.defects.resize(std::max(detected.count, 0));
    return detected;
}

void render(Region& region) {
    region.left = int(std::lround(region.scene.centerX)) - kRegion / 2;
    region.top = int(std::lround(region.scene.centerY)) - kRegion / 2;
    region.centerX = kRegion / 2;
    region.centerY = kRegion / 2;
    sim::renderGray(region.scene, region.left, region.top, kRegion, kRegion, region.gray.data());
}

// The radii (um) between which a spot lies wholly inside the first ring of zone z, clear of
// the excluded bands (radii 24 - 30 um around a multimode core, 55 - 67.5 um at the cladding
// edge) and clear of the center, where a round spot would pass for the fiber's own edge ring.
std::pair<double, double> spotRadiusRange(const TaskInfoSetting& task, int z, double spotUm) {
    double inner = task.sections[z].diameterMin / 2.0, outer = task.sections[z].diameterMax / 2.0;
    std::vector<std::pair<double, double>> bands = {{55.0, 67.5}};
    if (task.opticalType != 0) {
        bands.insert(bands.begin(), {24.0, 30.0});
    }
    for (const auto& band : bands) {
        if (inner >= band.first && inner < band.second) {
            inner = band.second;
        }
        if (inner < band.first && outer > band.first) {
            outer = band.first;
        }
    }
    return {inner + spotUm / 2 + 3.0, outer - spotUm / 2 - 3.0};
}

// The size class the grading should give a spot: its box as the contrast stencil sees it,
// the rendered diameter plus the stencil's reach (one pixel before, two after). Returns -1
// when the size lies within 20 % of a class boundary.
int expectedClass(const TaskZoneSetting& zone, double diameterUm) {
    const double side = (diameterUm / kScale + 2.0) * kScale;
    const double size = std::sqrt(0.8 * 2.0 * side * side);
    auto near = [&](double limit) { return std::abs(size - limit) < 0.2 * std::max(limit, 1.0); };
    if (near(zone.dLimit1) || near(zone.dLimit2)) {
        return -1;
    }
    if (size < zone.dLimit1) {
        return 0;
    }
    return zone.dLimit1 == zone.dLimit2 || size > zone.dLimit2 ? 2 : 1;
}

bool overlaps(const defect_info_struct& d, const sim::Spot& spot, const Region& region) {
    const double r = spot.diameterUm / 2 / kScale;
    const double x = spot.x - region.left, y = spot.y - region.top;
    return d.left <= x + r && d.right >= x - r && d.top <= y + r && d.bottom >= y - r;
}

std::vector<TaskInfoSetting> singleFiberTasks() {
    std::vector<TaskInfoSetting> tasks;
    for (const TaskInfoSetting& task : factoryTasks()) {
        if (task.contactorType == 0) {
            tasks.push_back(task);
        }
    }
    return tasks;
}

}  // namespace

TEST(DefectAccuracy, CleanRegionsGiveNoDefectAndTheFiberEdgeIsNeverOne) {
    std::mt19937 random(5);
    int regions = 0;
    for (const TaskInfoSetting& task : singleFiberTasks()) {
        for (double blur : {0.7, 1.5}) {
            Region region;
            region.scene.centerX = 700 + random() % 200 + 0.3;
            region.scene.centerY = 500 + random() % 200 + 0.6;
            region.scene.coreDiameterUm = task.opticalType == 0 ? 9.0 : 50.0;
            region.scene.blurSigmaPx = blur;
            region.scene.noiseSigma = 1.5;
            region.scene.seed = random();
            render(region);
            const Detected found = detect(region, task);
            EXPECT_EQ(found.count, 0) << taskText(task.taskName).toStdString() << " blur " << blur;
            ++regions;
        }
    }
    std::printf("clean regions: %d, all without defect\n", regions);
}

// A spot counts as clearly above its zone's threshold when its contrast exceeds the threshold
// by 5 levels and by half: the contrast stencil sees as little as 70 % of a spot's contrast on
// the diagonal stretches of its outline, so in the outer zone, whose threshold is 32, a spot
// with 5 or 10 levels to spare leaves a broken outline whose arcs are too small to count.
bool clearlyAboveThreshold(double contrast, double threshold) {
    return contrast >= threshold + 5.0 && contrast >= 1.5 * threshold;
}

TEST(DefectAccuracy, SpotsAboveTheirZonesThresholdAreFoundAndClassified) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const std::vector<TaskInfoSetting> tasks = singleFiberTasks();
    int spots = 0, found = 0, fragmented = 0, faint = 0, faintFound = 0;
    int classChecked = 0, classRight = 0;
    for (int r = 0; r < 64; ++r) {
        const TaskInfoSetting& task = tasks[r % tasks.size()];
        Region region;
        region.scene.centerX = 650 + 300 * unit(random);
        region.scene.centerY = 450 + 300 * unit(random);
        region.scene.coreDiameterUm = task.opticalType == 0 ? 9.0 : 50.0;
        region.scene.blurSigmaPx = 0.5 + 0.4 * unit(random);  // a focused picture
        region.scene.noiseSigma = 0.5 + 1.5 * unit(random);
        region.scene.seed = random();
        // One spot per zone where it fits, at spread-out angles.
        std::vector<int> spotZones;
        for (int z = 0; z < task.sectionNum; ++z) {
            const double diameter = 3.0 + 12.0 * unit(random) * unit(random);
            const auto range = spotRadiusRange(task, z, diameter);
            if (range.second < range.first) {
                continue;
            }
            const double contrast = zoneDefectThreshold(task, z) + 5.0 + 40.0 * unit(random);
            region.scene.spots.push_back(sim::spotAtRadius(
                region.scene, range.first + (range.second - range.first) * unit(random),
                120.0 * z + 90.0 * unit(random), diameter, contrast, random() % 3 == 0));
            spotZones.push_back(z);
        }
        render(region);
        TaskInfoSetting graded = task;
        const Detected detected = detect(region, graded);
        ASSERT_GE(detected.count, 0);
        for (size_t i = 0; i < region.scene.spots.size(); ++i) {
            const sim::Spot& spot = region.scene.spots[i];
            const int zone = spotZones[i];
            std::vector<const defect_info_struct*> hits;
            for (const defect_info_struct& d : detected.defects) {
                if (overlaps(d, spot, region)) {
                    hits.push_back(&d);
                }
            }
            if (!clearlyAboveThreshold(spot.contrast, zoneDefectThreshold(task, zone))) {
                ++faint;
                faintFound += !hits.empty();
                continue;
            }
            ++spots;
            if (hits.empty()) {
                ADD_FAILURE() << "missed a " << spot.diameterUm << " um spot of contrast "
                              << spot.contrast << " in zone " << zone << " of region " << r;
                continue;
            }
            ++found;
            fragmented += hits.size() > 1;
            EXPECT_EQ(hits[0]->zone, zone);
            const int expected = expectedClass(task.sections[zone], spot.diameterUm);
            if (expected >= 0 && hits.size() == 1) {
                ++classChecked;
                classRight += hits[0]->sizeClass == expected;
                EXPECT_EQ(hits[0]->sizeClass, expected)
                    << spot.diameterUm << " um spot in zone " << zone << ", box "
                    << hits[0]->right - hits[0]->left << " x " << hits[0]->bottom - hits[0]->top;
            }
        }
        for (const defect_info_struct& d : detected.defects) {
            const bool onASpot =
                std::any_of(region.scene.spots.begin(), region.scene.spots.end(),
                            [&](const sim::Spot& spot) { return overlaps(d, spot, region); });
            EXPECT_TRUE(onASpot) << "a defect where no spot was rendered, region " << r;
        }
    }
    std::printf(
        "spots clearly above threshold: %d, found %d (%d broken into pieces); "
        "size class checked %d, right %d; fainter spots found: %d of %d\n",
        spots, found, fragmented, classChecked, classRight, faintFound, faint);
}
