#include "endfacerenderer.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "canvas.h"
#include "defectpainter.h"
#include "facepainter.h"
#include "gaussianblur.h"
#include "illumination.h"
#include "sensorreadout.h"

namespace sim {

namespace {

// Windows are rendered in bands of rows, each on its own (in parallel): the memory stays small
// whatever the window, and a band is just a smaller window, which the renderer already draws
// exactly as the whole frame.
constexpr int kBandRows = 64;

// Beyond these a window is surely a mistake (and its coordinates could overflow).
constexpr int kMaxWindowSide = 1 << 16;
constexpr int kMaxWindowOffset = 1 << 24;

void paintScene(const EndFaceScene& scene, Canvas& canvas) {
    paintFace(scene, canvas);
    for (size_t i = 0; i < scene.spots.size(); ++i) {
        paintSpot(scene.spots[i], scene.seed, int(i), canvas);
    }
    for (const Scratch& scratch : scene.scratches) {
        paintScratch(scratch, canvas);
    }
    // Dark dust on a dark place cannot take away more light than there is.
    for (float& level : canvas.pixels) {
        level = std::max(level, 0.0f);
    }
}

Canvas blurredLight(const EndFaceScene& scene, int left, int top, int width, int height) {
    const int reach = blurReach(scene.blurSigmaPx);
    Canvas sharp(left - reach, top - reach, width + 2 * reach, height + 2 * reach);
    paintScene(scene, sharp);
    Canvas light(left, top, width, height);
    gaussianBlur(sharp, scene.blurSigmaPx, light);
    return light;
}

void renderBand(const EndFaceScene& scene, int left, int top, int width, int height, uint16_t* out,
                int stride) {
    readOut(scene, blurredLight(scene, left, top, width, height), out, stride);
}

void lightBand(const EndFaceScene& scene, int left, int top, int width, int height, float* out) {
    const Canvas light = blurredLight(scene, left, top, width, height);
    const Illumination illumination(scene.vignetting);
    for (int j = 0; j < height; ++j) {
        const float* in = light.row(j);
        float* row = out + size_t(j) * width;
        for (int i = 0; i < width; ++i) {
            row[i] = float(in[i] * illumination.at(left + i, top + j));
        }
    }
}

// Calls band(first row, rows) for every band of the window, spread over the cores.
template <typename Band>
void forEachBand(int height, const Band& band) {
    const int bands = (height + kBandRows - 1) / kBandRows;
    std::atomic<int> nextBand{0};
    auto renderBands = [&] {
        for (int b = nextBand++; b < bands; b = nextBand++) {
            const int first = b * kBandRows;
            band(first, std::min(kBandRows, height - first));
        }
    };
    // Plain threads rather than a library's pool: every hand-over is one the thread sanitizer
    // can see, and the bands are large enough that starting the threads costs nothing.
    const int helpers = std::min<int>(bands, int(std::thread::hardware_concurrency())) - 1;
    std::vector<std::thread> threads;
    for (int i = 0; i < helpers; ++i) {
        threads.emplace_back(renderBands);
    }
    renderBands();
    for (std::thread& thread : threads) {
        thread.join();
    }
}

bool isValidWindow(int left, int top, int width, int height) {
    return width > 0 && height > 0 && width <= kMaxWindowSide && height <= kMaxWindowSide &&
           left >= -kMaxWindowOffset && left <= kMaxWindowOffset && top >= -kMaxWindowOffset &&
           top <= kMaxWindowOffset;
}

}  // namespace

int renderRaw(const EndFaceScene& scene, int left, int top, int width, int height, uint16_t* out) {
    if (out == nullptr || !isValidWindow(left, top, width, height) || !isValidScene(scene)) {
        return -1;
    }
    forEachBand(height, [&](int first, int rows) {
        renderBand(scene, left, top + first, width, rows, out + size_t(first) * width, width);
    });
    return 1;
}

int renderLight(const EndFaceScene& scene, int left, int top, int width, int height, float* out) {
    if (out == nullptr || !isValidWindow(left, top, width, height) || !isValidScene(scene)) {
        return -1;
    }
    forEachBand(height, [&](int first, int rows) {
        lightBand(scene, left, top + first, width, rows, out + size_t(first) * width);
    });
    return 1;
}

int renderGray(const EndFaceScene& scene, int left, int top, int width, int height, uint8_t* out) {
    if (out == nullptr || !isValidWindow(left, top, width, height)) {
        return -1;
    }
    // A few bands at a time, so that the 10-bit buffer stays small for any window.
    constexpr int kChunkRows = 4 * kBandRows;
    std::vector<uint16_t> raw(size_t(width) * std::min(height, kChunkRows));
    for (int first = 0; first < height; first += kChunkRows) {
        const int rows = std::min(kChunkRows, height - first);
        if (renderRaw(scene, left, top + first, width, rows, raw.data()) != 1) {
            return -1;
        }
        uint8_t* gray = out + size_t(first) * width;
        for (size_t i = 0; i < size_t(width) * rows; ++i) {
            gray[i] = uint8_t(raw[i] >> 2);
        }
    }
    return 1;
}

}  // namespace sim
