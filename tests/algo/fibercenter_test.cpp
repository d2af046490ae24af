#include "fibercenter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "testpicture.h"

namespace {

constexpr unsigned char kFerrule = 180;
constexpr unsigned char kCladding = 60;

struct EdgePoints {
    std::vector<int> xs = std::vector<int>(kFillPointsCapacity);
    std::vector<int> ys = std::vector<int>(kFillPointsCapacity);
    int n = 0;

    explicit EdgePoints(const TestPicture& binary, int cx, int cy) {
        FillPoints(binary.data(), binary.width, binary.height, cx, cy, 8, xs.data(), ys.data(), n);
    }
};

}  // namespace

TEST(FillPoints, PointsAreTheFirstPixelsOutsideTheFiberBeyondFiftyPixels) {
    TestPicture binary(320, 320, 0);
    binary.hardDisc(160, 160, 122, 255);
    EdgePoints points(binary, 160, 160);
    ASSERT_GT(points.n, 100);
    for (int i = 0; i < points.n; ++i) {
        const int x = points.xs[i], y = points.ys[i];
        EXPECT_EQ(binary.at(x, y), 0) << x << "," << y;
        const double distance = std::hypot(x - 160, y - 160);
        EXPECT_GE(distance, 50.0);
        EXPECT_LE(distance, 131.0) << "near the poles the 50 pixel point itself is taken";
    }
}

TEST(FillPoints, SweepsStopWhereTheFiberEnds) {
    // A fiber with a large bright core: the center and the sample 8 pixels on are outside the
    // fiber, so no sweep starts.
    TestPicture binary(320, 320, 0);
    binary.hardDisc(160, 160, 122, 255);
    binary.hardDisc(160, 160, 62, 0);
    EXPECT_EQ(EdgePoints(binary, 160, 160).n, 0);
}

TEST(FillPoints, WalksThatFindNoEdgeGiveNoPoint) {
    // Fiber everywhere but column 0: the right and down walks run off the picture, the left and
    // up walks stop short of column and row 0, so no ray meets an edge.
    TestPicture binary(200, 200, 255);
    binary.rectangle(0, 0, 1, 200, 0);
    EXPECT_EQ(EdgePoints(binary, 100, 100).n, 0);
}

TEST(FillPoints, ACenterOutsideThePictureAddsNothing) {
    TestPicture binary(100, 100, 255);
    EXPECT_EQ(EdgePoints(binary, -1, 50).n, 0);
    EXPECT_EQ(EdgePoints(binary, 50, 100).n, 0);
}

TEST(FiberCenter, ADarkDiscIsFittedToItsCenterAndRadius) {
    TestPicture picture(320, 320, kFerrule);
    picture.disc(157.0, 164.0, 122.0, kCladding);
    // A small bright core: the sweeps go on past it, since they stop only where two samples
    // 8 px apart are both outside the fiber.
    picture.disc(157.0, 164.0, 5.0, 220);
    int x = -5, y = -5, r = 0;
    ASSERT_EQ(AlgGetFiberCenterXY(picture.data(), 320, 320, 122, x, y, r), 1);
    EXPECT_NEAR(x, 157, 1);
    EXPECT_NEAR(y, 164, 1);
    EXPECT_NEAR(r, 122, 2);
}

TEST(FiberCenter, TooFewEdgePointsKeepTheBlobCenter) {
    TestPicture picture(320, 320, kFerrule);
    picture.disc(160, 160, 122, kCladding);
    picture.disc(160, 160, 62, 230);
    int x = 0, y = 0, r = 122;
    EXPECT_EQ(AlgGetFiberCenterXY(picture.data(), 320, 320, 122, x, y, r), 0);
    EXPECT_NEAR(x, 160, 2);
    EXPECT_NEAR(y, 160, 2);
    EXPECT_EQ(r, 122);
}

TEST(FiberCenter, FailuresOfTheBlobStagePassThroughWithThePictureCenter) {
    TestPicture wrongSize(320, 300, kFerrule);
    wrongSize.disc(150, 150, 100, kCladding);
    int x = 0, y = 0, r = 99;
    EXPECT_EQ(AlgGetFiberCenterXY(wrongSize.data(), 320, 300, 122, x, y, r), -2);
    EXPECT_EQ(x, 160);
    EXPECT_EQ(y, 150);
    EXPECT_EQ(r, 99);

    TestPicture crowded(320, 320, kFerrule);
    for (int top = 4; top < 320; top += 20) {
        for (int left = 4; left < 320; left += 20) {
            crowded.rectangle(left, top, 10, 10, kCladding);
        }
    }
    EXPECT_EQ(AlgGetFiberCenterXY(crowded.data(), 320, 320, 122, x, y, r), -1);
    EXPECT_EQ(x, 160);
    EXPECT_EQ(y, 160);
}

TEST(FiberCenter, PicturesOutsideTheSupportedSizesAreRefused) {
    TestPicture picture(10, 10, kFerrule);
    int x = 0, y = 0, r = 0;
    EXPECT_EQ(AlgGetFiberCenterXY(picture.data(), 2001, 10, 122, x, y, r), -1);
    EXPECT_EQ(AlgGetFiberCenterXY(picture.data(), 0, 10, 122, x, y, r), -1);
    EXPECT_EQ(AlgGetFiberCenterXY(nullptr, 10, 10, 122, x, y, r), -1);
}
