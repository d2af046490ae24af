#include "scratchcheck.h"

#include <gtest/gtest.h>

#include <vector>

#include "endfacerenderer.h"
#include "factorytasks.h"
#include "segmentsearch.h"

namespace {

constexpr float kScale = 0.5122950673103333f;

ScratchRecord line(double x1, double y1, double x2, double y2, double width) {
    return {x1, y1, x2, y2, width, 0.0, 10.0};
}

TaskInfoSetting threeZones() {
    TaskInfoSetting task = factoryTasks().value(0);  // A 0-25, B 25-115 (scratches), D 135-250
    task.sections[0].sCheck = 0;
    return task;
}

struct Search {
    std::vector<ScratchRecord> scratches = std::vector<ScratchRecord>(200);
    std::vector<short> zones = std::vector<short>(200, -1);
    int count = -7;
    int result = -7;
};

}  // namespace

TEST(ScratchCheck, TheSensitivityIsTheCheckedZonesMeanPlusTen) {
    EXPECT_EQ(scratchSensitivity(factoryTasks().value(0)), 16);
    TaskInfoSetting mixed = factoryTasks().value(0);
    mixed.sections[0].sSensitivity = 3;
    mixed.sections[1].sSensitivity = 6;
    EXPECT_EQ(scratchSensitivity(mixed), 14) << "(3 + 6) / 2 + 10";
    mixed.sections[2].sCheck = 1;
    EXPECT_EQ(scratchSensitivity(mixed), 15) << "(3 + 6 + 6) / 3 + 10";
    EXPECT_EQ(scratchSensitivity(factoryTasks().value(4)), 0) << "this MT12 task checks none";
    TaskInfoSetting none = factoryTasks().value(0);
    none.sections[0].sCheck = none.sections[1].sCheck = 0;
    EXPECT_EQ(scratchSensitivity(none), 0);
}

TEST(ScratchCheck, TheSearchCoversTheCheckedZonesLessTheCladdingEdge) {
    const double cladding[] = {110.0, 135.0};
    const std::vector<double> annuli =
        scratchSearchAnnuli(factoryTasks().value(0), kScale, 125.0, cladding, 1);
    ASSERT_EQ(annuli.size(), 2u);
    EXPECT_DOUBLE_EQ(annuli[0], 0.0);
    EXPECT_NEAR(annuli[1], 110 / 0.5122950673103333 * 0.5, 1e-4);

    TaskInfoSetting onlyB = factoryTasks().value(0);
    onlyB.sections[0].sCheck = 0;
    const std::vector<double> ring = scratchSearchAnnuli(onlyB, kScale, 125.0, cladding, 1);
    ASSERT_EQ(ring.size(), 2u);
    EXPECT_NEAR(ring[0], 25 / 0.5122950673103333 * 0.5, 1e-4);
}

TEST(ScratchCheck, AScratchGoesToTheFirstZoneItsLinePassesInside) {
    TaskInfoSetting task = threeZones();
    const std::vector<ScratchRecord> scratches = {
        line(400, 480, 560, 480, 3),  // through the center: zone 0, though it checks none
        line(400, 520, 560, 520, 3),  // 40 px = 20.5 um off: 2d = 41 um, zone B
        line(300, 750, 700, 750, 3),  // 270 px: beyond every zone
    };
    std::vector<short> zones(3, -1);
    gradeScratches(task, scratches.data(), 3, 480, 480, kScale, zones.data());
    EXPECT_EQ(zones[0], 0);
    EXPECT_EQ(zones[1], 1);
    EXPECT_EQ(zones[2], -1);
    EXPECT_EQ(task.zoneResults[0].sNoBiggerNum + task.zoneResults[0].sBiggerNum, 1);
    EXPECT_EQ(task.zoneResults[2].sNoBiggerNum + task.zoneResults[2].sBiggerNum, 0);
}

TEST(ScratchCheck, TheWidthClassAllowsAQuarterOverTheLimit) {
    TaskInfoSetting task = threeZones();
    task.sections[1].sWidthLimit = 3;
    task.sections[1].sNoBiggerLimit = -1;
    task.sections[1].sBiggerLimit = 0;
    const std::vector<ScratchRecord> scratches = {line(400, 520, 560, 520, 7),
                                                  line(400, 530, 560, 530, 8)};
    std::vector<short> zones(2, -1);
    gradeScratches(task, scratches.data(), 2, 480, 480, 0.5f, zones.data());
    EXPECT_EQ(task.zoneResults[1].sNoBiggerNum, 1) << "3.5 um: 2.8 < 3";
    EXPECT_EQ(task.zoneResults[1].sBiggerNum, 1) << "4 um: 3.2";
    EXPECT_EQ(task.zoneResults[1].sNoBiggerResult, 1) << "-1 allows any number";
    EXPECT_EQ(task.zoneResults[1].sBiggerResult, 0) << "0 allows none";
    EXPECT_EQ(task.zoneResults[2].sNoBiggerResult, 1) << "verdicts for every zone";
}

