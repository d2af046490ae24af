// A whole single-fiber inspection of a rendered frame with a few spots and a scratch, as the
// instrument does it after a trigger, with the time of each stage; and the throughput of a
// batch of frames on one and on two jobs.

#include <benchmark/benchmark.h>

#include <QJsonObject>
#include <opencv2/core/utility.hpp>
#include <thread>
#include <vector>

#include "capturethread.h"
#include "endfacerenderer.h"
#include "factorytasks.h"
#include "inspection.h"
#include "measuresinglefiberthread.h"

namespace {

InspectionInput renderedFrame(uint32_t seed) {
    sim::EndFaceScene scene;
    scene.centerX = 760.0 + seed % 7 * 10;
    scene.centerY = 580.0 + seed % 5 * 8;
    scene.seed = seed;
    scene.spots.push_back(sim::spotAtRadius(scene, 20.0, 30.0, 5.0, 40.0));
    scene.spots.push_back(sim::spotAtRadius(scene, 45.0, 160.0, 9.0, 30.0, true));
    scene.spots.push_back(sim::spotAtRadius(scene, 90.0, 250.0, 7.0, 60.0));
    scene.scratches.push_back({scene.centerX - 80, scene.centerY - 60, scene.centerX + 110,
                               scene.centerY + 90, 2.5, 30.0});
    InspectionInput input;
    input.path = QString("frame-%1").arg(seed);
    input.frame.resize(size_t(kSensorWidth) * kSensorHeight);
    sim::renderRaw(scene, 0, 0, kSensorWidth, kSensorHeight, input.frame.data());
    return input;
}

void BM_WholeInspection(benchmark::State& state) {
    const InspectionInput input = renderedFrame(1);
    const TaskInfoSetting task = factoryTasks().value(0);
    CaptureThread capture;
    MeasureSingleFiberThread measure;
    std::vector<unsigned char> window;
    double search = 0, defects = 0, scratches = 0, overlay = 0, total = 0;
    for (auto _ : state) {
        QString error, saveProblem;
        const QJsonObject ms =
            inspect(input, task, nullptr, {}, {capture, measure, window}, error, saveProblem)["ms"]
                .toObject();
        search += ms["search"].toDouble();
        defects += ms["defects"].toDouble();
        scratches += ms["scratches"].toDouble();
        overlay += ms["overlay"].toDouble();
        total += ms["total"].toDouble();
    }
    const double n = double(state.iterations());
    state.counters["search_ms"] = search / n;
    state.counters["defects_ms"] = defects / n;
    state.counters["scratches_ms"] = scratches / n;
    state.counters["overlay_ms"] = overlay / n;
    // The crop, the zone map, the clearing of the buffers and the run's start.
    state.counters["other_ms"] = (total - search - defects - scratches - overlay) / n;
}
BENCHMARK(BM_WholeInspection)->Unit(benchmark::kMillisecond)->UseRealTime();

// Frames per second over a batch of 40 frames on `jobs` workers.
void BM_Batch(benchmark::State& state) {
    const int jobs = int(state.range(0));
    // The jobs are the parallelism, as in the tool: OpenCV's own threads would only compete.
    cv::setNumThreads(1);
    std::vector<InspectionInput> frames;
    for (uint32_t i = 0; i < 40; ++i) {
        frames.push_back(renderedFrame(i + 1));
    }
    const TaskInfoSetting task = factoryTasks().value(0);
    for (auto _ : state) {
        std::atomic<int> next{0};
        std::vector<std::thread> workers;
        for (int j = 0; j < jobs; ++j) {
            workers.emplace_back([&] {
                CaptureThread capture;
                MeasureSingleFiberThread measure;
                std::vector<unsigned char> window;
                for (int i = next++; i < int(frames.size()); i = next++) {
                    QString error, saveProblem;
                    benchmark::DoNotOptimize(inspect(frames[size_t(i)], task, nullptr, {},
                                                     {capture, measure, window}, error,
                                                     saveProblem));
                }
            });
        }
        for (std::thread& worker : workers) {
            worker.join();
        }
    }
    state.counters["frames_per_second"] = benchmark::Counter(
        double(frames.size()) * double(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_Batch)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

}  // namespace
