// Rectangles: the rectangle that approximates a region, the square root its computation uses,
// and the pixels a rectangle covers.

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>

#include "lsd_internal.h"

namespace {

std::atomic<bool> exactSquareRoot{false};

}  // namespace

void setLsdExactSquareRoot(bool exact) {
    exactSquareRoot.store(exact, std::memory_order_relaxed);
}

namespace lsd {

/*----------------------------------------------------------------------------------------------*/
/*                                     Square root                                              */
/*----------------------------------------------------------------------------------------------*/

// Departure from the paper: the instrument takes the square roots of these stages with the
// fast inverse square root, in single precision. The float's bits read as an integer i are
// roughly a scaled log2 of it, so 0x5F375A86 - (i >> 1) is a first guess of 1/sqrt(x); one
// Newton step y (1.5 - 0.5 x y^2) brings the relative error under 0.2 %, and 1/y stands for
// sqrt(x). That small error in lengths, widths and tolerances is part of the instrument's
// results. Rounding can leave a tiny negative variance; it counts as 0.
double rectSqrt(double x) {
    if (x <= 0.0) {
        return 0.0;
    }
    if (exactSquareRoot.load(std::memory_order_relaxed)) {
        return std::sqrt(x);
    }
    const float xf = static_cast<float>(x);
    int32_t i;
    std::memcpy(&i, &xf, sizeof i);
    i = 0x5F375A86 - (i >> 1);
    float y;
    std::memcpy(&y, &i, sizeof y);
    y = y * (1.5f - 0.5f * xf * y * y);
    return 1.0 / y;
}

/*----------------------------------------------------------------------------------------------*/
/*                                 Region to rectangle                                          */
/*----------------------------------------------------------------------------------------------*/

namespace {

struct Centroid {
    double x;
    double y;
};

// The region's center of mass, each pixel weighted by its gradient norm: strong edges are
// where the structure lies best.
Centroid weightedCentroid(const Region& region, const LevelLineField& field) {
    double sum = 0.0;
    double x = 0.0;
    double y = 0.0;
    for (int i = 0; i < region.size; ++i) {
        const Point q = region.pts[i];
        const double w = field.modgrad[size_t(q.y) * field.xsize + q.x];
        x += q.x * w;
        y += q.y * w;
        sum += w;
    }
    if (sum <= 0.0) {
        error("region2rect: weights sum equal to zero.");
    }
    return Centroid{x / sum, y / sum};
}

// The rectangle's angle: the axis of least inertia of the weighted pixels, i.e. the
// eigenvector of the smallest eigenvalue
//     lambda = (Ixx + Iyy - sqrt((Ixx - Iyy)^2 + 4 Ixy^2)) / 2
// of the inertia matrix [Ixx Ixy; Ixy Iyy]. The axis has two orientations; the one within
// prec of the region's angle is kept, so that the rectangle's angle says which side is bright.
double principalAngle(const Region& region, const LevelLineField& field, Centroid c,
                      Direction reg_dir, double prec) {
    double Ixx = 0.0;
    double Iyy = 0.0;
    double Ixy = 0.0;
    for (int i = 0; i < region.size; ++i) {
        const Point q = region.pts[i];
        const double w = field.modgrad[size_t(q.y) * field.xsize + q.x];
        Ixx += (q.y - c.y) * (q.y - c.y) * w;
        Iyy += (q.x - c.x) * (q.x - c.x) * w;
        Ixy -= (q.x - c.x) * (q.y - c.y) * w;
    }
    if (Ixx == 0.0 && Iyy == 0.0 && Ixy == 0.0) {
        error("get_theta: null inertia matrix.");
    }
    // The square root is the instrument's fast one (departure, see rectSqrt).
    const double lambda = 0.5 * (Ixx + Iyy - rectSqrt((Ixx - Iyy) * (Ixx - Iyy) + 4.0 * Ixy * Ixy));
    // Of the two equivalent forms of the eigenvector, take the better conditioned one.
    double theta = std::fabs(Ixx) > std::fabs(Iyy) ? std::atan2(lambda - Ixx, Ixy)
                                                   : std::atan2(Ixy, lambda - Iyy);
    if (std::cos(theta) * reg_dir.dx + std::sin(theta) * reg_dir.dy < std::cos(prec)) {
        theta += M_PI;
    }
    return theta;
}

}  // namespace

// The rectangle runs along the principal angle through the weighted centroid, from the
// smallest to the largest projection of the region's pixels on that direction, and is as wide
// as their spread across it (at least one pixel).
Rect regionToRect(const Region& region, const LevelLineField& field, Direction reg_dir, double prec,
                  double p) {
    const Centroid c = weightedCentroid(region, field);
    const double theta = principalAngle(region, field, c, reg_dir, prec);
    const double dx = std::cos(theta);
    const double dy = std::sin(theta);
    double l_min = 0.0, l_max = 0.0, w_min = 0.0, w_max = 0.0;
    for (int i = 0; i < region.size; ++i) {
        const double ox = region.pts[i].x - c.x;
        const double oy = region.pts[i].y - c.y;
        const double l = ox * dx + oy * dy;
        const double w = -ox * dy + oy * dx;
        l_min = std::min(l_min, l);
        l_max = std::max(l_max, l);
        w_min = std::min(w_min, w);
        w_max = std::max(w_max, w);
    }
    Rect rec;
    rec.x1 = c.x + l_min * dx;
    rec.y1 = c.y + l_min * dy;
    rec.x2 = c.x + l_max * dx;
    rec.y2 = c.y + l_max * dy;
    rec.width = std::max(w_max - w_min, 1.0);
    rec.dx = dx;
    rec.dy = dy;
    rec.prec = prec;
    rec.p = p;
    return rec;
}

/*----------------------------------------------------------------------------------------------*/
/*                                  Pixels of a rectangle                                       */
/*----------------------------------------------------------------------------------------------*/

// The rectangle is the intersection of two slabs: along (dx, dy) between the projections of
// its two ends, and across it, along (-dy, dx), within half the width of the central line.
// In each row the slabs cut an interval of x; their intersection, rounded inwards, gives the
// pixels whose middles lie inside.

namespace {

struct Interval {
    double lo;
    double hi;
};

// Narrows the interval of v to where lo <= a v + b <= hi.
void cutBySlab(double a, double b, double lo, double hi, Interval& v) {
    if (a > 0.0) {
        v.lo = std::max(v.lo, (lo - b) / a);
        v.hi = std::min(v.hi, (hi - b) / a);
    } else if (a < 0.0) {
        v.lo = std::max(v.lo, (hi - b) / a);
        v.hi = std::min(v.hi, (lo - b) / a);
    } else if (b < lo || b > hi) {
        v = Interval{1.0, 0.0};
    }
}

// The pixels first..last of a grid of size n inside the interval.
Span pixelsIn(Interval v, int n) {
    const double first = std::max(std::ceil(v.lo), 0.0);
    const double last = std::min(std::floor(v.hi), n - 1.0);
    if (first > last) {
        return Span{1, 0};
    }
    return Span{static_cast<int>(first), static_cast<int>(last)};
}

struct Slabs {
    double along_lo, along_hi;    // of x dx + y dy
    double across_lo, across_hi;  // of -x dy + y dx
};

Slabs slabsOf(const Rect& rec) {
    const double s1 = rec.x1 * rec.dx + rec.y1 * rec.dy;
    const double s2 = rec.x2 * rec.dx + rec.y2 * rec.dy;
    const double t = -rec.x1 * rec.dy + rec.y1 * rec.dx;
    return Slabs{std::min(s1, s2), std::max(s1, s2), t - 0.5 * rec.width, t + 0.5 * rec.width};
}

}  // namespace

Span rectRows(const Rect& rec, int ysize) {
    const double reach = 0.5 * rec.width * std::fabs(rec.dx);  // of a corner from its end
    return pixelsIn(Interval{std::min(rec.y1, rec.y2) - reach, std::max(rec.y1, rec.y2) + reach},
                    ysize);
}

Span rectColumns(const Rect& rec, int y, int xsize) {
    const Slabs s = slabsOf(rec);
    Interval x{-HUGE_VAL, HUGE_VAL};
    cutBySlab(rec.dx, y * rec.dy, s.along_lo, s.along_hi, x);
    cutBySlab(-rec.dy, y * rec.dx, s.across_lo, s.across_hi, x);
    return pixelsIn(x, xsize);
}

}  // namespace lsd
