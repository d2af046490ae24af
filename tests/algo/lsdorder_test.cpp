// Where the detector follows the published implementation to the letter: the order in which
// pixels seed regions, and the fast inverse square root it departs with.

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "lsd.h"
#include "lsd_internal.h"

namespace {

// A 100 x 100 picture of level 50 with vertical bars: {first column, last column, first row,
// last row, level added}.
std::vector<double> bars(std::initializer_list<std::array<double, 5>> list) {
    std::vector<double> picture(100 * 100, 50.0);
    for (const auto& b : list) {
        for (int y = int(b[2]); y <= int(b[3]); ++y) {
            for (int x = int(b[0]); x <= int(b[1]); ++x) {
                picture[y * 100 + x] += b[4];
            }
        }
    }
    return picture;
}

// The first segment the detector accepts, at scale 1, within `annuli` about (50, 50) (none:
// the whole picture).
std::array<double, 4> firstSegment(const std::vector<double>& picture,
                                   const std::vector<double>& annuli = {}) {
    int n = 0;
    double* t = LineSegmentDetection(&n, picture.data(), 100, 100, 1.0, 0.6, 1.0, 22.5, 0.0, 0.7,
                                     1024, 0.0, 0.1, 22.5, 0.7, nullptr, nullptr, nullptr, 1, 50.0,
                                     50.0, 30.0, annuli.size() / 2.0, annuli.data(), nullptr, 0);
    EXPECT_GT(n, 0);
    const std::array<double, 4> first =
        n > 0 ? std::array<double, 4>{t[0], t[1], t[2], t[3]} : std::array<double, 4>{};
    freeLineSegments(t);
    return first;
}

}  // namespace

TEST(LsdOrder, PixelsOfOneBinSeedColumnByColumn) {
    // Two equal bars: one up and to the right, one down and to the left. Their edges share the
    // top bin; column by column the lower left bar's pixels come first (row by row, the upper).
    const std::array<double, 4> s =
        firstSegment(bars({{70, 99, 10, 40, 100}, {0, 29, 60, 90, 100}}));
    EXPECT_GT(std::min(s[1], s[3]), 55.0);
}

TEST(LsdOrder, TheBinsSpanTheGradientsOfTheWholePicture) {
    // Inside the searched disc (radius 30 about the middle) a bar of contrast 39.9 left of the
    // middle and one of 40 right of it; outside the disc a bar of 1000. Binned up to 1000, both
    // inner bars share a bin, where the left one's pixels come first in rows and in columns
    // alike; binned up to the searched area's 40, the stronger right one would seed first.
    const std::array<double, 4> s = firstSegment(
        bars({{40, 47, 0, 99, 39.9}, {58, 65, 0, 99, 40}, {85, 99, 0, 99, 1000}}), {0.0, 30.0});
    EXPECT_LT(std::max(s[0], s[2]), 50.0);
}

TEST(LsdOrder, GradientNormsAreBinnedInDoublePrecision) {
    // Binned up to the outer bar's 1024, the inner bars' norms 499.5 and 500 - 1e-9 both fall
    // into bin 499, where the left one comes first; a norm kept in single precision would
    // round the right one up to 500, into the bin above.
    const std::array<double, 4> s = firstSegment(
        bars({{40, 47, 0, 99, 499.5}, {58, 65, 0, 99, 500 - 1e-9}, {85, 99, 0, 99, 1024}}),
        {0.0, 30.0});
    EXPECT_LT(std::max(s[0], s[2]), 50.0);
}

TEST(LsdOrder, TheFastInverseSquareRootIsItsConstantAndOneNewtonStep) {
    // 0x5F375A86 - (i >> 1) as the first guess of 1 / sqrt(x), one step y (1.5 - 0.5 x y^2)
    // in single precision, and 1 / y: worked out by hand from the bits. The classic constant
    // 0x5F3759DF, a second step or the exact root each give other values.
    const struct {
        double x, root;
    } cases[] = {{1.0, 0x1.006f111af79f2p+0},       {2.0, 0x1.6a21204d42aa8p+0},
                 {10.0, 0x1.9577958f57912p+1},      {0.3, 0x1.18708b0763a99p-1},
                 {1234.5678, 0x1.19198d3083687p+5}, {7e-4, 0x1.b20a882c5c115p-6}};
    for (const auto& c : cases) {
        EXPECT_EQ(lsd::rectSqrt(c.x), c.root) << c.x;
    }
    EXPECT_EQ(lsd::rectSqrt(0.0), 0.0);
    EXPECT_EQ(lsd::rectSqrt(-1e-12), 0.0) << "a variance rounded below 0";
}
