#include "fibercenter.h"

#include <memory>
#include <new>

#include "fibercenterregion.h"
#include "lsellipse.h"
#include "nobadalloc.h"

namespace {

constexpr int kRayStartOffset = 50;
constexpr int kMinEdgePoints = 20;
constexpr int kMaxPictureSide = 2000;

struct PointSink {
    int* xs;
    int* ys;
    int& n;

    // The arrays hold kFillPointsCapacity points: a small step over a large picture would find
    // more, and those are dropped rather than written past the end.
    void append(int x, int y) {
        if (n >= kFillPointsCapacity) {
            return;
        }
        xs[n] = x;
        ys[n] = y;
        ++n;
    }
};

// How many samples, from `first` on in steps of `stride`, lie before the first non-fiber one;
// -1 when none of the `count` samples is outside the fiber.
int stepsToEdge(const unsigned char* first, long stride, int count) {
    for (int k = 0; k < count; ++k) {
        if (first[k * stride] == 0) {
            return k;
        }
    }
    return -1;
}

// The right then the left ray of row y, each starting 50 pixels from column cx. The left walk
// stops short of column 0, the right one at the picture's edge: no edge there, no point.
void raysAlongRow(const unsigned char* binary, int width, int cx, int y, PointSink& sink) {
    const unsigned char* row = binary + static_cast<long>(y) * width;
    const int right = cx + kRayStartOffset;
    if (right < width) {
        const int k = stepsToEdge(row + right, 1, width - right);
        if (k >= 0) {
            sink.append(right + k, y);
        }
    }
    const int left = cx - kRayStartOffset;
    if (left > 0) {
        const int k = stepsToEdge(row + left, -1, left);
        if (k >= 0) {
            sink.append(left - k, y);
        }
    }
}

// The down then the up ray of column x, each starting 50 pixels from row cy.
void raysAlongColumn(const unsigned char* binary, int width, int height, int x, int cy,
                     PointSink& sink) {
    const int down = cy + kRayStartOffset;
    if (down < height) {
        const int k =
            stepsToEdge(binary + static_cast<long>(down) * width + x, width, height - down);
        if (k >= 0) {
            sink.append(x, down + k);
        }
    }
    const int up = cy - kRayStartOffset;
    if (up > 0) {
        const int k = stepsToEdge(binary + static_cast<long>(up) * width + x, -width, up);
        if (k >= 0) {
            sink.append(x, up - k);
        }
    }
}

}  // namespace

void FillPoints(const unsigned char* binary, int width, int height, int cx, int cy, int step,
                int* xs, int* ys, int& n) {
    if (cx < 0 || cx >= width || cy < 0 || cy >= height || step <= 0) {
        return;
    }
    PointSink sink{xs, ys, n};
    auto fiberAt = [&](int x, int y) { return binary[static_cast<long>(y) * width + x] != 0; };

    // Each sweep goes on while the fiber continues: two non-fiber samples in a row end it.
    for (int y = cy; y < height - step; y += step) {
        if (!fiberAt(cx, y) && !fiberAt(cx, y + step)) {
            break;
        }
        raysAlongRow(binary, width, cx, y, sink);
    }
    for (int y = cy; y > step; y -= step) {
        if (!fiberAt(cx, y) && !fiberAt(cx, y - step)) {
            break;
        }
        raysAlongRow(binary, width, cx, y, sink);
    }
    for (int x = cx; x < width - step; x += step) {
        if (!fiberAt(x, cy) && !fiberAt(x + step, cy)) {
            break;
        }
        raysAlongColumn(binary, width, height, x, cy, sink);
    }
    for (int x = cx; x > step; x -= step) {
        if (!fiberAt(x, cy) && !fiberAt(x - step, cy)) {
            break;
        }
        raysAlongColumn(binary, width, height, x, cy, sink);
    }
}

int AlgGetFiberCenterXY(const unsigned char* image8, int width, int height, int expectedRadius,
                        int& x, int& y, int& r) {
    return minusOneOnBadAlloc([&] {
        if (image8 == nullptr || width <= 0 || height <= 0 || width > kMaxPictureSide ||
            height > kMaxPictureSide) {
            return -1;
        }
        GetFiberCenterRegion region;
        std::unique_ptr<unsigned char[]> work(
            new (std::nothrow) unsigned char[static_cast<size_t>(width) * height]);
        if (!work) {
            return -1;
        }
        const int code =
            region.AlgGetFiberCenterXY2(image8, work.get(), width, height, expectedRadius, x, y, r);
        if (code != 1) {
            return code;
        }

        // At most four sweeps of two rays each per row or column step: far below the capacity.
        static_assert(4 * 2 * (kMaxPictureSide / 8 + 1) <= kFillPointsCapacity, "edge points fit");
        std::unique_ptr<int[]> xs(new (std::nothrow) int[kFillPointsCapacity]);
        std::unique_ptr<int[]> ys(new (std::nothrow) int[kFillPointsCapacity]);
        if (!xs || !ys) {
            return -1;
        }
        int n = 0;
        FillPoints(work.get(), width, height, x, y, 8, xs.get(), ys.get(), n);
        work.reset();
        if (n < kMinEdgePoints) {
            return 0;
        }

        double ellipse[5];
        LSEllipse().cvFitEllipse2f(xs.get(), ys.get(), n, ellipse);
        x = static_cast<int>(ellipse[0]);
        y = static_cast<int>(ellipse[1]);
        r = static_cast<int>(ellipse[2] * 0.5 + 0.5);
        return 1;
    });
}
