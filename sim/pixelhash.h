#pragma once

#include <cstdint>

// Random numbers tied to a pixel's place on the frame rather than to the order of drawing, so
// that a window of a frame sees exactly the numbers the whole frame sees. A line key picks the
// stream (seed, purpose, frame row); the pixel's column then picks the number.
namespace sim {

enum class HashStream : uint32_t { Grain = 1, Noise = 2, Shading = 3, SpotOutline = 4 };

// An integer finalizer with good avalanche (every input bit flips about half the output bits).
inline uint32_t mixBits(uint32_t h) {
    h ^= h >> 16;
    h *= 0x7feb352du;
    h ^= h >> 15;
    h *= 0x846ca68bu;
    h ^= h >> 16;
    return h;
}

inline uint32_t lineKey(uint32_t seed, HashStream stream, int line) {
    return mixBits(mixBits(seed ^ (uint32_t(stream) * 0x9e3779b9u)) + uint32_t(line));
}

inline uint32_t pixelHash(uint32_t key, int column) {
    return mixBits(key ^ (uint32_t(column) * 0x85ebca6bu));
}

// Uniform in [0, 1).
inline double unitFromHash(uint32_t h) {
    return h / 4294967296.0;
}

// Close to a standard normal number: the sum of the hash's four bytes, centred and scaled to
// unit variance (a four-term Irwin-Hall sum; tails end at about 3.5 sigma).
inline float normalFromHash(uint32_t h) {
    const int sum = int(h & 0xffu) + int((h >> 8) & 0xffu) + int((h >> 16) & 0xffu) + int(h >> 24);
    return float(sum - 510) * (1.0f / 147.8f);
}

}  // namespace sim
