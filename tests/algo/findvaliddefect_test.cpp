#include "findvaliddefect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

namespace {

constexpr int kSize = 64;

struct Extraction {
    int size;
    std::vector<unsigned char> map = std::vector<unsigned char>(size * size, 0);
    std::vector<unsigned char> accepted = std::vector<unsigned char>(size * size, 7);
    std::vector<unsigned char> zones;
    std::vector<defect_info_struct> defects;

    explicit Extraction(int side = kSize) : size(side) {}
    void set(int left, int top, int w, int h) {
        for (int y = top; y < top + h; ++y) {
            std::fill_n(map.begin() + y * size + left, w, 255);
        }
    }
    int run(int cx = 0, int cy = 0) {
        GetFiberValidDefect extractor;
        const int count =
            extractor.GetValidDefect(map.data(), accepted.data(),
                                     zones.empty() ? nullptr : zones.data(), size, size, cx, cy);
        if (count > 0) {
            defects.assign(extractor.GetDefectList(), extractor.GetDefectList() + count);
        }
        return count;
    }
};

using Box = std::array<int, 4>;

// Top, bottom, left and right of each defect, to compare whole lists at once.
std::vector<Box> boxesOf(const std::vector<defect_info_struct>& defects) {
    std::vector<Box> boxes;
    for (const defect_info_struct& d : defects) {
        boxes.push_back({d.top, d.bottom, d.left, d.right});
    }
    return boxes;
}

}  // namespace

TEST(ValidDefect, RegionsUnderSixteenPixelsAreDropped) {
    for (const int height : {0, 5}) {  // nothing, or 3 x 5
        Extraction small;
        small.set(10, 10, 3, height);
        EXPECT_EQ(small.run(), 0) << height;
        EXPECT_EQ(small.accepted, std::vector<unsigned char>(kSize * kSize, 0)) << height;
    }
}

TEST(ValidDefect, RegionsBecomeBoxesListedInRowMajorOrderOfTheirFirstPixel) {
    struct Case {
        const char* what;
        std::vector<Box> regions;  // left, top, width, height
        std::vector<Box> boxes;    // top, bottom, left, right
    };
    const Case cases[] = {
        {"16 pixels are kept", {{10, 10, 4, 4}}, {{10, 13, 10, 13}}},
        {"a one pixel gap is closed", {{10, 10, 4, 4}, {15, 10, 4, 4}}, {{10, 13, 10, 18}}},
        {"three, listed by their first pixel",
         {{40, 20, 5, 5}, {10, 30, 5, 5}, {20, 8, 5, 5}},
         {{8, 12, 20, 24}, {20, 24, 40, 44}, {30, 34, 10, 14}}},
        {"the frame is cleared, so regions are cut there", {{0, 20, 8, 8}}, {{20, 27, 2, 7}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Extraction e;
        for (const Box& r : c.regions) {
            e.set(r[0], r[1], r[2], r[3]);
        }
        ASSERT_EQ(e.run(), int(c.boxes.size()));
        EXPECT_EQ(boxesOf(e.defects), c.boxes);
        EXPECT_EQ(e.accepted[c.boxes[0][0] * kSize + c.boxes[0][2]], 255) << "accepted";
        EXPECT_EQ(e.accepted[c.boxes[0][0] * kSize + 1], 0) << "left of every box";
    }
}

TEST(ValidDefect, TheFibersOwnEdgeRingIsNotADefect) {
    // Square rings around the center (32, 32): the half-extents differ by the extra height.
    auto ringWithHeightExcess = [](int excess) {
        Extraction e;
        const int half = 12;
        e.set(32 - half, 32 - half - excess, 2 * half + 1, 2);
        e.set(32 - half, 32 + half - 1, 2 * half + 1, 2);
        e.set(32 - half, 32 - half - excess, 2, 2 * half + excess + 1);
        e.set(32 + half - 1, 32 - half - excess, 2, 2 * half + excess + 1);
        return e.run(32, 32);
    };
    EXPECT_EQ(ringWithHeightExcess(5), 0);
    EXPECT_EQ(ringWithHeightExcess(6), 1);

    Extraction offCenter;
    offCenter.set(4, 4, 10, 10);  // does not surround the center
    EXPECT_EQ(offCenter.run(32, 32), 1);
}

TEST(ValidDefect, ADefectTakesTheSmallestZoneUnderIt) {
    Extraction e;
    e.zones.assign(kSize * kSize, 2);
    for (int y = 0; y < kSize; ++y) {
        std::fill_n(e.zones.begin() + y * kSize + 30, kSize - 30, 1);
    }
    e.zones[20 * kSize + 20] = 255;
    e.set(20, 20, 12, 4);  // zones 2 and 1 (and one 255)
    e.set(5, 40, 4, 4);    // zone 2 only
    ASSERT_EQ(e.run(), 2);
    EXPECT_EQ((std::array<int, 2>{e.defects[0].zone, e.defects[1].zone}),
              (std::array<int, 2>{1, 2}));

    Extraction noZoneMap;
    noZoneMap.set(20, 20, 4, 4);
    ASSERT_EQ(noZoneMap.run(), 1);
    EXPECT_EQ(noZoneMap.defects[0].zone, 0);
}

TEST(ValidDefect, TheListGrowsBeyondItsFirstTwoHundredRecords) {
    Extraction e(2 * 6 * 20 + 8);  // 20 x 20 blobs of 5 x 5 with gaps of 7
    for (int row = 0; row < 20; ++row) {
        for (int col = 0; col < 20; ++col) {
            e.set(4 + 12 * col, 4 + 12 * row, 5, 5);
        }
    }
    ASSERT_EQ(e.run(), 400);
    EXPECT_EQ(boxesOf(e.defects)[399], (Box{4 + 12 * 19, 8 + 12 * 19, 4 + 12 * 19, 8 + 12 * 19}));
}

TEST(DefectBoxes, TheLabelMapShowsTheLaterDefectWhereBoxesOverlap) {
    const defect_info_struct list[] = {
        {2, 5, 2, 5, 0, 0},       {4, 7, 4, 7, 1, 0}, {0, 3, 0, 3, 0, 0},  // top 0: skipped
        {6, 5, 0, 3, 0, 0},                                                // inverted: skipped
        {1, 2, 8, 9, kNoZone, 0},                                          // in no zone: skipped
    };
    std::vector<short> labels(10 * 10, -1);
    std::vector<unsigned char> mask(10 * 10, 0);
    SetDefectRectPixel(list, 10, 10, 5, mask.data(), labels.data(), 255);
    // Pixels (x, y) = (2, 2), (5, 5), (7, 7), (0, 0) and (8, 1) labelled; (3, 4), (1, 1) masked.
    EXPECT_EQ((std::vector<int>{labels[22], labels[55], labels[77], labels[0], labels[18]}),
              (std::vector<int>{0, 1, 1, -1, -1}));
    EXPECT_EQ((std::vector<int>{mask[43], mask[11]}), (std::vector<int>{255, 0}));
}
