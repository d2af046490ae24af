#include "defectmap.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "nobadalloc.h"

namespace {

constexpr int kBorder = 4;

}  // namespace

double GetPixelDefectThresh(const unsigned char* image, int x, int y, int width, int mode) {
    const unsigned char* p = image + static_cast<long>(y) * width + x;
    if (mode == 1) {
        return *p;
    }
    const int horizontal = std::max(std::abs(p[1] - p[-2]), std::abs(p[0] - p[-1]));
    const int vertical = std::max(std::abs(p[width] - p[-2 * width]), std::abs(p[0] - p[-width]));
    return std::max(horizontal, vertical);
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

// The first ring strictly containing the distance: a pixel exactly on a radius is in none.
int GetFiberDefectMap::ringAt(long squaredDistance) const {
    for (int k = 0; k < count_; ++k) {
        const long inner = radii_[2 * k], outer = radii_[2 * k + 1];
        if (inner * inner < squaredDistance && squaredDistance < outer * outer) {
            return k;
        }
    }
    return -1;
}

void GetFiberDefectMap::GetNearBwDefectImgMap(const unsigned char* image, unsigned char* defectMap,
                                              int width, int height, int cx, int cy) const {
    std::memset(defectMap, 0, static_cast<size_t>(width) * height);
    const int reach = largestRadius() - kBorder;
    const int rowFirst = std::max(cy - reach, kBorder),
              rowLast = std::min(cy + reach, height - kBorder + 1);
    const int colFirst = std::max(cx - reach, kBorder),
              colLast = std::min(cx + reach, width - kBorder + 1);
    for (int y = rowFirst; y < rowLast; ++y) {
        const long dy2 = static_cast<long>(y - cy) * (y - cy);
        for (int x = colFirst; x < colLast; ++x) {
            const int ring = ringAt(dy2 + static_cast<long>(x - cx) * (x - cx));
            if (ring >= 0 && GetPixelDefectThresh(image, x, y, width, 0) > thresholds_[ring]) {
                defectMap[static_cast<long>(y) * width + x] = 255;
            }
        }
    }
}