TEST(ScratchCheck, AFrameWithoutScratchesGivesNoneAndPassingVerdicts) {
    sim::EndFaceScene scene;
    std::vector<unsigned char> gray(960 * 960);
    sim::renderGray(scene, 320, 120, 960, 960, gray.data());
    TaskInfoSetting task = factoryTasks().value(0);
    Search s;
    s.result = FindSectionScratch(gray.data(), 960, 960, s.scratches.data(), s.zones.data(), 200,
                                  s.count, task, kScale, 480, 480, 125.0, 125.0,
                                  std::vector<double>{110.0, 135.0}.data(), 1, nullptr, 0);
    EXPECT_EQ(s.result, 0);
    EXPECT_EQ(s.count, 0);
    EXPECT_EQ(task.zoneResults[0].sNoBiggerResult, 1);
    EXPECT_EQ(task.zoneResults[1].sBiggerResult, 1);
}

TEST(ScratchCheck, MoreScratchesThanTheCapacityFailAndCountNothing) {
    sim::EndFaceScene scene;
    for (int k = 0; k < 3; ++k) {
        const double y = 560 + 20 * k;
        scene.scratches.push_back({650, y, 950, y + 60, 2.5, 40, false});
    }
    std::vector<unsigned char> gray(960 * 960);
    sim::renderGray(scene, 320, 120, 960, 960, gray.data());
    TaskInfoSetting task = factoryTasks().value(0);
    Search s;
    const double cladding[] = {110.0, 135.0};
    ASSERT_GE(
        FindSectionScratch(gray.data(), 960, 960, s.scratches.data(), s.zones.data(), 200, s.count,
                           task, kScale, 480, 480, 125.0, 125.0, cladding, 1, nullptr, 0),
        2);
    TaskInfoSetting untouched = factoryTasks().value(0);
    EXPECT_EQ(
        FindSectionScratch(gray.data(), 960, 960, s.scratches.data(), s.zones.data(), 1, s.count,
                           untouched, kScale, 480, 480, 125.0, 125.0, cladding, 1, nullptr, 0),
        -1);
    EXPECT_EQ(untouched.zoneResults[1].sNoBiggerNum + untouched.zoneResults[1].sBiggerNum, 0);
    EXPECT_EQ(untouched.zoneResults[1].sNoBiggerResult, 0) << "verdicts left as they were";
}

TEST(ScratchCheck, AFloodOfSegmentsFromTextureIsMergedWithoutTrouble) {
    // A lattice of short bars, across and along: thousands of segments, more candidates than
    // the merge's first capacity of 2048.
    std::vector<unsigned char> gray(960 * 960, 200);
    for (int cellY = 0; cellY < 46; ++cellY) {
        for (int cellX = 0; cellX < 46; ++cellX) {
            const bool across = (cellX + cellY) % 2 == 0;
            for (int t = 0; t < 16; ++t) {
                for (int w = 0; w < 4; ++w) {
                    const int x = 20 + 20 * cellX + (across ? t : w);
                    const int y = 20 + 20 * cellY + (across ? w : t);
                    gray[y * 960 + x] = 40;
                }
            }
        }
    }
    double* segments = nullptr;
    int segmentCount = 0;
    FindLumaspecSegment(gray.data(), 960, 960, 480, 480, 1e9, 125.0, 0, nullptr, nullptr, 0, 16,
                        &segments, &segmentCount);
    freeLineSegments(segments);
    ASSERT_GT(segmentCount, 2048);

    TaskInfoSetting task = factoryTasks().value(0);
    Search s;
    const double cladding[] = {110.0, 135.0};
    s.result =
        FindSectionScratch(gray.data(), 960, 960, s.scratches.data(), s.zones.data(), 200, s.count,
                           task, kScale, 480, 480, 250.0, 125.0, cladding, 1, nullptr, 0);
    EXPECT_GE(s.result, -1);
    EXPECT_LE(s.result, 200);
}
