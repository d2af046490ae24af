// Throughput of the frame conversions on a full sensor frame, next to memcpy of the same
// source bytes in the same run: the conversions are meant to run at the speed of memory.
// Every conversion reports the bytes of the source frame as its bytes processed, so its
// throughput compares directly with the source memcpy.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "libcapture.h"

namespace {

constexpr std::size_t kFrameSamples = std::size_t(kSensorWidth) * kSensorHeight;
constexpr std::size_t kFrameBytes = kFrameSamples * sizeof(uint16_t);

// Random 10-bit samples with a fixed seed: content the compiler cannot guess, and the same
// from one run to the next.
const std::vector<uint16_t>& frame() {
    static const std::vector<uint16_t> samples = [] {
        std::mt19937 generator(20261122);
        std::uniform_int_distribution<int> tenBits(0, 1023);
        std::vector<uint16_t> s(kFrameSamples);
        for (uint16_t& sample : s) {
            sample = uint16_t(tenBits(generator));
        }
        return s;
    }();
    return samples;
}

template <typename Out>
using Conversion = int (*)(const uint16_t*, Out*, unsigned, unsigned, unsigned, unsigned, unsigned,
                           unsigned);

// Runs one conversion over the whole frame into a destination of dstBytes bytes. The
// destination starts gray (128), as the capture layer's UYVY buffers do.
template <typename Out>
void runConversion(benchmark::State& state, Conversion<Out> convert, std::size_t dstBytes) {
    const std::vector<uint16_t>& src = frame();
    std::vector<Out> dst(dstBytes / sizeof(Out), Out(128));
    for (auto _ : state) {
        convert(src.data(), dst.data(), kSensorWidth, kSensorHeight, 0, 0, kSensorWidth,
                kSensorHeight);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kFrameBytes));
}

constexpr std::size_t kGrayBytes = kFrameSamples;
constexpr std::size_t kHalfGrayBytes = kFrameSamples / 4;
constexpr std::size_t kUyvyBytes = 2 * kFrameSamples;
constexpr std::size_t kHalfUyvyBytes = std::size_t(kSensorWidth) * kSensorHeight / 2;

void BM_Y8(benchmark::State& state) {
    runConversion<uint8_t>(state, convert_y10bit_to_y8bit, kGrayBytes);
}
void BM_Y8ScaleIn(benchmark::State& state) {
    runConversion<uint8_t>(state, convert_y10bit_to_y8bit_scaleIn, kHalfGrayBytes);
}
void BM_Y8ScaleInSkip(benchmark::State& state) {
    runConversion<uint8_t>(state, convert_y10bit_to_y8bit_scaleIn_skip, kHalfGrayBytes);
}
void BM_Yuv422ile(benchmark::State& state) {
    runConversion<uint8_t>(state, convert_y10bit_to_yuv422ile, kUyvyBytes);
}
void BM_Yuv422ileScaleIn(benchmark::State& state) {
    runConversion<uint8_t>(state, convert_y10bit_to_yuv422ile_scaleIn, kHalfUyvyBytes);
}
void BM_Roi(benchmark::State& state) {
    runConversion<uint16_t>(state, roi_y10bit_image, kFrameBytes);
}

// memcpy of state.range(0) bytes of the frame: the source size is the yardstick, the
// destination sizes of the conversions are there for reference.
void BM_Memcpy(benchmark::State& state) {
    const std::size_t bytes = std::size_t(state.range(0));
    const std::vector<uint16_t>& src = frame();
    std::vector<uint8_t> dst(bytes);
    for (auto _ : state) {
        std::memcpy(dst.data(), src.data(), bytes);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes));
}

}  // namespace

BENCHMARK(BM_Memcpy)
    ->Arg(kFrameBytes)
    ->Arg(kGrayBytes)
    ->Arg(kHalfUyvyBytes)
    ->Arg(kHalfGrayBytes)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Y8)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Y8ScaleIn)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Y8ScaleInSkip)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Yuv422ile)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Yuv422ileScaleIn)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Roi)->Unit(benchmark::kMicrosecond);
