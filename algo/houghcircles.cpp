#include "houghcircles.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "cannyedges.h"
#include "nobadalloc.h"

namespace {

// Edge pixels whose distances from a center differ by at most this lie on one circle.
constexpr double kRadiusWindow = 1.0;

// Rounds of fitting a circle to its edge pixels and choosing them again.
constexpr int kFitRounds = 3;

// Fixed point for walking along a gradient: 16 fraction bits.
constexpr int kFractionBits = 16;
constexpr int kFixedOne = 1 << kFractionBits;

struct Votes {
    int width, height;
    std::vector<int> cells;
};

// Steps of `step` (fixed point) from `start` (a cell) that stay within 0 .. size - 1.
int stepsInside(int start, int step, int size) {
    if (step > 0) {
        return int((int64_t(size - 1 - start) * kFixedOne + kFixedOne / 2 - 1) / step);
    }
    if (step < 0) {
        return int((int64_t(start) * kFixedOne + kFixedOne / 2) / -step);
    }
    return size;
}

// Walks from edge pixel (x, y) along the unit direction (ux, uy), one pixel along the major
// axis per step, and votes for every cell from minRadius to maxRadius away inside the picture.
// Along the major axis the cell moves by whole pixels; across it, by a fraction in fixed point.
void voteAlong(int x, int y, double ux, double uy, int minRadius, int maxRadius, Votes& votes) {
    const bool alongX = std::abs(ux) >= std::abs(uy);
    const double major = alongX ? std::abs(ux) : std::abs(uy);
    const int step = (alongX ? ux : uy) > 0 ? 1 : -1;  // along the major axis, whole pixels
    const int slope = int(std::lround((alongX ? uy : ux) / major * kFixedOne));
    const int width = votes.width;
    const int first = int(std::ceil(minRadius * major));
    const int last =
        std::min({int(std::floor(maxRadius * major)),
                  stepsInside(alongX ? x : y, step * kFixedOne, alongX ? width : votes.height),
                  stepsInside(alongX ? y : x, slope, alongX ? votes.height : width)});
    int major0 = (alongX ? x : y) + first * step;
    // The minor coordinate in fixed point, half a cell added so that the shift rounds.
    int minor = (alongX ? y : x) * kFixedOne + kFixedOne / 2 + first * slope;
    int* cells = votes.cells.data();
    if (alongX) {
        for (int k = first; k <= last; ++k, major0 += step, minor += slope) {
            ++cells[(minor >> kFractionBits) * width + major0];
        }
    } else {
        for (int k = first; k <= last; ++k, major0 += step, minor += slope) {
            ++cells[major0 * width + (minor >> kFractionBits)];
        }
    }
}

Votes vote(const std::vector<EdgePixel>& edges, int width, int height, int minRadius,
           int maxRadius) {
    Votes votes{width, height, std::vector<int>(size_t(width) * size_t(height), 0)};
    for (const EdgePixel& e : edges) {
        const double norm = std::sqrt(double(e.dx) * e.dx + double(e.dy) * e.dy);
        if (norm == 0.0) {  // only with a threshold below 0: no direction to vote along
            continue;
        }
        const double ux = e.dx / norm, uy = e.dy / norm;
        voteAlong(e.x, e.y, ux, uy, minRadius, maxRadius, votes);
        voteAlong(e.x, e.y, -ux, -uy, minRadius, maxRadius, votes);
    }
    return votes;
}

// Cells with more than `threshold` votes that are maxima among their four neighbours (ties
// go to the cell above or to the left), most votes first.
std::vector<int> centerCells(const Votes& votes, double threshold) {
    const int w = votes.width;
    const std::vector<int>& v = votes.cells;
    // Votes are whole numbers: more than the threshold means more than its whole part.
    const int least = int(std::floor(threshold));
    std::vector<int> centers;
    for (int y = 1; y + 1 < votes.height; ++y) {
        const int* row = v.data() + y * w;
        for (int x = 1; x + 1 < w; ++x) {
            const int n = row[x];
            if (n > least && n > row[x - 1] && n >= row[x + 1] && n > row[x - w] &&
                n >= row[x + w]) {
                centers.push_back(y * w + x);
            }
        }
    }
    std::stable_sort(centers.begin(), centers.end(), [&v](int a, int b) { return v[a] > v[b]; });
    return centers;
}

double distance(const EdgePixel& e, double cx, double cy) {
    return std::sqrt((e.x - cx) * (e.x - cx) + (e.y - cy) * (e.y - cy));
}

// The cell's circle: the radius at which the most edge pixels lie, within the radius window.
HoughCircle circleAbout(const std::vector<EdgePixel>& edges, int cx, int cy, int minRadius,
                        int maxRadius) {
    std::vector<double> distances;
    for (const EdgePixel& e : edges) {
        const double d = distance(e, cx, cy);
        if (d >= minRadius && d <= maxRadius) {
            distances.push_back(d);
        }
    }
    std::sort(distances.begin(), distances.end());
    HoughCircle circle{float(cx + 0.5), float(cy + 0.5), 0.0f, 0};
    for (size_t first = 0, last = 0; last < distances.size(); ++last) {
        while (distances[last] - distances[first] > kRadiusWindow) {
            ++first;
        }
        if (int(last + 1 - first) > circle.support) {
            circle.support = int(last + 1 - first);
            circle.radius = float((distances[first] + distances[last]) / 2);
        }
    }
    return circle;
}

// Best-supported first; a circle closer than minDist to one already kept is dropped.
int keepApart(std::vector<HoughCircle>& found, double minDist, HoughCircle* circles, int capacity) {
    std::stable_sort(found.begin(), found.end(), [](const HoughCircle& a, const HoughCircle& b) {
        return a.support > b.support;
    });
    int kept = 0;
    for (const HoughCircle& c : found) {
        if (kept == capacity) {
            break;
        }
        const bool apart = std::none_of(circles, circles + kept, [&](const HoughCircle& k) {
            return std::hypot(double(k.x - c.x), double(k.y - c.y)) < minDist;
        });
        if (apart) {
            circles[kept++] = c;
        }
    }
    return kept;
}

using Matrix3 = double[3][3];

double determinant(const Matrix3& m) {
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
           m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
           m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

// Solves m p = r by Cramer's rule; false when m is singular.
bool solve3(const Matrix3& m, const double r[3], double p[3]) {
    const double det = determinant(m);
    if (std::abs(det) < 1e-9) {
        return false;
    }
    for (int column = 0; column < 3; ++column) {
        Matrix3 replaced;
        for (int row = 0; row < 3; ++row) {
            for (int k = 0; k < 3; ++k) {
                replaced[row][k] = k == column ? r[row] : m[row][k];
            }
        }
        p[column] = determinant(replaced) / det;
    }
    return true;
}

// The least-squares circle through the edge pixels within the radius window about the circle
// (cx, cy, radius), by the algebraic fit: with u, v the pixels about (cx, cy) (for precision),
// u^2 + v^2 = 2 a u + 2 b v + c; the center moves by (a, b) and the radius becomes
// sqrt(c + a^2 + b^2). False when the pixels do not determine a circle.
bool fitCircle(const std::vector<EdgePixel>& edges, double& cx, double& cy, double& radius) {
    Matrix3 m = {};
    double r[3] = {};
    int n = 0;
    for (const EdgePixel& e : edges) {
        if (std::abs(distance(e, cx, cy) - radius) > kRadiusWindow / 2) {
            continue;
        }
        const double row[3] = {e.x - cx, e.y - cy, 1.0};
        const double z = row[0] * row[0] + row[1] * row[1];
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) {
                m[i][j] += row[i] * row[j];
            }
            r[i] += row[i] * z;
        }
        ++n;
    }
    double p[3];
    if (n < 3 || !solve3(m, r, p)) {
        return false;
    }
    const double a = p[0] / 2, b = p[1] / 2;
    cx += a;
    cy += b;
    radius = std::sqrt(std::max(0.0, p[2] + a * a + b * b));
    return true;
}

