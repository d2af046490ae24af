// The fiber search on a rendered frame, whole and split into its two stages.

#include <benchmark/benchmark.h>

#include <vector>

#include "endfacerenderer.h"
#include "fibercenter.h"
#include "libcapture.h"
#include "singlefibersearch.h"

namespace {

struct RenderedFrame {
    std::vector<uint16_t> raw = std::vector<uint16_t>(size_t(kSensorWidth) * kSensorHeight);
    std::vector<unsigned char> gray = std::vector<unsigned char>(raw.size());

    RenderedFrame() {
        sim::EndFaceScene scene;
        scene.centerX = 811.3;
        scene.centerY = 587.6;
        scene.spots.push_back(sim::spotAtRadius(scene, 30.0, 40.0, 5.0, 30.0));
        sim::renderRaw(scene, 0, 0, kSensorWidth, kSensorHeight, raw.data());
        convert_y10bit_to_y8bit(raw.data(), gray.data(), kSensorWidth, kSensorHeight, 0, 0,
                                kSensorWidth, kSensorHeight);
    }
};

const RenderedFrame& frame() {
    static const RenderedFrame rendered;
    return rendered;
}

void BM_SearchSingleFiber(benchmark::State& state) {
    std::vector<unsigned char> gray(singleFiberSearchBufferSize(kSensorWidth, kSensorHeight));
    unsigned x, y, rawX, rawY;
    for (auto _ : state) {
        benchmark::DoNotOptimize(searchSingleFiber(frame().raw.data(), kSensorWidth, kSensorHeight,
                                                   gray.data(), x, y, rawX, rawY,
                                                   kMeasureWindowSide, kMeasureWindowSide, true));
    }
}
BENCHMARK(BM_SearchSingleFiber)->Unit(benchmark::kMillisecond);

void BM_CoarseSearchQuarterScale(benchmark::State& state) {
    unsigned x, y;
    for (auto _ : state) {
        benchmark::DoNotOptimize(cvSearchSingleFiber(frame().gray.data(), kSensorWidth,
                                                     kSensorHeight, 0.25, 0, 0, x, y));
    }
}
BENCHMARK(BM_CoarseSearchQuarterScale)->Unit(benchmark::kMillisecond);

void BM_Refinement(benchmark::State& state) {
    std::vector<unsigned char> crop(320 * 320);
    convert_y10bit_to_y8bit(frame().raw.data(), crop.data(), kSensorWidth, kSensorHeight, 811 - 160,
                            587 - 160, 320, 320);
    for (auto _ : state) {
        int x = 160, y = 160, r = 122;
        benchmark::DoNotOptimize(AlgGetFiberCenterXY(crop.data(), 320, 320, 122, x, y, r));
    }
}
BENCHMARK(BM_Refinement)->Unit(benchmark::kMillisecond);

}  // namespace
