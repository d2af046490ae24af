#include "scratchcheck.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "endfacerenderer.h"
#include "factorytasks.h"
#include "nearvalues.h"
#include "scratchgeometry.h"
#include "segmentsearch.h"

namespace {

constexpr float kScale = kUmPerPixel;
const double kCladding[] = {110.0, 135.0};

ScratchRecord line(double x1, double y1, double x2, double y2, double width) {
    return {x1, y1, x2, y2, width, 0.0, 10.0};
}

TaskInfoSetting threeZones() {
    TaskInfoSetting task = factoryTasks().value(0);  // A 0-25, B 25-115 (scratches), D 135-250
    task.sections[0].sCheck = 0;
    return task;
}

// The 960 x 960 region about the default scene's fiber, which lies at its middle (480, 480).
std::vector<unsigned char> renderRegion(const sim::EndFaceScene& scene) {
    std::vector<unsigned char> gray(960 * 960);
    sim::renderGray(scene, 320, 120, 960, 960, gray.data());
    return gray;
}

int findScratches(const std::vector<unsigned char>& gray, TaskInfoSetting& task, int capacity,
                  int& count, double outerDiameter = 125.0) {
    std::vector<ScratchRecord> scratches(200);
    std::vector<short> zones(200, -1);
    return FindSectionScratch(gray.data(), 960, 960, scratches.data(), zones.data(), capacity,
                              count, task, kScale, 480, 480, outerDiameter, 125.0, kCladding, 1,
                              nullptr, 0);
}

}  // namespace

TEST(ScratchGeometry, DistanceToTheInfiniteLine) {
    EXPECT_DOUBLE_EQ(Point2LineDistance(5, 7, 2, 0, 2, 10), 3.0) << "vertical";
    EXPECT_DOUBLE_EQ(Point2LineDistance(5, 7, 0, 3, 10, 3), 4.0) << "horizontal";
    EXPECT_DOUBLE_EQ(Point2LineDistance(0, 0, 1, 0, 0, 1), std::sqrt(0.5));
    EXPECT_DOUBLE_EQ(Point2LineDistance(100, 100, 0, 0, 1, 1), 0.0) << "beyond the segment";
}

TEST(ScratchGeometry, OneEndpointStrictlyInsideMakesTheLineReachTheCircle) {
    EXPECT_TRUE(CheckInCircle(10, 10, 500, 10, 0, 0, 20));
    EXPECT_TRUE(CheckInCircle(500, 10, 10, 10, 0, 0, 20));
    EXPECT_FALSE(CheckInCircle(20, 0, 0, 30, 0, 0, 20)) << "on the circle is not inside";
    EXPECT_FALSE(CheckInCircle(-30, 0, 30, 0, 0, 0, 20)) << "crossing, both ends outside";
}

TEST(ScratchGeometry, TheLineMeetsTheCircleLargerXFirst) {
    struct Case {
        double line[4], cx, cy, r;
        double expected[4];  // x1, y1, x2, y2
        double tolerance;
    };
    const double s300 = std::sqrt(300.0), s50 = std::sqrt(50.0);
    const Case cases[] = {
        {{90, 60, 95, 60}, 100, 50, 20, {100 + s300, 60, 100 - s300, 60}, 1e-9},
        {{0, 0, 10, 10}, 0, 0, 10, {s50, s50, -s50, -s50}, 1e-9},
        {{6, 1, 6, 2}, 0, 0, 10, {6, 8, 6, -8}, 0.0},  // vertical
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.line[0] << "," << c.line[1]);
        double p[4];
        ASSERT_TRUE(GetLineCirclePoint(c.line[0], c.line[1], c.line[2], c.line[3], c.cx, c.cy, c.r,
                                       p[0], p[1], p[2], p[3]));
        expectNear({c.expected, c.expected + 4}, {p, p + 4}, c.tolerance);
    }
    double x1, y1, x2, y2;
    EXPECT_FALSE(GetLineCirclePoint(0, 50, 1, 50, 0, 0, 10, x1, y1, x2, y2)) << "misses";
}

