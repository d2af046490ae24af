#include "findvaliddefect.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr int kInitialCapacity = 200;
constexpr int kMinRegionSide = 4;  // regions under 4 x 4 pixels are noise
constexpr int kEdgeRingTolerance = 5;
constexpr unsigned char kSet = 255;

// Clears the two outermost rows and columns, so that no region touches the image border.
void clearFrame(unsigned char* map, int width, int height) {
    for (int row : {0, 1, height - 2, height - 1}) {
        std::memset(map + static_cast<long>(row) * width, 0, static_cast<size_t>(width));
    }
    for (int y = 0; y < height; ++y) {
        unsigned char* row = map + static_cast<long>(y) * width;
        row[0] = row[1] = row[width - 2] = row[width - 1] = 0;
    }
}

bool HasColorAdjacencyPixel(const unsigned char* pixel, int width, unsigned char color) {
    return pixel[-1] == color || pixel[1] == color || pixel[-width] == color ||
           pixel[width] == color;
}

void SetWindowColor(unsigned char* pixel, int width, unsigned char color) {
    for (int dy = -1; dy <= 1; ++dy) {
        std::memset(pixel + dy * width - 1, color, 3);
    }
}

bool CheckColorInRange(const unsigned char* pixel, int width, unsigned char color) {
    for (int dy = -1; dy <= 1; ++dy) {
        const unsigned char* row = pixel + dy * width;
        if (row[-1] == color || row[0] == color || row[1] == color) {
            return true;
        }
    }
    return false;
}

// Calls visit(offset) for every set pixel of rows and columns 1 .. size - 3, row by row: the
// set pixels are few, and memchr finds them many bytes at a time.
template <typename Visit>
void forEachSetPixel(const unsigned char* map, int width, int height, Visit visit) {
    for (int y = 1; y < height - 2; ++y) {
        const unsigned char* row = map + static_cast<long>(y) * width;
        const unsigned char* end = row + width - 2;
        for (const unsigned char* p = row + 1;
             (p = static_cast<const unsigned char*>(std::memchr(p, kSet, size_t(end - p)))) !=
             nullptr;
             ++p) {
            visit(p - map);
        }
    }
}

// The closing's dilation: a set pixel with a clear direct neighbour spreads to its 3 x 3
// window. Rows and columns 1 .. size - 3 are visited.
void ImgDilate(const unsigned char* source, unsigned char* target, int width, int height) {
    std::memset(target, 0, static_cast<size_t>(width) * height);
    forEachSetPixel(source, width, height, [&](long offset) {
        if (HasColorAdjacencyPixel(source + offset, width, 0)) {
            SetWindowColor(target + offset, width, kSet);
        } else {
            target[offset] = kSet;
        }
    });
}

// The closing's erosion: a pixel stays set only when its whole 3 x 3 window is set (a clear
// pixel's window holds the pixel itself, so only set pixels need a look).
void ImgErode(const unsigned char* source, unsigned char* target, int width, int height) {
    std::memset(target, 0, static_cast<size_t>(width) * height);
    forEachSetPixel(source, width, height, [&](long offset) {
        target[offset] = CheckColorInRange(source + offset, width, 0) ? 0 : kSet;
    });
}

}  // namespace

GetFiberValidDefect::GetFiberValidDefect()
    : list_(static_cast<defect_info_struct*>(
          std::calloc(kInitialCapacity, sizeof(defect_info_struct)))),
      capacity_(list_ ? kInitialCapacity : 0) {}

int GetFiberValidDefect::GetValidDefect(unsigned char* defectMap, unsigned char* defectMap2,
                                        const unsigned char* zoneMap, int width, int height, int cx,
                                        int cy) {
    zoneMap_ = zoneMap;
    const size_t size = static_cast<size_t>(width) * height;
    std::unique_ptr<unsigned char[]> dilated(new (std::nothrow) unsigned char[size]);
    if (!dilated || !list_ || width < 5 || height < 5) {
        return -1;
    }
    clearFrame(defectMap, width, height);
    ImgDilate(defectMap, dilated.get(), width, height);
    ImgErode(dilated.get(), defectMap, width, height);
    std::memset(defectMap2, 0, size);
    return ClarityLabelingFillFlood(defectMap, width, height, 2, height - 2, 2, width - 2, cx, cy,
                                    defectMap2);
}

int GetFiberValidDefect::ClarityLabelingFillFlood(unsigned char* map, int width, int height,
                                                  int rowFrom, int rowTo, int colFrom, int colTo,
                                                  int cx, int cy, unsigned char* regions) {
    count_ = 0;
    if (colFrom > colTo) {
        return 0;
    }
    // The list grows when it is full, as soon as its last place is taken.
    for (int y = rowFrom; y <= rowTo; ++y) {
        unsigned char* row = map + static_cast<long>(y) * width;
        for (unsigned char* p = row + colFrom;
             (p = static_cast<unsigned char*>(std::memchr(p, kSet, size_t(row + colTo + 1 - p)))) !=
             nullptr;
             ++p) {
            if (FillRegion(map, regions, width, height, int(p - row), y, cx, cy, kMinRegionSide) ==
                0) {
                ++count_;
                if (count_ == capacity_ && !growList()) {
                    return -1;
                }
            }
        }
    }
    return count_;
}

bool GetFiberValidDefect::growList() {
    void* grown = std::realloc(list_.get(), 2 * capacity_ * sizeof(defect_info_struct));
    if (grown == nullptr) {
        return false;
    }
    list_.release();
    list_.reset(static_cast<defect_info_struct*>(grown));
    capacity_ *= 2;
    return true;
}

int GetFiberValidDefect::FillRegion(unsigned char* map, unsigned char* regions, int width,
                                    int height, int x, int y, int cx, int cy, int minSide) {
    int left, top, right, bottom, zone;
    const int pixels = fill_.Fill(map, regions, zoneMap_, width, height, x, y, 0, kSet, kSet, left,
                                  top, right, bottom, zone);
    if (pixels < minSide * minSide) {
        fill_.Fill(regions, width, height, x, y, 0, kSet);
        return -1;
    }
    // A closed ring around the center, about as high as it is wide, is the fiber's own edge.
    if (left < cx && cx < right && top < cy && cy < bottom) {
        const int vertical = std::max(cy - top, bottom - cy);
        const int horizontal = std::max(cx - left, right - cx);
        if (std::abs(vertical - horizontal) <= kEdgeRingTolerance) {
            fill_.Fill(regions, width, height, x, y, 0, kSet);
            return -1;
        }
    }
    list_.get()[count_] = {int16_t(top),   int16_t(bottom), int16_t(left),
                           int16_t(right), int16_t(zone),   0};
    return 0;
}

void SetDefectRectPixel(const defect_info_struct* list, int width, int /*height*/, int count,
                        unsigned char* mask, short* labelMap, unsigned char value) {
    for (int i = 0; i < count; ++i) {
        const defect_info_struct& defect = list[i];
        if (defect.top == 0 || defect.bottom < defect.top || defect.zone == kNoZone) {
            continue;
        }
        for (int y = defect.top; y <= defect.bottom; ++y) {
            const long row = static_cast<long>(y) * width;
            for (int x = defect.left; x <= defect.right; ++x) {
                if (mask != nullptr) {
                    mask[row + x] = value;
                }
                if (labelMap != nullptr) {
                    labelMap[row + x] = static_cast<short>(i);
                }
            }
        }
    }
}
