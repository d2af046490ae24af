#include "sectionmap.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TaskInfoSetting zones(std::vector<std::pair<int, int>> diameters) {
    TaskInfoSetting task{};
    task.sectionNum = int16_t(diameters.size());
    for (size_t i = 0; i < diameters.size(); ++i) {
        task.sections[i].diameterMin = int16_t(diameters[i].first);
        task.sections[i].diameterMax = int16_t(diameters[i].second);
    }
    return task;
}

}  // namespace

TEST(SectionMap, EachPixelGetsTheFirstZoneWhoseRingHoldsIt) {
    // At 1 um a pixel: zone radii 0-5, 5-10 (overlapping the third), 8-12; a gap 12-15; 15-20.
    const TaskInfoSetting task = zones({{0, 10}, {10, 20}, {16, 24}, {30, 40}});
    std::vector<unsigned char> map(50 * 50, 99);
    initSectionMapByTaskInfoSF(task, map.data(), 50, 50, 25, 25, 1.0);
    auto zoneAt = [&](int x, int y) { return int(map[y * 50 + x]); };
    EXPECT_EQ(zoneAt(25, 25), 0);
    EXPECT_EQ(zoneAt(29, 25), 0);
    EXPECT_EQ(zoneAt(30, 25), 1) << "the inner radius belongs to the ring";
    EXPECT_EQ(zoneAt(34, 25), 1) << "9: in zones 1 and 2, the first wins";
    EXPECT_EQ(zoneAt(35, 25), 2) << "the outer radius does not belong to the ring";
    EXPECT_EQ(zoneAt(38, 25), 0) << "13: in the gap";
    EXPECT_EQ(zoneAt(40, 25), 3);
    EXPECT_EQ(zoneAt(45, 25), 0);
    EXPECT_EQ(zoneAt(0, 0), 0);
}

TEST(SectionMap, OddDiametersAreHalvedWholeAndScaled) {
    const TaskInfoSetting task = zones({{0, 25}, {25, 115}});
    std::vector<unsigned char> map(100 * 100);
    initSectionMapByTaskInfoSF(task, map.data(), 100, 100, 50, 50, kUmPerPixel);
    // 25 um: a radius of 12 / scale = 23.42 px.
    EXPECT_EQ(map[50 * 100 + 50 + 23], 0);
    EXPECT_EQ(map[50 * 100 + 50 + 24], 1);
}

TEST(SectionMap, ATaskWithoutZonesLeavesEverythingZero) {
    std::vector<unsigned char> map(20 * 20, 5);
    initSectionMapByTaskInfoSF(zones({}), map.data(), 20, 20, 3, 4, 1.0);
    EXPECT_EQ(map, std::vector<unsigned char>(20 * 20, 0));
}
