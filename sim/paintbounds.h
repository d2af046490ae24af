#pragma once

#include <algorithm>
#include <cmath>

#include "canvas.h"

namespace sim {

// The canvas pixels a shape may touch: its bounding box in frame coordinates, widened by a
// pixel and cut to the canvas (empty when first > last). Kept in doubles until cut, so that
// shapes far outside any window are harmless.
struct PaintBounds {
    PaintBounds(const Canvas& canvas, double minX, double minY, double maxX, double maxY)
        : firstColumn(firstIndex(minX - canvas.left, canvas.width)),
          lastColumn(lastIndex(maxX - canvas.left, canvas.width)),
          firstRow(firstIndex(minY - canvas.top, canvas.height)),
          lastRow(lastIndex(maxY - canvas.top, canvas.height)) {}

    int firstColumn;
    int lastColumn;
    int firstRow;
    int lastRow;

private:
    static int firstIndex(double position, int size) {
        return int(std::clamp(std::floor(position - 1.0), 0.0, double(size)));
    }
    static int lastIndex(double position, int size) {
        return int(std::clamp(std::ceil(position + 1.0), -1.0, double(size - 1)));
    }
};

}  // namespace sim
