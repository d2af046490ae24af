// The level-line field: gradient and level-line angle of every pixel, the restriction to the
// search area, and the pseudo-ordering of pixels by gradient norm.

#include <algorithm>
#include <cmath>

#include "lsd_internal.h"

namespace lsd {

LevelLineField allocateLevelLineField(int xsize, int ysize) {
    const size_t n = size_t(xsize) * ysize;
    return LevelLineField{xsize, ysize, allocate<LevelLine>(n), allocate<double>(n),
                          allocateZeroed<uint8_t>(n)};
}

/*----------------------------------------------------------------------------------------------*/
/*                                  Level-line angles                                           */
/*----------------------------------------------------------------------------------------------*/

// The gradient is taken on the 2 x 2 block whose top-left pixel is (x, y):
//
//     A B        gx = (B + D) - (A + C)     (twice the mean x derivative)
//     C D        gy = (C + D) - (A + B)     (twice the mean y derivative)
//
// and norm = sqrt((gx^2 + gy^2) / 4). The smallest mask keeps the gradients of neighbouring
// pixels as independent as can be, which the a-contrario model assumes. The value belongs to
// the point (x + 0.5, y + 0.5); the last row and column have no block and stay undefined.
// The level-line angle is atan2(gx, -gy), the gradient turned by 90 degrees; below rho the
// quantization of the gray levels makes the angle unreliable, and the pixel stays undefined.
void computeLevelLines(const LsdImage& image, double rho, LevelLineField& field) {
    const int X = image.width;
    const int Y = image.height;
    for (int i = 0; i < X * Y; ++i) {
        // What earlier passes accepted stays taken, and out of reach of region growing.
        field.state[i] = (field.state[i] & kTaken) != 0 ? (kTaken | kUsed) : 0;
        field.modgrad[i] = 0.0;
    }
    for (int y = 0; y + 1 < Y; ++y) {
        const double* top = image.data + size_t(y) * X;
        const double* bottom = top + X;
        for (int x = 0; x + 1 < X; ++x) {
            const double com1 = bottom[x + 1] - top[x];  // D - A
            const double com2 = top[x + 1] - bottom[x];  // B - C
            const double gx = com1 + com2;
            const double gy = com1 - com2;
            const double g = std::sqrt(gx * gx + gy * gy);  // 2 norm
            const size_t i = size_t(y) * X + x;
            field.modgrad[i] = 0.5 * g;
            if (0.5 * g > rho) {
                field.dir[i] = LevelLine{static_cast<float>(-gy / g), static_cast<float>(gx / g)};
                field.state[i] |= kDefined;
            }
        }
    }
}

/*----------------------------------------------------------------------------------------------*/
/*                                     Search area                                              */
/*----------------------------------------------------------------------------------------------*/

// Departure from the paper: the search is confined to annuli about a center and kept off the
// defects' rectangles. Pixels outside are made undefined, the paper's own state for pixels
// without a reliable angle: they then seed no region, join none, and in a rectangle's count
// they are pixels that are not aligned, so a rectangle cannot borrow support from them.
namespace {

// True when the distance d from the center is within r and in one of the annuli.
bool inAnnuli(const SearchArea& area, double d) {
    if (!(d <= area.r)) {
        return false;
    }
    for (int i = 0; i < area.annulusCount; ++i) {
        if (d >= area.annulusRadii[2 * i] && d <= area.annulusRadii[2 * i + 1]) {
            return true;
        }
    }
    return false;
}

// A pixel's level-line point (x + 0.5, y + 0.5) at the sub-sampled scale lies at
// ((x + 0.5) / scale, (y + 0.5) / scale) in the image given; that point decides its annulus.
void keepAnnuli(const SearchArea& area, double scale, LevelLineField& field) {
    for (int y = 0; y < field.ysize; ++y) {
        const double oy = (y + 0.5) / scale - area.cy;
        for (int x = 0; x < field.xsize; ++x) {
            const double ox = (x + 0.5) / scale - area.cx;
            if (!inAnnuli(area, std::sqrt(ox * ox + oy * oy))) {
                field.state[size_t(y) * field.xsize + x] &= ~kDefined;
            }
        }
    }
}

// The sub-sampled pixels whose 2 x 2 gradient block, which spans [i / scale, (i + 1) / scale]
// of the image given, overlaps the pixels first..last (each half a pixel either side of its
// middle): first and last clipped to the grid of size n.
Span blocksOver(int first, int last, double scale, int n) {
    const double lo = std::ceil(scale * (first - 0.5) - 1.0);
    const double hi = std::floor(scale * (last + 0.5));
    return Span{static_cast<int>(std::max(lo, 0.0)), static_cast<int>(std::min(hi, n - 1.0))};
}

// A gradient block that reads a defect pixel is excluded: a defect's edge is steep, and the
// region grown along it would come out as a short segment.
void dropExclusions(const SearchArea& area, double scale, LevelLineField& field) {
    for (int k = 0; k < area.exclusionCount; ++k) {
        const defect_info_struct& box = area.exclusions[k];
        const Span rows = blocksOver(box.top, box.bottom, scale, field.ysize);
        const Span columns = blocksOver(box.left, box.right, scale, field.xsize);
        for (int y = rows.first; y <= rows.last; ++y) {
            for (int x = columns.first; x <= columns.last; ++x) {
                field.state[size_t(y) * field.xsize + x] &= ~kDefined;
            }
        }
    }
}

}  // namespace

void restrictToSearchArea(const SearchArea& area, double scale, LevelLineField& field) {
    if (area.annulusCount > 0) {  // without annuli the whole image is searched
        keepAnnuli(area, scale, field);
    }
    dropExclusions(area, scale, field);
}

/*----------------------------------------------------------------------------------------------*/
/*                                   Pseudo-ordering                                            */
/*----------------------------------------------------------------------------------------------*/

// Regions are seeded from the strongest gradients first: edges are sharpest there, so the
// first regions follow the true structures. A full sort is not needed; the norms (in double
// precision) are put in n_bins bins between 0 and the largest norm of the whole picture, and
// the bins are visited from the top. As the published implementation does, each bin is filled
// column by column (x in the outer loop) and its pixels are visited in that order: which pixel
// seeds first, and so where a curved edge is cut, follows from it. This is a counting sort,
// linear in the number of pixels.
int orderByGradient(const LevelLineField& field, int n_bins, int* order) {
    const int X = field.xsize;
    const int Y = field.ysize;
    const double max_grad = *std::max_element(field.modgrad.get(), field.modgrad.get() + X * Y);
    if (max_grad <= 0.0) {
        return 0;
    }
    auto bin = [&](int i) {
        return std::min(static_cast<int>(field.modgrad[i] * n_bins / max_grad), n_bins - 1);
    };

    // start[b]: where bin b begins in order, bins from the top one down.
    Buffer<int> start = allocateZeroed<int>(size_t(n_bins));
    for (int i = 0; i < X * Y; ++i) {
        if (field.isFree(i)) {
            ++start[bin(i)];
        }
    }
    int count = 0;
    for (int b = n_bins - 1; b >= 0; --b) {
        const int inBin = start[b];
        start[b] = count;
        count += inBin;
    }
    for (int x = 0; x < X; ++x) {
        for (int y = 0; y < Y; ++y) {
            const int i = y * X + x;
            if (field.isFree(i)) {
                order[start[bin(i)]++] = i;
            }
        }
    }
    return count;
}

}  // namespace lsd
