// The defect map, walked by ring stretches along each row, against the rule it follows.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "defectmap.h"

TEST(DefectMapRows, EveryPixelFollowsTheRuleForRandomRingsAndCenters) {
    std::mt19937 random(31);
    for (int trial = 0; trial < 40; ++trial) {
        const int width = 30 + random() % 170, height = 30 + random() % 170;
        std::vector<unsigned char> image(size_t(width) * height);
        for (unsigned char& p : image) {
            p = static_cast<unsigned char>(random() % 60);
        }
        const int count = 1 + random() % GetFiberDefectMap::kMaxRings;
        std::vector<int> radii;
        std::vector<double> thresholds;
        for (int k = 0; k < count; ++k) {  // overlapping, empty and inverted rings too
            radii.push_back(int(random() % 90));
            radii.push_back(radii.back() + int(random() % 40) - 5);
            thresholds.push_back((random() % 600) / 10.0 - 5.0);
        }
        const int cx = int(random() % (width + 60)) - 30, cy = int(random() % (height + 60)) - 30;
        GetFiberDefectMap map;
        map.SetRadiusList(radii.data(), thresholds.data(), count);
        std::vector<unsigned char> out(image.size(), 77);
        map.GetNearBwDefectImgMap(image.data(), out.data(), width, height, cx, cy);

        const int reach = *std::max_element(radii.begin(), radii.end()) - 4;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const long d2 = long(x - cx) * (x - cx) + long(y - cy) * (y - cy);
                int ring = -1;
                for (int k = count - 1; k >= 0; --k) {
                    const long inner = radii[2 * k], outer = radii[2 * k + 1];
                    ring = inner * inner < d2 && d2 < outer * outer ? k : ring;
                }
                const bool examined = std::abs(x - cx) <= reach && std::abs(y - cy) <= reach &&
                                      x >= 4 && y >= 4 && x <= width - 4 && y <= height - 4 &&
                                      x < cx + reach && y < cy + reach;
                const bool marked =
                    examined && ring >= 0 &&
                    GetPixelDefectThresh(image.data(), x, y, width, 0) > thresholds[size_t(ring)];
                ASSERT_EQ(out[size_t(y) * width + x], marked ? 255 : 0)
                    << "trial " << trial << " at " << x << "," << y;
            }
        }
    }
}
