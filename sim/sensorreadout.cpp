#include "sensorreadout.h"

#include <algorithm>
#include <cmath>

#include "illumination.h"
#include "pixelhash.h"

namespace sim {

namespace {

constexpr double kLevelsPer8Bit = 4.0;
constexpr double kMaxRaw = 1023.0;

uint16_t quantise(double level8) {
    return uint16_t(std::clamp(std::floor(level8 * kLevelsPer8Bit + 0.5), 0.0, kMaxRaw));
}

}  // namespace

void readOut(const EndFaceScene& scene, const Canvas& light, uint16_t* out, int stride) {
    const Illumination illumination(scene.vignetting);
    for (int j = 0; j < light.height; ++j) {
        const int y = light.top + j;
        const uint32_t key = lineKey(scene.seed, HashStream::Noise, y);
        const float* in = light.row(j);
        uint16_t* raw = out + size_t(j) * stride;
        for (int i = 0; i < light.width; ++i) {
            const int x = light.left + i;
            const double noise = scene.noiseSigma * normalFromHash(pixelHash(key, x));
            raw[i] = quantise(in[i] * illumination.at(x, y) * scene.exposure + noise);
        }
    }
}

}  // namespace sim
