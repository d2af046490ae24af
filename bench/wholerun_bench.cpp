// A whole single-fiber inspection of a rendered frame with a few spots and a scratch, as the
// instrument does it after a trigger, with the time of each stage; and the throughput of a
// batch of frames on one and on two jobs.

#include <benchmark/benchmark.h>

#include <QElapsedTimer>
#include <opencv2/core/utility.hpp>
#include <thread>
#include <vector>

#include "endfacerenderer.h"
#include "factorytasks.h"
#include "singlefibersequence.h"

namespace {

std::vector<uint16_t> renderedFrame(uint32_t seed) {
    sim::EndFaceScene scene;
    scene.centerX = 760.0 + seed % 7 * 10;
    scene.centerY = 580.0 + seed % 5 * 8;
    scene.seed = seed;
    scene.spots.push_back(sim::spotAtRadius(scene, 20.0, 30.0, 5.0, 40.0));
    scene.spots.push_back(sim::spotAtRadius(scene, 45.0, 160.0, 9.0, 30.0, true));
    scene.spots.push_back(sim::spotAtRadius(scene, 90.0, 250.0, 7.0, 60.0));
    scene.scratches.push_back({scene.centerX - 80, scene.centerY - 60, scene.centerX + 110,
                               scene.centerY + 90, 2.5, 30.0});
    std::vector<uint16_t> frame(kSensorPixels);
    sim::renderRaw(scene, 0, 0, kSensorWidth, kSensorHeight, frame.data());
    return frame;
}

// Search, window and measurement of one frame; the search's time in milliseconds.
double inspectFrame(SingleFiberInspection& inspection, const std::vector<uint16_t>& frame,
                    const TaskInfoSetting& task) {
    QElapsedTimer timer;
    timer.start();
    const FiberPlace place = inspection.searchFrame(frame.data());
    const double searchMs = timer.nsecsElapsed() / 1e6;
    QString saveProblem;
    inspection.measure(task, inspection.cutWindow(frame.data(), place), nullptr, {}, saveProblem);
    return searchMs;
}

void BM_WholeInspection(benchmark::State& state) {
    const std::vector<uint16_t> frame = renderedFrame(1);
    const TaskInfoSetting task = factoryTasks().value(0);
    SingleFiberInspection inspection;
    double search = 0, defects = 0, scratches = 0, overlay = 0, total = 0;
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        search += inspectFrame(inspection, frame, task);
        total += timer.nsecsElapsed() / 1e6;
        const MeasureSingleFiberThread::StageTimes& times = inspection.run().stageTimes();
        defects += times.defects;
        scratches += times.scratches;
        overlay += times.overlay;
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
    std::vector<std::vector<uint16_t>> frames;
    for (uint32_t i = 0; i < 40; ++i) {
        frames.push_back(renderedFrame(i + 1));
    }
    const TaskInfoSetting task = factoryTasks().value(0);
    for (auto _ : state) {
        std::atomic<int> next{0};
        std::vector<std::thread> workers;
        for (int j = 0; j < jobs; ++j) {
            workers.emplace_back([&] {
                SingleFiberInspection inspection;
                for (int i = next++; i < int(frames.size()); i = next++) {
                    benchmark::DoNotOptimize(inspectFrame(inspection, frames[size_t(i)], task));
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
