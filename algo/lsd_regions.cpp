// Line-support regions: growing a region of aligned pixels from a seed, and refining a region
// whose rectangle it fills too thinly.

#include <algorithm>
#include <cmath>

#include "lsd_internal.h"

namespace lsd {

namespace {

// cos(tau) for the alignment test dot >= cos(tau). A tolerance of pi or more accepts every
// direction, which the cosine alone would not say (cos is not monotonic beyond pi).
double alignmentCos(double tau) {
    return tau >= M_PI ? -2.0 : std::cos(tau);
}

// Distances of the refinement, with the instrument's fast square root (a departure from the
// paper, see rectSqrt).
double distance(double x1, double y1, double x2, double y2) {
    return rectSqrt((x1 - x2) * (x1 - x2) + (y1 - y2) * (y1 - y2));
}

double distance(Point a, double x, double y) {
    return distance(a.x, a.y, x, y);
}

double distance(Point a, Point b) {
    return distance(a.x, a.y, b.x, b.y);
}

// The share of the rectangle's area that the region's pixels fill.
double rectDensity(const Region& region, const Rect& rec) {
    return region.size / (distance(rec.x1, rec.y1, rec.x2, rec.y2) * rec.width);
}

void release(const Region& region, int i, LevelLineField& field) {
    field.state[size_t(region.pts[i].y) * field.xsize + region.pts[i].x] &= ~kUsed;
}

}  // namespace

/*----------------------------------------------------------------------------------------------*/
/*                                    Region growing                                            */
/*----------------------------------------------------------------------------------------------*/

// The region's angle is the angle of the sum of its pixels' level-line vectors, updated after
// every pixel added, as in the paper; a neighbour joins when its own angle is within prec of
// it. The sum of unit vectors is kept, so the update costs a square root instead of sin, cos
// and atan2.
Direction growRegion(int x, int y, double prec, LevelLineField& field, Region& region) {
    const double cos_tau = alignmentCos(prec);
    const int X = field.xsize;
    const int Y = field.ysize;
    const LevelLine& seed = field.dir[size_t(y) * X + x];
    double sumdx = seed.dx;
    double sumdy = seed.dy;
    Direction reg{seed.dx, seed.dy};
    region.pts[0] = Point{x, y};
    region.size = 1;
    field.state[size_t(y) * X + x] |= kUsed;
    for (int i = 0; i < region.size; ++i) {
        const Point p = region.pts[i];
        // As the published implementation does: the neighbours column by column (x outside).
        for (int xx = std::max(p.x - 1, 0); xx <= std::min(p.x + 1, X - 1); ++xx) {
            for (int yy = std::max(p.y - 1, 0); yy <= std::min(p.y + 1, Y - 1); ++yy) {
                const int j = yy * X + xx;
                if (!field.isFree(j) || !field.aligned(j, reg.dx, reg.dy, cos_tau)) {
                    continue;
                }
                field.state[j] |= kUsed;
                region.pts[region.size++] = Point{xx, yy};
                sumdx += field.dir[j].dx;
                sumdy += field.dir[j].dy;
                const double norm = std::sqrt(sumdx * sumdx + sumdy * sumdy);
                if (norm > 0.0) {  // opposite angles may cancel under a tolerance near pi
                    reg = Direction{sumdx / norm, sumdy / norm};
                }
            }
        }
    }
    return reg;
}

/*----------------------------------------------------------------------------------------------*/
/*                                       Refinement                                             */
/*----------------------------------------------------------------------------------------------*/

namespace {

// Shrinks the region about its seed, by a quarter of its radius at a time, until its rectangle
// is dense enough. Returns false when fewer than two pixels are left.
bool reduceRegionRadius(Region& region, LevelLineField& field, Direction reg_dir, double prec,
                        double p, double density_th, Rect& rec) {
    const Point seed = region.pts[0];
    double rad = std::max(distance(seed, rec.x1, rec.y1), distance(seed, rec.x2, rec.y2));
    while (rectDensity(region, rec) < density_th) {
        rad *= 0.75;
        for (int i = 0; i < region.size; ++i) {
            if (distance(seed, region.pts[i]) > rad) {
                release(region, i, field);
                region.pts[i--] = region.pts[--region.size];  // the seed, at 0, always stays
            }
        }
        if (region.size < 2) {
            return false;
        }
        rec = regionToRect(region, field, reg_dir, prec, p);
    }
    return true;
}

// The tolerance for regrowing: twice the standard deviation of the level-line angles of the
// region's pixels near the seed (closer than the rectangle's width), measured from the
// seed's angle. Releases every pixel of the region on the way.
double localTolerance(const Region& region, LevelLineField& field, const Rect& rec) {
    const Point seed = region.pts[0];
    const LevelLine c = field.dir[size_t(seed.y) * field.xsize + seed.x];
    double sum = 0.0;
    double s_sum = 0.0;
    int n = 0;
    for (int i = 0; i < region.size; ++i) {
        release(region, i, field);
        if (distance(seed, region.pts[i]) < rec.width) {
            const LevelLine d = field.dir[size_t(region.pts[i].y) * field.xsize + region.pts[i].x];
            // signed angle from c to d, in (-pi, pi]
            const double ang_d = std::atan2(double(c.dx) * d.dy - double(c.dy) * d.dx,
                                            double(c.dx) * d.dx + double(c.dy) * d.dy);
            sum += ang_d;
            s_sum += ang_d * ang_d;
            ++n;
        }
    }
    const double mean_angle = sum / n;
    // (the fast square root again: departure)
    return 2.0 * rectSqrt((s_sum - 2.0 * mean_angle * sum) / n + mean_angle * mean_angle);
}

}  // namespace

// A region that bends, or merges two nearby structures, fills its rectangle thinly. The paper
// first regrows it from its seed with the tolerance its pixels near the seed show, which
// follows the straight part the seed lies on; if that is still too thin, it cuts the region
// down about the seed.
bool refineRegion(Region& region, LevelLineField& field, double prec, double p, double density_th,
                  Rect& rec) {
    if (rectDensity(region, rec) >= density_th) {
        return true;
    }
    const Point seed = region.pts[0];
    const double tau = localTolerance(region, field, rec);
    const Direction reg_dir = growRegion(seed.x, seed.y, tau, field, region);
    if (region.size < 2) {
        return false;
    }
    rec = regionToRect(region, field, reg_dir, prec, p);
    if (rectDensity(region, rec) >= density_th) {
        return true;
    }
    return reduceRegionRadius(region, field, reg_dir, prec, p, density_th, rec);
}

}  // namespace lsd
