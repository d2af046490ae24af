#include "floodfill.h"

#include <algorithm>

#include "nobadalloc.h"

namespace {

constexpr int kInitialStack = 1600;
constexpr unsigned char kNoZoneValue = 255;

}  // namespace

// What the full fill records besides recolouring.
struct FloodFill::Region {
    unsigned char* mark;
    const unsigned char* zoneMap;
    unsigned char markValue;
    int minX, minY, maxX, maxY, minZone;

    void add(int x, int y, long offset) {
        minX = std::min(minX, x);
        maxX = std::max(maxX, x);
        minY = std::min(minY, y);
        maxY = std::max(maxY, y);
        if (zoneMap != nullptr) {
            const int zone = zoneMap[offset];
            if (zone < kNoZoneValue && zone < minZone) {
                minZone = zone;
            }
        }
        mark[offset] = markValue;
    }
};

FloodFill::FloodFill() : xs_(kInitialStack), ys_(kInitialStack) {}

void FloodFill::push(int x, int y) {
    xs_[count_] = x;
    ys_[count_] = y;
    ++count_;
    if (count_ == capacity()) {
        xs_.resize(2 * xs_.size());
        ys_.resize(2 * ys_.size());
    }
}

int FloodFill::popx() const {
    return count_ > 0 ? xs_[count_ - 1] : -1;
}

int FloodFill::popy() {
    return ys_[--count_];
}

void FloodFill::emptyStack() {
    while (popx() != -1) {
        popy();
    }
}

int FloodFill::Fill(unsigned char* image, unsigned char* mark, const unsigned char* zoneMap,
                    int width, int height, int x, int y, unsigned char newColor,
                    unsigned char oldColor, unsigned char markValue, int& minX, int& minY,
                    int& maxX, int& maxY, int& minZone) {
    return minusOneOnBadAlloc([&] {
        Region region{mark, zoneMap, markValue, 2000, 2000, 0, 0, kNoZoneValue};
        const int filled = fillColumns(image, width, height, x, y, newColor, oldColor, &region);
        minX = region.minX;
        minY = region.minY;
        maxX = region.maxX;
        maxY = region.maxY;
        minZone = zoneMap != nullptr ? region.minZone : 0;
        return filled;
    });
}

int FloodFill::Fill(unsigned char* image, int width, int height, int x, int y,
                    unsigned char newColor, unsigned char oldColor) {
    return minusOneOnBadAlloc(
        [&] { return fillColumns(image, width, height, x, y, newColor, oldColor, nullptr); });
}

int FloodFill::fillColumns(unsigned char* image, int width, int height, int x, int y,
                           unsigned char newColor, unsigned char oldColor, Region* region) {
    if (newColor == oldColor || image[static_cast<long>(y) * width + x] != oldColor) {
        return 0;
    }
    emptyStack();
    push(x, y);
    int filled = 0;
    while (popx() != -1) {
        const int column = popx();
        int row = popy();
        while (row > 0 && image[static_cast<long>(row - 1) * width + column] == oldColor) {
            --row;
        }
        // Walking down the column, each run of oldColor beside it, left and right, gets one
        // seed: where the run starts.
        bool leftRunOpen = false, rightRunOpen = false;
        for (; row < height; ++row) {
            const long offset = static_cast<long>(row) * width + column;
            if (image[offset] != oldColor) {
                break;
            }
            if (region != nullptr) {
                region->add(column, row, offset);
            }
            image[offset] = newColor;
            ++filled;
            if (column >= 1) {
                const bool left = image[offset - 1] == oldColor;
                if (left && !leftRunOpen) {
                    push(column - 1, row);
                }
                leftRunOpen = left;
            }
            if (column < width - 1) {
                const bool right = image[offset + 1] == oldColor;
                if (right && !rightRunOpen) {
                    push(column + 1, row);
                }
                rightRunOpen = right;
            }
        }
    }
    return filled;
}
