// What each work mode of the capture thread costs per frame, beside the camera's 33.3 ms frame
// period: the thread's work on twin frames, without the camera's wait. The live modes spread
// their search and sharpness over the frames, so their time is the mean over many frames; the
// capture modes (1, 4, 5, 10) do their whole work on one frame.

#include <benchmark/benchmark.h>

#include <QDir>
#include <QTemporaryDir>
#include <vector>

#include "capturethread.h"
#include "libdisplay.h"
#include "platformroot.h"
#include "twinworld.h"

namespace {

constexpr double kFramePeriodMs = 1000.0 / 30.0;
constexpr int kFrames = 4;

// A few successive frames of the twin's sharp single fiber.
const std::vector<std::vector<uint16_t>>& twinFrames() {
    static const std::vector<std::vector<uint16_t>> frames = [] {
        sim::TwinWorld world;
        std::vector<std::vector<uint16_t>> f(kFrames, std::vector<uint16_t>(kSensorPixels));
        for (std::vector<uint16_t>& frame : f) {
            world.readFrame(frame.data());
        }
        return f;
    }();
    return frames;
}

// A root with an SD card, for the PNG captures.
void useRootWithCard() {
    static QTemporaryDir root;
    setPlatformRoot(root.path());
    QDir().mkpath(platformPath("/mnt/sdcard/sd"));
}

void BM_WorkMode(benchmark::State& state) {
    const int mode = int(state.range(0));
    useRootWithCard();
    const auto& frames = twinFrames();
    std::vector<uint8_t> picture(size_t(VIDEO_WIDTH) * VIDEO_HEIGHT * 2, 128);
    CaptureThread thread;
    thread.setSharpnessWatch(true);
    // A sharpness sample returns to the live mode it came from.
    thread.setThreadWorkMode(CAPTURE_SINGLE_FIBER_LIVE);
    thread.processFrame(frames[0].data(), nullptr);
    int i = 0;
    for (auto _ : state) {
        thread.setThreadWorkMode(mode);
        thread.processFrame(frames[i++ % kFrames].data(), picture.data());
    }
    state.counters["frame_period_ms"] = kFramePeriodMs;
}
BENCHMARK(BM_WorkMode)
    ->ArgName("mode")
    ->DenseRange(0, 2)
    ->DenseRange(4, 10)
    ->Unit(benchmark::kMillisecond);

}  // namespace
