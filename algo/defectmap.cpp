#include "defectmap.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "nobadalloc.h"

namespace {

constexpr int kBorder = 4;

// The largest of |p(x+1) - p(x-2)|, |p(x) - p(x-1)| and the same two along the column.
int contrastAt(const unsigned char* p, int width) {
    const int horizontal = std::max(std::abs(p[1] - p[-2]), std::abs(p[0] - p[-1]));
    const int vertical = std::max(std::abs(p[width] - p[-2 * width]), std::abs(p[0] - p[-width]));
    return std::max(horizontal, vertical);
}

// The smallest whole t >= 0 with t^2 >= need.
long smallestRoot(long need) {
    if (need <= 0) {
        return 0;
    }
    long t = long(std::sqrt(double(need)));
    while (t > 0 && (t - 1) * (t - 1) >= need) {
        --t;
    }
    while (t * t < need) {
        ++t;
    }
    return t;
}

}  // namespace

double GetPixelDefectThresh(const unsigned char* image, int x, int y, int width, int mode) {
    const unsigned char* p = image + static_cast<long>(y) * width + x;
    return mode == 1 ? *p : contrastAt(p, width);
}

int GetFiberDefectMap::SetRadiusList(const int* radii, const double* thresholds, int count) {
    return minusOneOnBadAlloc([&] {
        if (count < 0 || count > kMaxRings) {
            return -1;
        }
        std::copy(radii, radii + 2 * count, radii_);
        std::copy(thresholds, thresholds + count, thresholds_);
        count_ = count;
        return count;
    });
}

int GetFiberDefectMap::largestRadius() const {
    return count_ == 0 ? 0 : *std::max_element(radii_, radii_ + 2 * count_);
}

// The pixels of row y whose contrast exceeds their ring's threshold. Along the row, the
// squared distance is dy2 + t^2 with t = |x - cx|: each ring holds the whole t from `first`
// (inner^2 < dy2 + t^2) to before `end` (dy2 + t^2 < outer^2), so the row falls into stretches
// of t between those bounds, each in one ring (the first, in list order, that holds it) or in
// none, and only the stretches in a ring are looked at.
void GetFiberDefectMap::markRow(const unsigned char* image, unsigned char* defectMap, int width,
                                int y, int cx, int colFirst, int colLast, long dy2,
                                const int* wholeThresholds) const {
    long first[kMaxRings], end[kMaxRings], bounds[2 * kMaxRings];
    for (int k = 0; k < count_; ++k) {
        const long inner = radii_[2 * k], outer = radii_[2 * k + 1];
        first[k] = bounds[2 * k] = smallestRoot(inner * inner + 1 - dy2);
        end[k] = bounds[2 * k + 1] = smallestRoot(outer * outer - dy2);
    }
    std::sort(bounds, bounds + 2 * count_);
    const long* boundsEnd = std::unique(bounds, bounds + 2 * count_);
    const long rowOffset = static_cast<long>(y) * width;
    for (const long* b = bounds; b + 1 < boundsEnd; ++b) {
        int ring = 0;
        while (ring < count_ && !(first[ring] <= *b && *b < end[ring])) {
            ++ring;
        }
        if (ring == count_) {
            continue;
        }
        // The stretch's pixels right of the center, then left of it (the center only once).
        const long ranges[2][2] = {
            {std::max(cx + b[0], long(colFirst)), std::min(cx + b[1], long(colLast))},
            {std::max(cx - b[1] + 1, long(colFirst)),
             std::min(cx - std::max(b[0], 1L) + 1, long(colLast))}};
        for (const auto& range : ranges) {
            for (long x = range[0]; x < range[1]; ++x) {
                if (contrastAt(image + rowOffset + x, width) > wholeThresholds[ring]) {
                    defectMap[rowOffset + x] = 255;
                }
            }
        }
    }
}

// The contrast (a whole number) is compared with the whole part of the ring's threshold: above
// the one exactly when above the other.
void GetFiberDefectMap::GetNearBwDefectImgMap(const unsigned char* image, unsigned char* defectMap,
                                              int width, int height, int cx, int cy) const {
    std::memset(defectMap, 0, static_cast<size_t>(width) * height);
    const int reach = largestRadius() - kBorder;
    const int rowFirst = std::max(cy - reach, kBorder),
              rowLast = std::min(cy + reach, height - kBorder + 1);
    const int colFirst = std::max(cx - reach, kBorder),
              colLast = std::min(cx + reach, width - kBorder + 1);
    int wholeThresholds[kMaxRings];
    for (int k = 0; k < count_; ++k) {
        wholeThresholds[k] = int(std::max(-1.0, std::min(std::floor(thresholds_[k]), 1e9)));
    }
    for (int y = rowFirst; y < rowLast; ++y) {
        markRow(image, defectMap, width, y, cx, colFirst, colLast,
                static_cast<long>(y - cy) * (y - cy), wholeThresholds);
    }
}
