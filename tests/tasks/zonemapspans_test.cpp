// The zone map, painted by row spans, against the rule it paints: each pixel gets the first
// zone, in task order, with rMin^2 <= d^2 < rMax^2, else 0.

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "sectionmap.h"

TEST(ZoneMapSpans, EveryPixelFollowsTheRuleForRandomTasksAndCenters) {
    std::mt19937 random(12);
    for (int trial = 0; trial < 60; ++trial) {
        TaskInfoSetting task{};
        task.sectionNum = int16_t(random() % 7);
        for (int z = 0; z < task.sectionNum; ++z) {  // overlapping, gapped, odd, empty rings
            task.sections[z].diameterMin = int16_t(random() % 200);
            task.sections[z].diameterMax = int16_t(task.sections[z].diameterMin + random() % 120);
        }
        const int width = 40 + random() % 260, height = 40 + random() % 260;
        const int cx = int(random() % (width + 200)) - 100,
                  cy = int(random() % (height + 200)) - 100;
        const double scale = trial % 2 ? kUmPerPixel : 0.25 + (random() % 100) / 100.0;
        std::vector<unsigned char> map(size_t(width) * height, 77);
        initSectionMapByTaskInfoSF(task, map.data(), width, height, cx, cy, scale);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const double d2 = double(long(x - cx) * (x - cx) + long(y - cy) * (y - cy));
                int expected = 0;
                for (int z = task.sectionNum - 1; z >= 0; --z) {
                    const double inner = zoneRadiusPx(task.sections[z].diameterMin, scale);
                    const double outer = zoneRadiusPx(task.sections[z].diameterMax, scale);
                    expected = inner * inner <= d2 && d2 < outer * outer ? z : expected;
                }
                ASSERT_EQ(map[size_t(y) * width + x], expected)
                    << "trial " << trial << " at " << x << "," << y;
            }
        }
    }
}