TEST(ScratchCheck, TheSensitivityIsTheCheckedZonesMeanPlusTen) {
    EXPECT_EQ(scratchSensitivity(factoryTasks().value(0)), 16);
    TaskInfoSetting mixed = factoryTasks().value(0);
    mixed.sections[0].sSensitivity = 3;
    mixed.sections[1].sSensitivity = 6;
    EXPECT_EQ(scratchSensitivity(mixed), 14) << "(3 + 6) / 2 + 10";
    mixed.sections[2].sCheck = 1;
    EXPECT_EQ(scratchSensitivity(mixed), 15) << "(3 + 6 + 6) / 3 + 10";
    EXPECT_EQ(scratchSensitivity(factoryTasks().value(4)), 0) << "this MT12 task checks none";
    mixed.sections[0].sCheck = mixed.sections[1].sCheck = mixed.sections[2].sCheck = 0;
    EXPECT_EQ(scratchSensitivity(mixed), 0);
}

TEST(ScratchCheck, TheSearchCoversTheCheckedZonesLessTheCladdingEdge) {
    // Checked zones (diameters, um), the outer diameter, and the annuli searched (diameters):
    // the excluded cladding edge 110-135 closes a zone it straddles and splits one it crosses,
    // and the gaps between checked zones stay unsearched.
    struct Case {
        std::vector<std::array<int, 2>> zones;
        double outer;
        std::vector<double> annuli;
    };
    const Case cases[] = {
        {{{0, 25}, {25, 115}}, 125, {0, 110}},
        {{{25, 115}}, 125, {25, 110}},
        {{{0, 25}, {25, 115}, {135, 250}}, 250, {0, 110, 135, 250}},
        {{{0, 250}}, 250, {0, 110, 135, 250}},
        {{{135, 250}}, 250, {135, 250}},
        {{}, 125, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.zones.size() << " zones, outer " << c.outer);
        TaskInfoSetting task{};
        task.sectionNum = int16_t(c.zones.size());
        for (size_t z = 0; z < c.zones.size(); ++z) {
            task.sections[z].sCheck = 1;
            task.sections[z].diameterMin = int16_t(c.zones[z][0]);
            task.sections[z].diameterMax = int16_t(c.zones[z][1]);
        }
        const std::vector<double> annuli = scratchSearchAnnuli(task, kScale, c.outer, kCladding, 1);
        ASSERT_EQ(annuli.size(), c.annuli.size());
        for (size_t i = 0; i < annuli.size(); ++i) {
            EXPECT_NEAR(annuli[i], c.annuli[i] / kUmPerPixel * 0.5, 1e-4) << i;
        }
    }
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
    EXPECT_EQ(zones, std::vector<short>({0, 1, -1}));
    EXPECT_EQ(task.zoneResults[0].sNoBiggerNum + task.zoneResults[0].sBiggerNum, 1);
    EXPECT_EQ(task.zoneResults[2].sNoBiggerNum + task.zoneResults[2].sBiggerNum, 0);
}

TEST(ScratchCheck, TheWidthClassAllowsAQuarterOverTheLimit) {
    TaskInfoSetting task = threeZones();
    task.sections[1].sWidthLimit = 3;
    const std::vector<ScratchRecord> scratches = {line(400, 520, 560, 520, 7),
                                                  line(400, 530, 560, 530, 8)};
    std::vector<short> zones(2, -1);
    gradeScratches(task, scratches.data(), 2, 480, 480, 0.5f, zones.data());
    EXPECT_EQ(task.zoneResults[1].sNoBiggerNum, 1) << "3.5 um: 2.8 < 3";
    EXPECT_EQ(task.zoneResults[1].sBiggerNum, 1) << "4 um: 3.2";
}

TEST(ScratchCheck, MoreScratchesThanTheCapacityFailAndCountNothing) {
    sim::EndFaceScene scene;
    for (int k = 0; k < 3; ++k) {
        const double y = 560 + 20 * k;
        scene.scratches.push_back({650, y, 950, y + 60, 2.5, 40, false});
    }
    const std::vector<unsigned char> gray = renderRegion(scene);
    TaskInfoSetting task = factoryTasks().value(0);
    int count = 0;
    ASSERT_GE(findScratches(gray, task, 200, count), 2);
    TaskInfoSetting untouched = factoryTasks().value(0);
    EXPECT_EQ(findScratches(gray, untouched, 1, count), -1);
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
    int count = 0;
    const int result = findScratches(gray, task, 200, count, 250.0);
    EXPECT_GE(result, -1);
    EXPECT_LE(result, 200);
}
