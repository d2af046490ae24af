#include <gtest/gtest.h>

#include <cmath>

#include "scratchannuli.h"
#include "scratchgeometry.h"

TEST(ScratchGeometry, DistanceToTheInfiniteLine) {
    EXPECT_DOUBLE_EQ(Point2LineDistance(5, 7, 2, 0, 2, 10), 3.0) << "vertical";
    EXPECT_DOUBLE_EQ(Point2LineDistance(5, 7, 0, 3, 10, 3), 4.0) << "horizontal";
    EXPECT_DOUBLE_EQ(Point2LineDistance(0, 0, 1, 0, 0, 1), std::sqrt(0.5));
    EXPECT_DOUBLE_EQ(Point2LineDistance(100, 100, 0, 0, 1, 1), 0.0) << "beyond the segment";
}

TEST(ScratchGeometry, OneEndpointStrictlyInsideMakesTheLineReachTheCircle) {
    EXPECT_TRUE(CheckInCircle(10, 10, 500, 10, 0, 0, 20));
    EXPECT_TRUE(CheckInCircle(500, 10, 10, 10, 0, 0, 20));
    EXPECT_FALSE(CheckInCircle(20, 0, 0, 30, 0, 0, 20)) << "on the circle is not inside";
    EXPECT_FALSE(CheckInCircle(-30, 0, 30, 0, 0, 0, 20)) << "crossing, both ends outside";
}

TEST(ScratchGeometry, TheLineMeetsTheCircleLargerXFirst) {
    double x1, y1, x2, y2;
    ASSERT_TRUE(GetLineCirclePoint(90, 60, 95, 60, 100, 50, 20, x1, y1, x2, y2));
    EXPECT_NEAR(x1, 100 + std::sqrt(300.0), 1e-9);
    EXPECT_NEAR(x2, 100 - std::sqrt(300.0), 1e-9);
    EXPECT_NEAR(y1, 60.0, 1e-9);

    ASSERT_TRUE(GetLineCirclePoint(0, 0, 10, 10, 0, 0, 10, x1, y1, x2, y2));
    EXPECT_NEAR(x1, std::sqrt(50.0), 1e-9);
    EXPECT_NEAR(y1, std::sqrt(50.0), 1e-9);
    EXPECT_NEAR(x2, -std::sqrt(50.0), 1e-9);

    ASSERT_TRUE(GetLineCirclePoint(6, 1, 6, 2, 0, 0, 10, x1, y1, x2, y2)) << "vertical";
    EXPECT_EQ(x1, 6.0);
    EXPECT_NEAR(y1, 8.0, 1e-12);
    EXPECT_NEAR(y2, -8.0, 1e-12);

    EXPECT_FALSE(GetLineCirclePoint(0, 50, 1, 50, 0, 0, 10, x1, y1, x2, y2)) << "misses";
}

TEST(ScratchAnnuli, ExcludedRangesCutTheCheckedZones) {
    const double cladding[] = {110.0, 135.0};
    int b[16];
    int n = scratch::GetFiberRegion(0, 25, cladding, 1, b, 0);
    n = scratch::GetFiberRegion(25, 115, cladding, 1, b, n);
    ASSERT_EQ(n, 4);
    EXPECT_EQ(b[2], 25);
    EXPECT_EQ(b[3], 110) << "the range straddling the outer diameter closes the zone";
    EXPECT_EQ(scratch::GetFiberRegion(0, 250, cladding, 1, b, 0), 4) << "0, 110, 135, 250";
    EXPECT_EQ(b[1], 110);
    EXPECT_EQ(b[2], 135);
    EXPECT_EQ(scratch::GetFiberRegion(135, 250, cladding, 1, b, 0), 2);
}

TEST(ScratchAnnuli, TheGapsBetweenSearchedZonesRemain) {
    // Zones A (0-25) and B (25-115) checked, outer 125: only the cladding edge 110-125 is a gap.
    int b[8] = {0, 25, 25, 110};
    ASSERT_EQ(GetValidCheckRadius(b, 4, 0, 125), 2);
    EXPECT_EQ(b[0], 110);
    EXPECT_EQ(b[1], 125);
    // Only B checked: zone A's disc is a gap too.
    int c[8] = {25, 110};
    ASSERT_EQ(GetValidCheckRadius(c, 2, 0, 125), 4);
    EXPECT_EQ(c[0], 0);
    EXPECT_EQ(c[1], 25);
}
