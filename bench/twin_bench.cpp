// The twin's camera: a full frame read out with the lens standing still (the light cached),
// which must take less than the 33.3 ms frame period on one core; and a frame after the lens
// moved to a new position, which renders the scene's light again (on every core).

#include <benchmark/benchmark.h>

#include <vector>

#include "lensoptics.h"
#include "twinworld.h"

namespace {

void reportAgainstPeriod(benchmark::State& state) {
    state.counters["frames_per_s"] =
        benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["period_ms"] = 1000.0 / 30.0;
}

void BM_TwinFrameLensStill(benchmark::State& state) {
    sim::TwinWorld world;
    std::vector<uint16_t> frame(kSensorPixels);
    world.readFrame(frame.data());  // renders the light once
    for (auto _ : state) {
        world.readFrame(frame.data());
        benchmark::DoNotOptimize(frame.data());
    }
    reportAgainstPeriod(state);
}
BENCHMARK(BM_TwinFrameLensStill)->Unit(benchmark::kMillisecond);

void BM_TwinFrameLensMoved(benchmark::State& state) {
    sim::TwinWorld world;
    std::vector<uint16_t> frame(kSensorPixels);
    int position = sim::lens::kDefaultFocus;
    for (auto _ : state) {
        position += 48;  // one slow autofocus move
        world.setLensPosition(position);
        world.readFrame(frame.data());
        benchmark::DoNotOptimize(frame.data());
    }
    reportAgainstPeriod(state);
}
BENCHMARK(BM_TwinFrameLensMoved)->Unit(benchmark::kMillisecond);

}  // namespace
