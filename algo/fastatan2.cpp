#include "fastatan2.h"

#include <cmath>

namespace {

constexpr float kPi = 3.1415927f;
constexpr float kHalfPi = 1.5707964f;

// Below this ratio of the smaller to the larger magnitude, the ratio is its own arctangent
// (the error is under t^3 / 3, about 2e-8 rad).
constexpr float kSmallRatio = 0.003921569f;  // 1/255

constexpr int kTableSize = 257;

// atan(k / 255) for k = 0..255, and pi/4 once more at 256 so that the interpolation at the
// top entry needs no special case.
struct ArctanTable {
    float t[kTableSize];
    ArctanTable() {
        for (int k = 0; k < kTableSize - 1; ++k) {
            t[k] = static_cast<float>(std::atan(k / 255.0));
        }
        t[kTableSize - 1] = t[kTableSize - 2];
    }
};

// The arctangent of a ratio in [0, 1]. The index is scaled by 256 although the table is spaced
// by 1/255: that pairing is the instrument's, and the outputs depend on it.
float arctanOfRatio(float t) {
    static const ArctanTable table;
    if (t < kSmallRatio) {
        return t;
    }
    const float u = t * 256.0f - 0.5f;
    const int k = static_cast<int>(u);
    return table.t[k] + (table.t[k + 1] - table.t[k]) * (u - static_cast<float>(k));
}

}  // namespace

float fastAtan2(float y, float x) {
    if (y == 0.0f && x == 0.0f) {
        return 0.0f;
    }
    const float a = std::fabs(y);
    const float b = std::fabs(x);
    if (a < b) {  // within 45 degrees of the x axis
        const float t = arctanOfRatio(a / b);
        if (x >= 0.0f) {
            return y >= 0.0f ? t : -t;
        }
        return y >= 0.0f ? kPi - t : t - kPi;
    }
    const float t = arctanOfRatio(b / a);  // within 45 degrees of the y axis
    if (y >= 0.0f) {
        return x >= 0.0f ? kHalfPi - t : kHalfPi + t;
    }
    return x >= 0.0f ? t - kHalfPi : -kHalfPi - t;
}
