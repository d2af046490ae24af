// Locating the fiber: the blob stage (Otsu threshold, half-resolution objects) and the fit to the
// edge points around it.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "fibercenter.h"
#include "fibercenterregion.h"
#include "nearvalues.h"
#include "testpicture.h"

namespace {

constexpr unsigned char kFerrule = 180;
constexpr unsigned char kCladding = 60;

struct BlobResult {
    int code;
    int x, y, r;
    std::vector<unsigned char> work;
    int objects;
};

BlobResult runBlobStage(const TestPicture& picture) {
    GetFiberCenterRegion region;
    BlobResult result{0, -1, -1, 77, std::vector<unsigned char>(picture.pixels.size(), 7), 0};
    result.code = region.AlgGetFiberCenterXY2(picture.data(), result.work.data(), picture.width,
                                              picture.height, 122, result.x, result.y, result.r);
    result.objects = region.objectCount();
    return result;
}

// 16 x 16 dark squares that survive the erosion: more than the object table's 200 slots.
void paintCrowd(TestPicture& picture) {
    for (int top = 4; top < 320; top += 20) {
        for (int left = 4; left < 320; left += 20) {
            picture.rectangle(left, top, 10, 10, kCladding);
        }
    }
}

struct EdgePoints {
    std::vector<int> xs = std::vector<int>(kFillPointsCapacity);
    std::vector<int> ys = std::vector<int>(kFillPointsCapacity);
    int n = 0;

    explicit EdgePoints(const TestPicture& binary, int cx, int cy) {
        FillPoints(binary.data(), binary.width, binary.height, cx, cy, 8, xs.data(), ys.data(), n);
    }
};

}  // namespace

TEST(OtsuThreshold, EqualScoresPickTheDarkestCandidate) {
    GetFiberCenterRegion region;
    TestPicture flat(64, 64, 120);
    EXPECT_EQ(region.ClarityGetPriThresh(flat.data(), 64, 64), 0);
    // Every split between two pure levels separates them equally well: the first one wins,
    // so the darker level itself is not "darker than the threshold".
    TestPicture twoLevels(64, 64, 200);
    std::fill(twoLevels.pixels.begin(), twoLevels.pixels.begin() + 64 * 32, 50);
    EXPECT_EQ(region.ClarityGetPriThresh(twoLevels.data(), 64, 64), 50);
}

TEST(OtsuThreshold, SamplesEverySecondPixelOfEverySecondRow) {
    GetFiberCenterRegion region;
    TestPicture picture(64, 64, 200);
    for (int y = 1; y < 64; y += 2) {  // odd rows are never sampled
        std::fill_n(picture.pixels.begin() + y * 64, 64, 10);
    }
    EXPECT_EQ(region.ClarityGetPriThresh(picture.data(), 64, 64), 0);
    picture.rectangle(0, 0, 64, 32, 90);
    const int t = region.ClarityGetPriThresh(picture.data(), 64, 64);
    EXPECT_GE(t, 90);
    EXPECT_LT(t, 200);
}

TEST(FiberBlob, AFiberSizedDiscIsFoundAndBinarised) {
    TestPicture picture(320, 320, kFerrule);
    picture.disc(161, 158, 122, kCladding);
    BlobResult blob = runBlobStage(picture);
    ASSERT_EQ(blob.code, 1);
    expectNear({161, 158}, {double(blob.x), double(blob.y)}, 2);
    EXPECT_EQ(blob.r, 77) << "r is only scaled by scale / 2";
    const int t = GetFiberCenterRegion().ClarityGetPriThresh(picture.data(), 320, 320);
    EXPECT_GT(t, kCladding);
    EXPECT_LT(t, kFerrule);
    for (size_t i = 0; i < picture.pixels.size(); ++i) {
        ASSERT_EQ(blob.work[i], picture.pixels[i] < t ? 255 : 0) << "pixel " << i;
    }
    TestPicture roundEnough(360, 360, kFerrule);
    roundEnough.ellipse(180, 180, 125, 122, kCladding);
    EXPECT_EQ(runBlobStage(roundEnough).code, 1) << "3 px wider than high";
}

