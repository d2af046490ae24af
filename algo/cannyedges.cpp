#include "cannyedges.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "nobadalloc.h"

namespace {

// A pixel's state while edges are followed, and the gradient's direction across an edge.
enum : uint8_t { kNotEdge = 0, kCandidate = 1, kEdge = 2 };
enum : uint8_t { kAcrossRows, kAcrossColumns, kAcrossFalling, kAcrossRising };

struct Gradient {
    int dx, dy;
};

Gradient sobelAt(const unsigned char* p, int w) {
    return {(p[-w + 1] + 2 * p[1] + p[w + 1]) - (p[-w - 1] + 2 * p[-1] + p[w - 1]),
            (p[w - 1] + 2 * p[w] + p[w + 1]) - (p[-w - 1] + 2 * p[-w] + p[-w + 1])};
}

// The gradient's direction quantised to the nearest of four: along a row, along a column, or
// one of the diagonals. 0.4142 is tan(22.5 degrees).
uint8_t acrossEdge(int dx, int dy) {
    const int ax = std::abs(dx), ay = std::abs(dy);
    if (ay * 10000 < ax * 4142) {
        return kAcrossRows;
    }
    if (ax * 10000 < ay * 4142) {
        return kAcrossColumns;
    }
    return (dx > 0) == (dy > 0) ? kAcrossFalling : kAcrossRising;
}

struct Work {
    int width, height;
    std::vector<int16_t> magnitude;  // |dx| + |dy|, 0 on the border
    std::vector<uint8_t> state;
};

// The magnitudes row by row: a plain loop over the three rows around each, which the compiler
// turns into vector instructions.
void magnitudes(const unsigned char* image, Work& work) {
    const int w = work.width;
    for (int y = 1; y + 1 < work.height; ++y) {
        const unsigned char* up = image + (y - 1) * w;
        const unsigned char* middle = up + w;
        const unsigned char* down = middle + w;
        int16_t* magnitude = work.magnitude.data() + y * w;
        for (int x = 1; x + 1 < w; ++x) {
            const int dx = (up[x + 1] + 2 * middle[x + 1] + down[x + 1]) -
                           (up[x - 1] + 2 * middle[x - 1] + down[x - 1]);
            const int dy =
                (down[x - 1] + 2 * down[x] + down[x + 1]) - (up[x - 1] + 2 * up[x] + up[x + 1]);
            magnitude[x] = int16_t(std::abs(dx) + std::abs(dy));
        }
    }
}

// A candidate is above the lower threshold and a maximum across the edge: greater than its
// neighbour on one side, not less than the one on the other, so that a plateau two pixels wide
// keeps exactly one of them. Candidates above the upper threshold are edges; they are returned.
std::vector<int> thinToMaxima(const unsigned char* image, int lower, int upper, Work& work) {
    const int w = work.width;
    const int offsets[4] = {1, w, w + 1, w - 1};
    std::vector<int> edges;
    for (int y = 1; y + 1 < work.height; ++y) {
        const int16_t* row = work.magnitude.data() + y * w;
        for (int x = 1; x + 1 < w; ++x) {
            if (row[x] <= lower) {
                continue;
            }
            const int i = y * w + x;
            const Gradient g = sobelAt(image + i, w);
            const int step = offsets[acrossEdge(g.dx, g.dy)];
            const int m = row[x];
            if (m > work.magnitude[i - step] && m >= work.magnitude[i + step]) {
                work.state[i] = m > upper ? kEdge : kCandidate;
                if (m > upper) {
                    edges.push_back(i);
                }
            }
        }
    }
    return edges;
}

// Hysteresis: every candidate connected to an edge through its eight neighbours is an edge.
void followEdges(std::vector<int>& edges, Work& work) {
    const int w = work.width;
    const int neighbours[8] = {-w - 1, -w, -w + 1, -1, 1, w - 1, w, w + 1};
    std::vector<int> pending = edges;
    while (!pending.empty()) {
        const int i = pending.back();
        pending.pop_back();
        for (int offset : neighbours) {
            // Candidates never lie on the border, so an edge's neighbours are inside.
            if (work.state[i + offset] == kCandidate) {
                work.state[i + offset] = kEdge;
                pending.push_back(i + offset);
                edges.push_back(i + offset);
            }
        }
    }
    std::sort(edges.begin(), edges.end());
}

}  // namespace

int findCannyEdges(const unsigned char* image, int width, int height, double lower, double upper,
                   std::vector<EdgePixel>& points) {
    return minusOneOnBadAlloc([&] {
        points.clear();
        if (width < 3 || height < 3) {
            return 0;
        }
        const size_t pixels = size_t(width) * size_t(height);
        Work work{width, height, std::vector<int16_t>(pixels, 0), std::vector<uint8_t>(pixels, 0)};
        magnitudes(image, work);
        // Magnitudes are whole numbers: above a threshold means above its whole part.
        std::vector<int> edges =
            thinToMaxima(image, int(std::floor(lower)), int(std::floor(upper)), work);
        followEdges(edges, work);
        points.reserve(edges.size());
        for (int i : edges) {
            const Gradient g = sobelAt(image + i, width);
            points.push_back({i % width, i / width, g.dx, g.dy});
        }
        return int(points.size());
    });
}
