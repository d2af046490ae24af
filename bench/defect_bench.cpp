// Defect detection on a rendered 960 x 960 measurement region under the first built-in task,
// clean and with 50 spots.

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "endfacerenderer.h"
#include "factorytasks.h"
#include "finddefect.h"
#include "sectionmap.h"

namespace {

constexpr int kRegion = 960;
constexpr float kScale = kUmPerPixel;

struct Measurement {
    std::vector<unsigned char> gray = std::vector<unsigned char>(kRegion * kRegion);
    std::vector<unsigned char> map = std::vector<unsigned char>(kRegion * kRegion);
    std::vector<unsigned char> map2 = std::vector<unsigned char>(kRegion * kRegion);
    std::vector<unsigned char> zones = std::vector<unsigned char>(kRegion * kRegion);
    std::vector<short> labels = std::vector<short>(kRegion * kRegion);
    std::vector<defect_info_struct> defects = std::vector<defect_info_struct>(500);
    TaskInfoSetting task = factoryTasks().value(0);

    explicit Measurement(int spotCount) {
        sim::EndFaceScene scene;
        // Spread over zones B and D at golden-angle steps, 3 to 10 um, well above the
        // thresholds.
        for (int i = 0; i < spotCount; ++i) {
            const double radius = i < 20 ? 16.0 + 1.8 * i : 72.0 + 1.5 * (i - 20);
            scene.spots.push_back(sim::spotAtRadius(scene, radius, 137.5 * i, 3.0 + (i % 8), 60.0));
        }
        sim::renderGray(scene, 320, 120, kRegion, kRegion, gray.data());
        initSectionMapByTaskInfoSF(task, zones.data(), kRegion, kRegion, 480, 480, kScale);
    }

    int detect() {
        TaskInfoSetting graded = task;
        const int bands[] = {110, 135};
        return AlgGetFiberDefect(gray.data(), nullptr, map.data(), map2.data(), zones.data(),
                                 graded, kRegion, kRegion, 480, 480, kScale, bands, 1,
                                 defects.data(), labels.data(), 500);
    }
};

void BM_AlgGetFiberDefect(benchmark::State& state) {
    Measurement measurement(static_cast<int>(state.range(0)));
    int found = 0;
    for (auto _ : state) {
        found = measurement.detect();
        benchmark::DoNotOptimize(found);
    }
    state.counters["defects"] = found;
}
BENCHMARK(BM_AlgGetFiberDefect)->Arg(0)->Arg(50)->Unit(benchmark::kMillisecond);

}  // namespace
