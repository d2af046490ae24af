#include "findvaliddefect.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr int kSize = 64;

struct Extraction {
    std::vector<unsigned char> map = std::vector<unsigned char>(kSize * kSize, 0);
    std::vector<unsigned char> accepted = std::vector<unsigned char>(kSize * kSize, 7);
    std::vector<unsigned char> zones;
    std::vector<defect_info_struct> defects;
    int count = 0;

    void set(int left, int top, int w, int h) {
        for (int y = top; y < top + h; ++y) {
            for (int x = left; x < left + w; ++x) {
                map[y * kSize + x] = 255;
            }
        }
    }
    int run(int cx = 0, int cy = 0) {
        GetFiberValidDefect extractor;
        count =
            extractor.GetValidDefect(map.data(), accepted.data(),
                                     zones.empty() ? nullptr : zones.data(), kSize, kSize, cx, cy);
        if (count > 0) {
            defects.assign(extractor.GetDefectList(), extractor.GetDefectList() + count);
        }
        return count;
    }
};

void expectBox(const defect_info_struct& d, int top, int bottom, int left, int right) {
    EXPECT_EQ(d.top, top);
    EXPECT_EQ(d.bottom, bottom);
    EXPECT_EQ(d.left, left);
    EXPECT_EQ(d.right, right);
}

}  // namespace

TEST(ValidDefect, RegionsUnderSixteenPixelsAreDropped) {
    Extraction small;
    small.set(10, 10, 3, 5);
    EXPECT_EQ(small.run(), 0);
    EXPECT_EQ(small.accepted, std::vector<unsigned char>(kSize * kSize, 0));

    Extraction kept;
    kept.set(10, 10, 4, 4);
    ASSERT_EQ(kept.run(), 1);
    expectBox(kept.defects[0], 10, 13, 10, 13);
    EXPECT_EQ(kept.accepted[11 * kSize + 12], 255);
}

TEST(ValidDefect, AOnePixelGapIsClosed) {
    Extraction e;
    e.set(10, 10, 4, 4);
    e.set(15, 10, 4, 4);
    ASSERT_EQ(e.run(), 1);
    expectBox(e.defects[0], 10, 13, 10, 18);
}

TEST(ValidDefect, DefectsAreListedInRowMajorOrderOfTheirFirstPixel) {
    Extraction e;
    e.set(40, 20, 5, 5);
    e.set(10, 30, 5, 5);
    e.set(20, 8, 5, 5);
    ASSERT_EQ(e.run(), 3);
    EXPECT_EQ(e.defects[0].top, 8);
    EXPECT_EQ(e.defects[1].top, 20);
    EXPECT_EQ(e.defects[2].top, 30);
}

TEST(ValidDefect, TheFrameIsClearedSoRegionsAreCutThere) {
    Extraction e;
    e.set(0, 20, 8, 8);
    ASSERT_EQ(e.run(), 1);
    expectBox(e.defects[0], 20, 27, 2, 7);
    EXPECT_EQ(e.accepted[24 * kSize + 1], 0);
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
        for (int x = 30; x < kSize; ++x) {
            e.zones[y * kSize + x] = 1;
        }
    }
    e.zones[20 * kSize + 20] = 255;
    e.set(20, 20, 12, 4);  // zones 2 and 1 (and one 255)
    e.set(5, 40, 4, 4);    // zone 2 only
    ASSERT_EQ(e.run(), 2);
    EXPECT_EQ(e.defects[0].zone, 1);
    EXPECT_EQ(e.defects[1].zone, 2);

    Extraction noZoneMap;
    noZoneMap.set(20, 20, 4, 4);
    ASSERT_EQ(noZoneMap.run(), 1);
    EXPECT_EQ(noZoneMap.defects[0].zone, 0);
}

TEST(ValidDefect, TheListGrowsBeyondItsFirstTwoHundredRecords) {
    const int side = 2 * 6 * 20 + 8;  // 20 x 20 blobs of 5 x 5 with gaps of 7
    std::vector<unsigned char> map(side * side, 0), accepted(side * side);
    for (int row = 0; row < 20; ++row) {
        for (int col = 0; col < 20; ++col) {
            for (int y = 0; y < 5; ++y) {
                for (int x = 0; x < 5; ++x) {
                    map[(4 + 12 * row + y) * side + 4 + 12 * col + x] = 255;
                }
            }
        }
    }
    GetFiberValidDefect extractor;
    ASSERT_EQ(extractor.GetValidDefect(map.data(), accepted.data(), nullptr, side, side, 0, 0),
              400);
    EXPECT_EQ(extractor.GetDefectList()[399].top, 4 + 12 * 19);
    EXPECT_EQ(extractor.GetDefectList()[399].left, 4 + 12 * 19);
}

TEST(ValidDefect, AnEmptyMapGivesNoDefect) {
    Extraction e;
    EXPECT_EQ(e.run(), 0);
    EXPECT_EQ(e.accepted, std::vector<unsigned char>(kSize * kSize, 0));
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
    EXPECT_EQ(labels[2 * 10 + 2], 0);
    EXPECT_EQ(labels[5 * 10 + 5], 1);
    EXPECT_EQ(labels[7 * 10 + 7], 1);
    EXPECT_EQ(labels[0], -1);
    EXPECT_EQ(labels[1 * 10 + 8], -1);
    EXPECT_EQ(mask[4 * 10 + 3], 255);
    EXPECT_EQ(mask[1 * 10 + 1], 0);
}
