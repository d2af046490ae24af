#pragma once

// Private to the line segment detector (lsd.h): what its stages share. Everything here works
// at the sub-sampled scale, where the level-line field lives.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "defectinfo.h"
#include "lsd.h"

namespace lsd {

// Prints "LSD Error: <message>" to stderr and ends the process with status 1.
[[noreturn]] void error(const char* message);

/*----------------------------------------------------------------------------------------------*/
/*                                     Owned buffers                                            */
/*----------------------------------------------------------------------------------------------*/

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};

// A malloc'ed array: allocation failure must end in the detector's error, not an exception.
template <typename T>
using Buffer = std::unique_ptr<T[], FreeDeleter>;

template <typename T>
Buffer<T> allocate(size_t n) {
    T* p = static_cast<T*>(std::malloc(n > 0 ? n * sizeof(T) : 1));
    if (p == nullptr) {
        error("not enough memory.");
    }
    return Buffer<T>(p);
}

template <typename T>
Buffer<T> allocateZeroed(size_t n) {
    T* p = static_cast<T*>(std::calloc(n > 0 ? n : 1, sizeof(T)));
    if (p == nullptr) {
        error("not enough memory.");
    }
    return Buffer<T>(p);
}

/*----------------------------------------------------------------------------------------------*/
/*                                  Gaussian sub-sampling                                       */
/*----------------------------------------------------------------------------------------------*/

// The image filtered by a gaussian of standard deviation sigma and sampled every 1/scale
// pixels: ceil(X scale) x ceil(Y scale) pixels, pixel (x, y) centered on (x / scale, y / scale)
// of the input.
struct ScaledImage {
    int xsize;
    int ysize;
    Buffer<double> data;
};
ScaledImage gaussianSubsample(const LsdImage& in, double scale, double sigma);

/*----------------------------------------------------------------------------------------------*/
/*                                    Level-line field                                          */
/*----------------------------------------------------------------------------------------------*/

// Pixel states, as bits.
constexpr uint8_t kDefined = 1;  // has a level-line angle and lies in the search area
constexpr uint8_t kUsed = 2;     // belongs to a region grown in this pass
constexpr uint8_t kTaken = 4;    // covered by an accepted segment: later passes leave it alone

// A level-line angle kept as its unit vector (cos, sin): the alignment test
// |angle - theta| <= tau becomes dx cos(theta) + dy sin(theta) >= cos(tau), and region growing
// adds vectors instead of calling sin, cos and atan2 for every pixel. The predicate is the
// paper's; single precision is ample for angles compared to a tolerance of degrees.
struct LevelLine {
    float dx;
    float dy;
};

struct LevelLineField {
    int xsize = 0;
    int ysize = 0;
    Buffer<LevelLine> dir;
    Buffer<double> modgrad;  // gradient norm
    Buffer<uint8_t> state;

    bool isDefined(int i) const { return (state[i] & kDefined) != 0; }
    bool isFree(int i) const { return (state[i] & (kDefined | kUsed)) == kDefined; }
    // True when pixel i has a level-line angle within the tolerance whose cosine is cos_tau of
    // the direction (ux, uy), a unit vector.
    bool aligned(int i, double ux, double uy, double cos_tau) const {
        return isDefined(i) && dir[i].dx * ux + dir[i].dy * uy >= cos_tau;
    }
};

// A field of xsize x ysize pixels with every state cleared.
LevelLineField allocateLevelLineField(int xsize, int ysize);

// Computes the gradient and level-line angle of every pixel of image into field (same size)
// and marks kDefined where the gradient norm exceeds rho. Keeps kTaken bits, clears the rest.
void computeLevelLines(const LsdImage& image, double rho, LevelLineField& field);

// Where segments may come from, in pixels of the image given to the detector.
struct SearchArea {
    double cx;
    double cy;
    double r;
    int annulusCount;
    const double* annulusRadii;
    const defect_info_struct* exclusions;
    int exclusionCount;
};

// Clears kDefined outside the search area; scale is the sub-sampling factor.
void restrictToSearchArea(const SearchArea& area, double scale, LevelLineField& field);

// The pseudo-ordering: writes the indices of the free pixels into order, from the strongest
// gradient to the weakest, and returns their number. order needs room for every pixel.
int orderByGradient(const LevelLineField& field, int n_bins, int* order);

/*----------------------------------------------------------------------------------------------*/
/*                                  Regions and rectangles                                      */
/*----------------------------------------------------------------------------------------------*/

struct Point {
    int x;
    int y;
};

// A region of pixels grown from pts[0], the seed; pts has room for every pixel of the field.
struct Region {
    Point* pts;
    int size;
};

// A direction as a unit vector (cos, sin): the region's angle.
struct Direction {
    double dx;
    double dy;
};

// The rectangle approximating a region: centered on the line from (x1, y1) to (x2, y2), along
// (dx, dy), width wide, with the tolerance prec (radians) for its pixels to count as aligned
// and p = prec / pi, the chance of a pixel being aligned by accident.
struct Rect {
    double x1, y1, x2, y2;
    double width;
    double dx, dy;
    double prec;
    double p;
};

// Grows the region of free pixels, 8-connected, whose level-line angles are within prec
// (radians) of the region's angle, from the seed (x, y). Marks them kUsed and returns the
// region's angle.
Direction growRegion(int x, int y, double prec, LevelLineField& field, Region& region);

// The rectangle of a region whose angle is reg_dir.
Rect regionToRect(const Region& region, const LevelLineField& field, Direction reg_dir, double prec,
                  double p);

// Refines a region whose rectangle holds too few region pixels (a share below density_th):
// regrows it with a tolerance estimated from its own angles, then shrinks it about its seed.
// Returns false when the region is to be dropped; rec follows the region.
bool refineRegion(Region& region, LevelLineField& field, double prec, double p, double density_th,
                  Rect& rec);

// The square root of the rectangle stages (region to rectangle, refinement): the fast inverse
// square root the instrument uses, or the exact one under setLsdExactSquareRoot(true).
double rectSqrt(double x);

// The pixels of an xsize x ysize grid whose middles lie in the closed rectangle rec: rows
// first..last, and in row y the columns first..last (none when first > last).
struct Span {
    int first;
    int last;
};
Span rectRows(const Rect& rec, int ysize);
Span rectColumns(const Rect& rec, int y, int xsize);

// Calls f(x, y) for every pixel of the grid whose middle lies in rec.
template <typename F>
void forEachPixelInRect(const Rect& rec, int xsize, int ysize, F&& f) {
    const Span rows = rectRows(rec, ysize);
    for (int y = rows.first; y <= rows.last; ++y) {
        const Span columns = rectColumns(rec, y, xsize);
        for (int x = columns.first; x <= columns.last; ++x) {
            f(x, y);
        }
    }
}

/*----------------------------------------------------------------------------------------------*/
/*                                  Number of false alarms                                      */
/*----------------------------------------------------------------------------------------------*/

// -log10(NFA) of the rectangle over the field, logNT = log10(NT).
double rectNfa(const Rect& rec, const LevelLineField& field, double logNT);

// Tries finer precisions and thinner rectangles to lower the NFA of a rectangle that does not
// reach log_eps yet; rec becomes the best one. Returns its -log10(NFA).
double improveRect(Rect& rec, const LevelLineField& field, double logNT, double log_eps);

}  // namespace lsd
