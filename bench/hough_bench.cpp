// The coarse search's circle Hough transform, ours beside OpenCV's, on the same quarter-scale
// picture of a rendered frame (shrunk and smoothed as the search does).

#include <benchmark/benchmark.h>

#include <opencv2/imgproc.hpp>
#include <vector>

#include "endfacerenderer.h"
#include "houghcircles.h"

namespace {

// The search's parameters at quarter scale: centers at least the picture's width apart, Canny
// upper threshold 50, accumulator threshold 25, no radius limits.
constexpr double kScale = 0.25;
constexpr double kMinDist = kSensorWidth * kScale;

cv::Mat quarterScalePicture() {
    sim::EndFaceScene scene;
    scene.centerX = 811.3;
    scene.centerY = 587.6;
    scene.spots.push_back(sim::spotAtRadius(scene, 30.0, 40.0, 5.0, 30.0));
    cv::Mat frame(kSensorHeight, kSensorWidth, CV_8UC1);
    sim::renderGray(scene, 0, 0, kSensorWidth, kSensorHeight, frame.data);
    cv::Mat small;
    cv::resize(frame, small, cv::Size(int(kSensorWidth * kScale), int(kSensorHeight * kScale)), 0.0,
               0.0, cv::INTER_LINEAR);
    cv::GaussianBlur(small, small, cv::Size(5, 5), 0.0);
    return small;
}

const cv::Mat& picture() {
    static const cv::Mat small = quarterScalePicture();
    return small;
}

void BM_HoughOurs(benchmark::State& state) {
    HoughCircle circles[8];
    for (auto _ : state) {
        benchmark::DoNotOptimize(houghCirclesGradient(picture().data, picture().cols,
                                                      picture().rows, kMinDist, 50.0, 25.0, 0, 0,
                                                      circles, 8));
    }
}
BENCHMARK(BM_HoughOurs)->Unit(benchmark::kMillisecond);

void BM_HoughOpenCV(benchmark::State& state) {
    std::vector<cv::Vec3f> circles;
    for (auto _ : state) {
        cv::HoughCircles(picture(), circles, cv::HOUGH_GRADIENT, 1.0, kMinDist, 50.0, 25.0, 0, 0);
        benchmark::DoNotOptimize(circles.data());
    }
}
BENCHMARK(BM_HoughOpenCV)->Unit(benchmark::kMillisecond);

}  // namespace
