#include "noisebank.h"

#include <random>

namespace sim {

NoiseBank::NoiseBank(uint32_t seed) : values_(kSize + kRowReach) {
    std::mt19937 random(seed);
    std::normal_distribution<float> normal;
    for (uint32_t i = 0; i < kSize; ++i) {
        values_[i] = normal(random);
    }
    std::copy(values_.begin(), values_.begin() + kRowReach, values_.begin() + kSize);
}

}  // namespace sim
