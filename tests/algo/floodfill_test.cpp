#include "floodfill.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

struct Map {
    int width, height;
    std::vector<unsigned char> pixels;
    Map(int w, int h) : width(w), height(h), pixels(w * h, 0) {}
    unsigned char& at(int x, int y) { return pixels[y * width + x]; }
    void fill(int left, int top, int w, int h, unsigned char value) {
        for (int y = top; y < top + h; ++y) {
            for (int x = left; x < left + w; ++x) {
                at(x, y) = value;
            }
        }
    }
};

struct Filled {
    int count, minX, minY, maxX, maxY, minZone;
};

Filled fill(FloodFill& flood, Map& image, Map& mark, const Map* zones, int x, int y) {
    Filled f{};
    f.count = flood.Fill(image.pixels.data(), mark.pixels.data(),
                         zones ? zones->pixels.data() : nullptr, image.width, image.height, x, y, 0,
                         255, 9, f.minX, f.minY, f.maxX, f.maxY, f.minZone);
    return f;
}

}  // namespace

TEST(FloodFill, FillsTheFourConnectedRegionAndReportsItsBox) {
    Map image(20, 12), mark(20, 12);
    image.fill(3, 2, 5, 4, 255);   // a block
    image.fill(8, 5, 4, 1, 255);   // joined to it along an edge
    image.fill(12, 6, 2, 2, 255);  // touching only by a corner: not part of it
    FloodFill flood;
    const Filled f = fill(flood, image, mark, nullptr, 4, 3);
    // Count, box (min x, max x, min y, max y), and zone 0 without a zone map.
    EXPECT_EQ((std::vector<int>{f.count, f.minX, f.maxX, f.minY, f.maxY, f.minZone}),
              (std::vector<int>{20 + 4, 3, 11, 2, 5, 0}));
    // The filled pixels are cleared in the image and marked; the corner-touching block is not.
    EXPECT_EQ((std::vector<int>{image.at(12, 6), image.at(3, 2), mark.at(11, 5), mark.at(12, 6)}),
              (std::vector<int>{255, 0, 9, 0}));
}

TEST(FloodFill, TheSmallestZoneUnderTheRegionIgnoringNoZone) {
    Map image(10, 10), mark(10, 10), zones(10, 10);
    image.fill(2, 2, 6, 6, 255);
    zones.fill(0, 0, 10, 10, 2);
    zones.fill(6, 6, 4, 4, 1);
    zones.at(2, 2) = 255;
    FloodFill flood;
    EXPECT_EQ(fill(flood, image, mark, &zones, 5, 5).minZone, 1);

    Map outside(10, 10), mark2(10, 10), noZone(10, 10);
    outside.fill(1, 1, 3, 3, 255);
    noZone.fill(0, 0, 10, 10, 255);
    EXPECT_EQ(fill(flood, outside, mark2, &noZone, 1, 1).minZone, 255);
}

TEST(FloodFill, NothingIsFilledFromAWrongSeedOrWithEqualColours) {
    Map image(8, 8), mark(8, 8);
    image.fill(1, 1, 3, 3, 255);
    FloodFill flood;
    EXPECT_EQ(fill(flood, image, mark, nullptr, 6, 6).count, 0);
    EXPECT_EQ(flood.Fill(image.pixels.data(), 8, 8, 2, 2, 255, 255), 0);
    EXPECT_EQ(image.at(2, 2), 255);
}

TEST(FloodFill, AWholeFrameOfComplexShapeIsFilledAsTheStackGrows) {
    // Bricks: every even column and every even row set. Each even column meets 600 separate
    // runs on either side, so the seeds outgrow the stack's first 1600 entries.
    Map image(1600, 1200), mark(1600, 1200);
    for (int y = 0; y < 1200; ++y) {
        for (int x = 0; x < 1600; ++x) {
            image.at(x, y) = (x % 2 == 0 || y % 2 == 0) ? 255 : 0;
        }
    }
    FloodFill flood;
    const Filled f = fill(flood, image, mark, nullptr, 0, 1199);
    EXPECT_EQ(f.count, 1600 * 1200 - 800 * 600);
    EXPECT_GT(flood.capacity(), 1600);
    EXPECT_EQ(flood.Fill(image.pixels.data(), 1600, 1200, 0, 0, 255, 0), 1600 * 1200)
        << "the simple fill joins the region and the holes it left";
}
