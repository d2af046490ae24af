// The twin's world: frames whose gray levels follow the exposure, whose noise is a sensor's,
// and whose blur grows with the lens's distance from focus, where the lens stood at the middle
// of the frame's time.

#include "twinworld.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <opencv2/core.hpp>
#include <thread>

#include "lensoptics.h"

namespace {

using Frame = cv::Mat;  // 16-bit, kSensorHeight x kSensorWidth

Frame readFrame(sim::TwinWorld& world) {
    Frame frame(kSensorHeight, kSensorWidth, CV_16UC1);
    world.readFrame(frame.ptr<uint16_t>());
    return frame;
}

// A 64 x 64 patch of the ferrule, left of the fiber.
const cv::Rect kPatch(400, 570, 64, 64);

double patchMean(const Frame& frame) {
    return cv::mean(frame(kPatch))[0];
}

// Spread of the difference of two frames over the patch, as one frame's noise.
double temporalNoise(const Frame& a, const Frame& b) {
    cv::Mat difference;
    cv::subtract(a(kPatch), b(kPatch), difference, cv::noArray(), CV_32F);
    cv::Scalar mean, spread;
    cv::meanStdDev(difference, mean, spread);
    return spread[0] / std::sqrt(2.0);
}

// Mean absolute difference between pixels two apart across the cladding's edge: falls as the
// edge blurs.
double edgeDetail(const Frame& frame) {
    cv::Mat difference;
    cv::absdiff(frame(cv::Rect(642, 540, 80, 120)), frame(cv::Rect(640, 540, 80, 120)), difference);
    return cv::mean(difference)[0];
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

// A lens moved just now shows where it stood half a frame period ago; the motor cannot move it
// beyond the ends of its travel.
TEST(TwinWorld, AFrameShowsTheLensAtTheMiddleOfItsTime) {
    sim::TwinWorld world;
    world.setFramePeriod(std::chrono::seconds(1));
    const double sharp = edgeDetail(readFrame(world));
    world.moveLens(2048);
    EXPECT_EQ(world.lensPosition(), sim::lens::kDefaultFocus + 2048);
    EXPECT_NEAR(edgeDetail(readFrame(world)), sharp, 0.05 * sharp);
    std::this_thread::sleep_for(std::chrono::milliseconds(600));
    EXPECT_LT(edgeDetail(readFrame(world)), 0.8 * sharp);
    world.moveLens(-2 * sim::lens::kTravelSteps);
    EXPECT_EQ(world.lensPosition(), 0);
}

}  // namespace
