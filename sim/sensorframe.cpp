#include "sensorframe.h"

#include <cmath>

namespace sim {

namespace {

// Noise in 10-bit levels: the shot noise's variance grows with the signal (about 50 electrons
// a level), the read noise is fixed. At the ferrule's nominal level the two give about one
// 8-bit level, what the real pictures show.
constexpr float kShotVariancePerLevel = 0.02f;
constexpr float kReadNoise = 2.0f;
constexpr float kMaxSample = 1023.0f + 0.5f;  // before the rounding's truncation
// Rows take their noise this far apart in the bank, so that no two rows of a frame share it.
constexpr uint32_t kNoiseRowStride = 7919;

// One row: bilinear between two light rows, gain, noise, rounding and clipping. Plain float
// arithmetic on restrict pointers, with the clipping written as comparisons (fmin and fmax must
// care for NaNs), so that the loop vectorises, the square root included.
void readOutRow(const float* __restrict top, const float* __restrict bottom,
                const float* __restrict noise, const float weights[4], float gain,
                uint16_t* __restrict out) {
    const float w00 = weights[0], w01 = weights[1], w10 = weights[2], w11 = weights[3];
    for (int i = 0; i < kSensorWidth; ++i) {
        const float light = w00 * top[i] + w01 * top[i + 1] + w10 * bottom[i] + w11 * bottom[i + 1];
        const float signal = light * gain;
        const float sigma = std::sqrt(signal * kShotVariancePerLevel + kReadNoise * kReadNoise);
        float sample = signal + sigma * noise[i] + 0.5f;
        sample = sample < 0.0f ? 0.0f : sample;
        sample = sample > kMaxSample ? kMaxSample : sample;
        out[i] = uint16_t(int(sample));
    }
}

}  // namespace

void readOutFrame(const LightField& light, const NoiseBank& noise, const FrameReadout& readout,
                  uint16_t* frame) {
    // Frame pixel (x, y) sees the light at (x + shakeX, y + shakeY).
    const int shiftX = int(std::floor(readout.shakeX)), shiftY = int(std::floor(readout.shakeY));
    const float fx = float(readout.shakeX - shiftX), fy = float(readout.shakeY - shiftY);
    const float weights[4] = {(1 - fx) * (1 - fy), fx * (1 - fy), (1 - fx) * fy, fx * fy};
    const float gain = float(readout.gain);
    for (int y = 0; y < kSensorHeight; ++y) {
        const float* top = light.row(y + shiftY) + LightField::kMargin + shiftX;
        const float* bottom = light.row(y + shiftY + 1) + LightField::kMargin + shiftX;
        readOutRow(top, bottom, noise.numbers(readout.noiseStart + uint32_t(y) * kNoiseRowStride),
                   weights, gain, frame + size_t(y) * kSensorWidth);
    }
}

}  // namespace sim
