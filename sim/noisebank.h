#pragma once

#include <cstdint>
#include <vector>

namespace sim {

// Standard normal numbers drawn once, so that a frame's sensor noise costs a lookup per pixel
// instead of a random draw. Each frame reads its rows from a different place in the bank.
class NoiseBank {
public:
    static constexpr uint32_t kSize = 1u << 20;

    explicit NoiseBank(uint32_t seed);

    // How many numbers can be read in a row from any start.
    static constexpr uint32_t kRowReach = 4096;

    // The numbers from position `start` on (any value: it wraps around the bank).
    const float* numbers(uint32_t start) const { return values_.data() + (start & (kSize - 1)); }

private:
    std::vector<float> values_;  // kSize numbers, then the first kRowReach again
};

}  // namespace sim
