#include "segmentsearch.h"

#include <cstdio>
#include <cstdlib>

#include "nobadalloc.h"

namespace {

// The instrument's detector settings (the paper suggests a scale of 0.8 and quant 2.0).
constexpr double kScale = 0.6;
constexpr double kQuant = 1.0;
constexpr double kAngTh = 22.5;
constexpr double kLogEps = 0.0;
constexpr double kDensityTh = 0.7;
constexpr int kBins = 1024;

// The faint pass of mode 2: the same test with a gradient threshold ten times lower.
constexpr double kFaintLogEps = 0.0;
constexpr double kFaintQuant = 0.1;
constexpr double kFaintAngTh = 22.5;
constexpr double kFaintDensityTh = 0.7;

// The part of the frame given to the detector: columns left..left + width - 1, rows
// top..top + height - 1.
struct Crop {
    int left;
    int top;
    int width;
    int height;
};

// [c - r, c + r] truncated, clipped at 0 and at the frame's size n.
void clipAxis(int c, double r, int n, int& first, int& size) {
    first = c - r <= 0.0 ? 0 : static_cast<int>(c - r);
    const int last = c + r > n ? n : static_cast<int>(c + r);
    size = last - first;
}

Crop searchCrop(int width, int height, int cx, int cy, double r, double rLimit) {
    if (r > rLimit) {
        return Crop{0, 0, width, height};
    }
    Crop crop{};
    clipAxis(cx, r, width, crop.left, crop.width);
    clipAxis(cy, r, height, crop.top, crop.height);
    return crop;
}

// malloc, ending the process as the instrument does when memory is out.
void* allocateOrExit(size_t bytes) {
    void* p = std::malloc(bytes);
    if (p == nullptr) {
        std::fputs("error: not enough memory\n", stderr);
        std::exit(1);
    }
    return p;
}

double* toDoubles(const unsigned char* image, int width, const Crop& crop) {
    double* out =
        static_cast<double*>(allocateOrExit(size_t(crop.width) * crop.height * sizeof(double)));
    for (int y = 0; y < crop.height; ++y) {
        const unsigned char* row = image + size_t(crop.top + y) * width + crop.left;
        for (int x = 0; x < crop.width; ++x) {
            out[size_t(y) * crop.width + x] = row[x];
        }
    }
    return out;
}

// A copy of the rectangles in the crop's coordinates.
defect_info_struct* translated(const defect_info_struct* rects, int count, const Crop& crop) {
    auto* out = static_cast<defect_info_struct*>(
        allocateOrExit(size_t(count > 0 ? count : 1) * sizeof(defect_info_struct)));
    for (int i = 0; i < count; ++i) {
        out[i] = rects[i];
        out[i].top = static_cast<int16_t>(rects[i].top - crop.top);
        out[i].bottom = static_cast<int16_t>(rects[i].bottom - crop.top);
        out[i].left = static_cast<int16_t>(rects[i].left - crop.left);
        out[i].right = static_cast<int16_t>(rects[i].right - crop.left);
    }
    return out;
}

void toFrame(double* segments, int count, const Crop& crop) {
    for (int i = 0; i < count; ++i) {
        double* s = segments + 7 * size_t(i);
        s[0] += crop.left;
        s[1] += crop.top;
        s[2] += crop.left;
        s[3] += crop.top;
    }
}

}  // namespace

LumaspecSegmentSettings lumaspecSegmentSettings(int sens) {
    if (sens == 20) {
        return {0.8, 2};
    }
    if (sens == 10) {
        return {1.2, 2};
    }
    if ((sens >= 5 && sens <= 9) || (sens >= 15 && sens <= 19)) {
        return {0.8, 1};
    }
    return {1.2, 1};
}

int FindLumaspecSegment(const unsigned char* image, int width, int height, int cx, int cy, double r,
                        double rLimit, int annulusCount, const double* annulusRadii,
                        const defect_info_struct* exclusions, int exclusionCount, int sens,
                        double** segments, int* segmentCount) {
    return minusOneOnBadAlloc([&] {
        const Crop crop = searchCrop(width, height, cx, cy, r, rLimit);
        *segments = nullptr;
        *segmentCount = 0;
        if (crop.width <= 0 || crop.height <= 0) {
            return 0;
        }
        const LumaspecSegmentSettings settings = lumaspecSegmentSettings(sens);
        double* pixels = toDoubles(image, width, crop);
        defect_info_struct* rects = translated(exclusions, exclusionCount, crop);
        *segments = LineSegmentDetection(
            segmentCount, pixels, crop.width, crop.height, kScale, settings.sigmaScale, kQuant,
            kAngTh, kLogEps, kDensityTh, kBins, kFaintLogEps, kFaintQuant, kFaintAngTh,
            kFaintDensityTh, nullptr, nullptr, nullptr, settings.mode, cx - crop.left,
            cy - crop.top, r, annulusCount, annulusRadii, rects, exclusionCount);
        std::free(rects);
        std::free(pixels);
        toFrame(*segments, *segmentCount, crop);
        return *segmentCount;
    });
}
