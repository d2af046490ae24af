// The line segment detector on a rendered 960 x 960 measurement region (a fiber with scratches,
// spots and the end face's texture), as the scratch search runs it at sens 16 (sigma_scale 0.8,
// mode 1; the 8-bit frame converted to doubles included), against OpenCV's implementation of
// the same method with the same parameters. Compare the medians:
//   bench_lsd --benchmark_repetitions=9 --benchmark_report_aggregates_only=true
// Beside them, the whole scratch search of the same region under the first built-in task.

#include <benchmark/benchmark.h>

#include <opencv2/imgproc.hpp>

#include <cmath>
#include <vector>

#include "endfacerenderer.h"
#include "factorytasks.h"
#include "scratchcheck.h"
#include "segmentsearch.h"

namespace {

constexpr int kRegion = 960;
constexpr int kSens = 16;

struct Region {
    std::vector<unsigned char> gray = std::vector<unsigned char>(kRegion * kRegion);

    Region() {
        sim::EndFaceScene scene;
        const double cx = scene.centerX, cy = scene.centerY;
        scene.scratches = {
            sim::Scratch{cx - 150.0, cy - 200.0, cx + 60.0, cy + 210.0, 2.0, 20.0, false},
            sim::Scratch{cx - 220.0, cy + 40.0, cx + 200.0, cy - 50.0, 1.5, 15.0, true},
            sim::Scratch{cx - 40.0, cy - 60.0, cx - 20.0, cy + 100.0, 3.0, 25.0, false},
        };
        for (int i = 0; i < 20; ++i) {
            scene.spots.push_back(
                sim::spotAtRadius(scene, 10.0 + 4.0 * i, 137.5 * i, 3.0 + i % 6, 40.0));
        }
        sim::renderGray(scene, int(cx) - kRegion / 2, int(cy) - kRegion / 2, kRegion, kRegion,
                        gray.data());
    }
};

const Region& region() {
    static const Region r;
    return r;
}

// The whole region: r above rLimit, no annuli, no exclusions.
void BM_FindLumaspecSegment(benchmark::State& state) {
    const Region& r = region();
    int count = 0;
    for (auto _ : state) {
        double* segments = nullptr;
        FindLumaspecSegment(r.gray.data(), kRegion, kRegion, kRegion / 2, kRegion / 2,
                            2.0 * kRegion, kRegion, 0, nullptr, nullptr, 0, kSens, &segments,
                            &count);
        freeLineSegments(segments);
    }
    state.counters["segments"] = count;
}
BENCHMARK(BM_FindLumaspecSegment)->Unit(benchmark::kMillisecond);

void BM_OpenCvLineSegmentDetector(benchmark::State& state) {
    const Region& r = region();
    const LumaspecSegmentSettings settings = lumaspecSegmentSettings(kSens);
    const cv::Mat image(kRegion, kRegion, CV_8UC1, const_cast<unsigned char*>(r.gray.data()));
    cv::Ptr<cv::LineSegmentDetector> lsd = cv::createLineSegmentDetector(
        cv::LSD_REFINE_ADV, 0.6, settings.sigmaScale, 1.0, 22.5, 0.0, 0.7, 1024);
    std::vector<cv::Vec4f> lines;
    for (auto _ : state) {
        lsd->detect(image, lines);
        benchmark::DoNotOptimize(lines.data());
    }
    state.counters["segments"] = double(lines.size());
}
BENCHMARK(BM_OpenCvLineSegmentDetector)->Unit(benchmark::kMillisecond);

// Segments, merging, extension to the inspection circle and grading, as the measurement run
// calls it (the cladding edge excluded, no defect boxes).
void BM_FindSectionScratch(benchmark::State& state) {
    const Region& r = region();
    const TaskInfoSetting firstTask = factoryTasks().value(0);
    const double claddingEdge[] = {110.0, 135.0};
    std::vector<ScratchRecord> scratches(200);
    std::vector<short> zones(200);
    int count = 0;
    for (auto _ : state) {
        TaskInfoSetting task = firstTask;
        FindSectionScratch(r.gray.data(), kRegion, kRegion, scratches.data(), zones.data(), 200,
                           count, task, float(kUmPerPixel), kRegion / 2, kRegion / 2, 125.0, 125.0,
                           claddingEdge, 1, nullptr, 0);
    }
    state.counters["scratches"] = count;
}
BENCHMARK(BM_FindSectionScratch)->Unit(benchmark::kMillisecond);

}  // namespace
