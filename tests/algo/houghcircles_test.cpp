#include "houghcircles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

struct Disc {
    double x, y, radius;  // the picture's continuous coordinates
    unsigned char level;
};

// A 240 x 200 picture of level 190 with the discs painted in order, each pixel the mean of
// 4 x 4 samples: smooth edges, as the search's blurred pictures have.
std::vector<unsigned char> paint(const std::vector<Disc>& discs) {
    std::vector<unsigned char> picture(240 * 200);
    for (int y = 0; y < 200; ++y) {
        for (int x = 0; x < 240; ++x) {
            double sum = 0.0;
            for (int s = 0; s < 16; ++s) {
                const double sx = x + (s % 4 + 0.5) / 4, sy = y + (s / 4 + 0.5) / 4;
                double level = 190.0;
                for (const Disc& d : discs) {
                    level = std::hypot(sx - d.x, sy - d.y) < d.radius ? d.level : level;
                }
                sum += level;
            }
            picture[y * 240 + x] = static_cast<unsigned char>(std::lround(sum / 16));
        }
    }
    return picture;
}

}  // namespace

TEST(HoughCircles, TheBestSupportedCirclesComeFirstAndApart) {
    const Disc fiber{100.3, 90.6, 40.0, 85}, litCore{100.3, 90.6, 3.0, 250},
        other{200.0, 150.0, 20.0, 85};
    const struct {
        std::vector<Disc> discs;
        double minDist;
        std::vector<Disc> expected;
        const char* why;
    } cases[] = {
        {{}, 240, {}, "a flat picture"},
        {{fiber, litCore}, 240, {fiber}, "a bright core supports a tiny circle with few pixels"},
        {{fiber, other}, 100, {fiber, other}, "the larger circle has more edge pixels"},
        {{fiber, other}, 130, {fiber}, "closer than the minimum distance to a better one"},
    };
    for (const auto& c : cases) {
        const std::vector<unsigned char> picture = paint(c.discs);
        HoughCircle circles[4];
        const int n =
            houghCirclesGradient(picture.data(), 240, 200, c.minDist, 50, 25, 0, 0, circles, 4);
        ASSERT_EQ(n, int(c.expected.size())) << c.why;
        for (int k = 0; k < n; ++k) {
            EXPECT_NEAR(circles[k].x, c.expected[k].x, 0.25) << c.why;
            EXPECT_NEAR(circles[k].y, c.expected[k].y, 0.25) << c.why;
            EXPECT_NEAR(circles[k].radius, c.expected[k].radius, 1.0) << c.why;
        }
    }
}
