// The twin's world: frames whose gray levels follow the exposure, whose noise is a sensor's,
// and whose blur grows with the lens's distance from focus.

#include "twinworld.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "lensoptics.h"

namespace {

using Frame = std::vector<uint16_t>;

Frame readFrame(sim::TwinWorld& world) {
    Frame frame(kSensorPixels);
    world.readFrame(frame.data());
    return frame;
}

// A 64 x 64 patch of the ferrule, left of the fiber.
constexpr int kPatchLeft = 400, kPatchTop = 570, kPatchSide = 64;

double patchMean(const Frame& frame) {
    double sum = 0.0;
    for (int y = kPatchTop; y < kPatchTop + kPatchSide; ++y) {
        for (int x = kPatchLeft; x < kPatchLeft + kPatchSide; ++x) {
            sum += frame[size_t(y) * kSensorWidth + x];
        }
    }
    return sum / (kPatchSide * kPatchSide);
}

// Spread of the difference of two frames over the patch, as one frame's noise.
double temporalNoise(const Frame& a, const Frame& b) {
    double sum = 0.0, squares = 0.0;
    for (int y = kPatchTop; y < kPatchTop + kPatchSide; ++y) {
        for (int x = kPatchLeft; x < kPatchLeft + kPatchSide; ++x) {
            const double d =
                double(a[size_t(y) * kSensorWidth + x]) - b[size_t(y) * kSensorWidth + x];
            sum += d;
            squares += d * d;
        }
    }
    const double n = kPatchSide * kPatchSide, mean = sum / n;
    return std::sqrt((squares / n - mean * mean) / 2.0);
}

// Mean absolute difference between pixels two apart across the cladding's edge: falls as the
// edge blurs.
double edgeDetail(const Frame& frame) {
    double sum = 0.0;
    for (int y = 540; y < 660; ++y) {
        for (int x = 640; x < 720; ++x) {
            sum += std::abs(int(frame[size_t(y) * kSensorWidth + x + 2]) -
                            int(frame[size_t(y) * kSensorWidth + x]));
        }
    }
    return sum / (120 * 80);
}

TEST(TwinWorld, GrayLevelsFollowTheExposureUpToTheTopSample) {
    sim::TwinWorld world;
    const double nominal = patchMean(readFrame(world));
    EXPECT_NEAR(nominal / 4, 190.0, 15.0);  // the ferrule's 8-bit level
    for (unsigned exposure : {10u, 15u, 25u}) {
        world.setExposure(exposure);
        EXPECT_NEAR(patchMean(readFrame(world)) / nominal, exposure / 20.0, 0.02) << exposure;
    }
    world.setExposure(80);
    EXPECT_EQ(patchMean(readFrame(world)), 1023.0);
    world.setCovered(true);
    EXPECT_LT(patchMean(readFrame(world)) / 4, 41.0);  // what the instrument takes for no fiber
}

// Shot noise grows with the square root of the signal; read noise remains in the dark.
TEST(TwinWorld, EachFrameHasItsOwnSensorNoise) {
    sim::TwinWorld world;
    const Frame a = readFrame(world), b = readFrame(world);
    const double signal = patchMean(a);
    EXPECT_NEAR(temporalNoise(a, b), std::sqrt(0.02 * signal + 4.0), 0.4);
    world.setCovered(true);
    EXPECT_NEAR(temporalNoise(readFrame(world), readFrame(world)), 2.0, 0.3);
}

TEST(TwinWorld, BlurGrowsWithTheLensDistanceFromFocus) {
    sim::TwinWorld world;
    double sharper = 1e9;
    for (int distance : {0, 256, 1024, 4096}) {
        world.setLensPosition(sim::lens::kDefaultFocus + distance);
        const double after = edgeDetail(readFrame(world));
        world.setLensPosition(sim::lens::kDefaultFocus - distance);
        const double before = edgeDetail(readFrame(world));
        EXPECT_LT(after, sharper) << distance;
        EXPECT_NEAR(before, after, 0.05 * after) << distance;  // the same either side
        sharper = after;
    }
}

}  // namespace
