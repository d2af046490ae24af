#include "fibercenterregion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "testpicture.h"

namespace {

constexpr unsigned char kFerrule = 180;
constexpr unsigned char kCladding = 60;

struct Picture : TestPicture {
    Picture(int w, int h, unsigned char level = kFerrule) : TestPicture(w, h, level) {}
    void disc(double cx, double cy, double radius, unsigned char level = kCladding) {
        TestPicture::disc(cx, cy, radius, level);
    }
    void square(int left, int top, int side, unsigned char level = kCladding) {
        rectangle(left, top, side, side, level);
    }
};

struct BlobResult {
    int code;
    int x, y, r;
    std::vector<unsigned char> work;
};

BlobResult runBlobStage(const Picture& picture, int expectedRadius = 122) {
    GetFiberCenterRegion region;
    BlobResult result{0, -1, -1, 77, std::vector<unsigned char>(picture.pixels.size(), 7)};
    result.code =
        region.AlgGetFiberCenterXY2(picture.data(), result.work.data(), picture.width,
                                    picture.height, expectedRadius, result.x, result.y, result.r);
    return result;
}

}  // namespace

TEST(OtsuThreshold, EqualScoresPickTheDarkestCandidate) {
    GetFiberCenterRegion region;
    Picture flat(64, 64, 120);
    EXPECT_EQ(region.ClarityGetPriThresh(flat.data(), 64, 64), 0);

    // Every split between two pure levels separates them equally well: the first one wins,
    // so the darker level itself is not "darker than the threshold".
    Picture twoLevels(64, 64, 200);
    std::fill(twoLevels.pixels.begin(), twoLevels.pixels.begin() + 64 * 32, 50);
    EXPECT_EQ(region.ClarityGetPriThresh(twoLevels.data(), 64, 64), 50);
}

TEST(OtsuThreshold, SamplesEverySecondPixelOfEverySecondRow) {
    GetFiberCenterRegion region;
    Picture picture(64, 64, 200);
    for (int y = 1; y < 64; y += 2) {  // odd rows are never sampled
        for (int x = 0; x < 64; ++x) {
            picture.pixels[y * 64 + x] = 10;
        }
    }
    EXPECT_EQ(region.ClarityGetPriThresh(picture.data(), 64, 64), 0);
    picture.rectangle(0, 0, 64, 32, 90);
    const int t = region.ClarityGetPriThresh(picture.data(), 64, 64);
    EXPECT_GE(t, 90);
    EXPECT_LT(t, 200);
}

TEST(FiberBlob, AFiberSizedDiscIsFoundAndBinarised) {
    Picture picture(320, 320);
    picture.disc(161, 158, 122);
    BlobResult blob = runBlobStage(picture);
    ASSERT_EQ(blob.code, 1);
    EXPECT_NEAR(blob.x, 161, 2);
    EXPECT_NEAR(blob.y, 158, 2);
    EXPECT_EQ(blob.r, 77) << "r is only scaled by scale / 2";
    const int t = GetFiberCenterRegion().ClarityGetPriThresh(picture.data(), 320, 320);
    EXPECT_GT(t, kCladding);
    EXPECT_LT(t, kFerrule);
    for (size_t i = 0; i < picture.pixels.size(); ++i) {
        ASSERT_EQ(blob.work[i], picture.pixels[i] < t ? 255 : 0) << "pixel " << i;
    }
}

TEST(FiberBlob, ADiscOfTheWrongSizeOrShapeIsNotTheFiber) {
    Picture small(320, 320);
    small.disc(160, 160, 100);
    BlobResult blob = runBlobStage(small);
    EXPECT_EQ(blob.code, -2);
    EXPECT_EQ(blob.x, 160);
    EXPECT_EQ(blob.y, 160);
    EXPECT_EQ(blob.work[0], 7) << "work stays untouched without a match";

    Picture oval(360, 360);
    oval.ellipse(180, 180, 127, 122, kCladding);  // 5 px wider than high: not round enough
    EXPECT_EQ(runBlobStage(oval).code, -2);
    Picture roundEnough(360, 360);
    roundEnough.ellipse(180, 180, 125, 122, kCladding);
    EXPECT_EQ(runBlobStage(roundEnough).code, 1);
}

TEST(FiberBlob, NoDarkObjectGivesZeroAndThePictureCenter) {
    Picture flat(300, 200);
    BlobResult blob = runBlobStage(flat);
    EXPECT_EQ(blob.code, 0);
    EXPECT_EQ(blob.x, 150);
    EXPECT_EQ(blob.y, 100);
}

TEST(FiberBlob, ThinDarkLinesDoNotSurviveTheErosion) {
    Picture picture(320, 320);
    for (int x = 10; x < 310; ++x) {
        picture.pixels[160 * 320 + x] = kCladding;
        picture.pixels[161 * 320 + x] = kCladding;
    }
    EXPECT_EQ(runBlobStage(picture).code, 0);
}

TEST(FiberBlob, OfTwoEquallyGoodDiscsTheFirstInRasterOrderWins) {
    // The right disc starts two rows higher, so the scan meets it first.
    Picture picture(700, 400);
    picture.disc(180, 200, 122);
    picture.disc(500, 198, 122);
    BlobResult blob = runBlobStage(picture);
    ASSERT_EQ(blob.code, 1);
    EXPECT_NEAR(blob.x, 500, 2);
    EXPECT_NEAR(blob.y, 198, 2);
}

TEST(FiberBlob, TheCloserSizeWinsOverRasterOrder) {
    Picture picture(700, 400);
    picture.disc(180, 200, 118);  // first in raster order, but 4 half pixels off
    picture.disc(500, 210, 122);
    BlobResult blob = runBlobStage(picture);
    ASSERT_EQ(blob.code, 1);
    EXPECT_NEAR(blob.x, 500, 2);
}

TEST(FiberBlob, AFullObjectTableIsAFailure) {
    // 16 x 16 dark squares that survive the erosion: more than the table's 200 slots.
    Picture picture(320, 320);
    for (int row = 0; row < 16; ++row) {
        for (int col = 0; col < 16; ++col) {
            picture.square(4 + 20 * col, 4 + 20 * row, 10);
        }
    }
    GetFiberCenterRegion region;
    std::vector<unsigned char> work(picture.pixels.size());
    int x = 0, y = 0, r = 122;
    EXPECT_EQ(region.AlgGetFiberCenterXY2(picture.data(), work.data(), 320, 320, 122, x, y, r), -1);
    EXPECT_EQ(region.objectCount(), 200);
    EXPECT_EQ(x, 160);
}

TEST(FiberBlob, ObjectsTouchingThePictureBorderAreStillTraced) {
    // The outermost half-resolution row and column are kept clear, so a dark frame edge and a
    // fiber both become objects and the trace never leaves the picture.
    Picture picture(320, 320);
    picture.square(0, 0, 320, kCladding);
    picture.disc(160, 160, 122, kFerrule);
    picture.disc(160, 160, 100, kCladding);
    EXPECT_EQ(runBlobStage(picture).code, -2) << "neither the frame nor the 200 px disc fits";
}

TEST(FiberBlob, PicturesLargerThanTheTableAreRefused) {
    Picture picture(2002, 10);
    BlobResult blob = runBlobStage(picture);
    EXPECT_EQ(blob.code, -1);
}