TEST(FiberBlob, WithoutOneFiberLikeObjectTheStageFailsAndLeavesTheWorkPictureAlone) {
    struct Case {
        const char* what;
        int width, height;
        void (*paint)(TestPicture&);
        int code;
        bool centered;  // x and y set to the picture's center
    };
    const Case cases[] = {
        {"a 100 px disc", 320, 320, [](TestPicture& p) { p.disc(160, 160, 100, kCladding); }, -2,
         true},
        {"5 px wider than high: not round enough", 360, 360,
         [](TestPicture& p) { p.ellipse(180, 180, 127, 122, kCladding); }, -2, true},
        {"no dark object", 300, 200, [](TestPicture&) {}, 0, true},
        {"thin dark lines do not survive the erosion", 320, 320,
         [](TestPicture& p) {
             std::fill_n(p.pixels.begin() + 160 * 320 + 10, 300, kCladding);
             std::fill_n(p.pixels.begin() + 161 * 320 + 10, 300, kCladding);
         },
         0, true},
        // The outermost half-resolution row and column are kept clear, so the dark frame and
        // the ring both become objects and the trace never leaves the picture.
        {"a frame and a 200 px disc", 320, 320,
         [](TestPicture& p) {
             p.rectangle(0, 0, 320, 320, kCladding);
             p.disc(160, 160, 122, kFerrule);
             p.disc(160, 160, 100, kCladding);
         },
         -2, true},
        {"a full object table", 320, 320, paintCrowd, -1, true},
        {"larger than the table", 2002, 10, [](TestPicture&) {}, -1, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TestPicture picture(c.width, c.height, kFerrule);
        c.paint(picture);
        const BlobResult blob = runBlobStage(picture);
        EXPECT_EQ(blob.code, c.code);
        EXPECT_EQ(blob.work, std::vector<unsigned char>(picture.pixels.size(), 7));
        EXPECT_EQ((std::array<int, 2>{blob.x, blob.y}),
                  (c.centered ? std::array<int, 2>{c.width / 2, c.height / 2}
                              : std::array<int, 2>{-1, -1}));
        if (c.paint == paintCrowd) {
            EXPECT_EQ(blob.objects, 200);
        }
    }
}

TEST(FiberBlob, TheCloserSizeWinsAndThenTheFirstInRasterOrder) {
    // The second disc starts two rows higher, so the scan meets it first; a first disc 4 half
    // pixels off the size loses to a later exact one.
    const double discs[][5] = {{122, 200, 122, 198, 500}, {118, 200, 122, 210, 500}};
    for (const auto& d : discs) {
        TestPicture picture(700, 400, kFerrule);
        picture.disc(180, d[1], d[0], kCladding);
        picture.disc(500, d[3], d[2], kCladding);
        const BlobResult blob = runBlobStage(picture);
        ASSERT_EQ(blob.code, 1) << d[0];
        expectNear({d[4], d[3]}, {double(blob.x), double(blob.y)}, 2);
    }
}

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

TEST(FillPoints, NoPointWhereNoSweepStartsOrNoWalkMeetsAnEdge) {
    // A large bright core: the center and the sample 8 pixels on are outside the fiber.
    TestPicture cored(320, 320, 0);
    cored.hardDisc(160, 160, 122, 255);
    cored.hardDisc(160, 160, 62, 0);
    EXPECT_EQ(EdgePoints(cored, 160, 160).n, 0);
    // Fiber everywhere but column 0: the right and down walks run off the picture, the left and
    // up walks stop short of column and row 0.
    TestPicture edgeless(200, 200, 255);
    edgeless.rectangle(0, 0, 1, 200, 0);
    EXPECT_EQ(EdgePoints(edgeless, 100, 100).n, 0);
    const TestPicture full(100, 100, 255);
    EXPECT_EQ(EdgePoints(full, -1, 50).n, 0) << "center outside the picture";
    EXPECT_EQ(EdgePoints(full, 50, 100).n, 0);
}

TEST(FillPoints, StopsAtTheCapacityOfItsArrays) {
    // Step 1 over a 2000 x 2000 fiber finds about 16,000 edge points, far more than fit.
    TestPicture binary(2000, 2000, 0);
    binary.hardDisc(1000, 1000, 990, 255);
    const int guard = 64;
    std::vector<int> xs(kFillPointsCapacity + guard, -7), ys(kFillPointsCapacity + guard, -7);
    int n = 0;
    FillPoints(binary.data(), 2000, 2000, 1000, 1000, 1, xs.data(), ys.data(), n);
    EXPECT_EQ(n, kFillPointsCapacity);
    for (int i = kFillPointsCapacity; i < kFillPointsCapacity + guard; ++i) {
        ASSERT_EQ(xs[size_t(i)], -7) << "written past the capacity at " << i;
        ASSERT_EQ(ys[size_t(i)], -7) << "written past the capacity at " << i;
    }
}

TEST(FiberCenter, TooFewEdgePointsKeepTheBlobCenter) {
    TestPicture picture(320, 320, kFerrule);
    picture.disc(160, 160, 122, kCladding);
    picture.disc(160, 160, 62, 230);
    int x = 0, y = 0, r = 122;
    EXPECT_EQ(AlgGetFiberCenterXY(picture.data(), 320, 320, 122, x, y, r), 0);
    expectNear({160, 160}, {double(x), double(y)}, 2);
    EXPECT_EQ(r, 122);
}

TEST(FiberCenter, BlobStageFailuresAndUnsupportedSizesAreRefused) {
    TestPicture wrongSize(320, 300, kFerrule);
    wrongSize.disc(150, 150, 100, kCladding);
    int x = 0, y = 0, r = 99;
    EXPECT_EQ(AlgGetFiberCenterXY(wrongSize.data(), 320, 300, 122, x, y, r), -2);
    EXPECT_EQ((std::array<int, 3>{x, y, r}), (std::array<int, 3>{160, 150, 99}));
    TestPicture crowded(320, 320, kFerrule);
    paintCrowd(crowded);
    EXPECT_EQ(AlgGetFiberCenterXY(crowded.data(), 320, 320, 122, x, y, r), -1);
    EXPECT_EQ((std::array<int, 2>{x, y}), (std::array<int, 2>{160, 160}));

    const TestPicture small(10, 10, kFerrule);
    EXPECT_EQ(AlgGetFiberCenterXY(small.data(), 2001, 10, 122, x, y, r), -1);
    EXPECT_EQ(AlgGetFiberCenterXY(small.data(), 0, 10, 122, x, y, r), -1);
    EXPECT_EQ(AlgGetFiberCenterXY(nullptr, 10, 10, 122, x, y, r), -1);
}