// The transform's center is a whole cell, up to half a pixel off; fitted to the edge pixels on
// the circle, and those chosen again about the fitted circle, it comes to a fraction of that.
void fitToEdges(const std::vector<EdgePixel>& edges, HoughCircle& circle) {
    double cx = circle.x - 0.5, cy = circle.y - 0.5, radius = circle.radius;
    for (int round = 0; round < kFitRounds; ++round) {
        if (!fitCircle(edges, cx, cy, radius)) {
            return;
        }
    }
    circle.x = float(cx + 0.5);
    circle.y = float(cy + 0.5);
    circle.radius = float(radius);
}

}  // namespace

int houghCirclesGradient(const unsigned char* image, int width, int height, double minDist,
                         double cannyUpper, double accThreshold, int minRadius, int maxRadius,
                         HoughCircle* circles, int capacity) {
    return minusOneOnBadAlloc([&] {
        if (maxRadius <= 0) {
            maxRadius = std::max(width, height);
        }
        minRadius = std::max(minRadius, 0);
        std::vector<EdgePixel> edges;
        if (findCannyEdges(image, width, height, cannyUpper / 2, cannyUpper, edges) < 0) {
            return -1;
        }
        const Votes votes = vote(edges, width, height, minRadius, maxRadius);
        std::vector<HoughCircle> found;
        for (int cell : centerCells(votes, accThreshold)) {
            found.push_back(circleAbout(edges, cell % width, cell / width, minRadius, maxRadius));
        }
        const int kept = keepApart(found, minDist, circles, capacity);
        for (int k = 0; k < kept; ++k) {
            fitToEdges(edges, circles[k]);
        }
        return kept;
    });
}
