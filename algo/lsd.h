#pragma once

#include "defectinfo.h"

// LSD, the a-contrario line segment detector of R. Grompone von Gioi, J. Jakubowicz,
// J.-M. Morel and G. Randall, "LSD: a Line Segment Detector", Image Processing On Line, 2012,
// as the scratch search runs it.
//
// The image is sub-sampled with a gaussian filter, the level-line angle (the gradient turned by
// 90 degrees) is computed at every pixel, and pixels are visited from the strongest gradient
// down. Each free pixel seeds a region of connected pixels whose level-line angles agree with
// the region's within a tolerance tau; the region is approximated by a rectangle, and the
// rectangle is accepted as a segment when the number of false alarms of its count of aligned
// pixels is small: NFA = N_tests * B(n, k, p) <= epsilon, with n the pixels of the rectangle,
// k the aligned ones, p = tau / pi the chance of a pixel being aligned by accident and
// N_tests = 11 (X Y)^(5/2) for an X x Y image.
//
// Where this detector departs from the published method:
//  - the sixth value of a segment is its direction (fastAtan2), not the angle precision p;
//  - the square roots of the region-to-rectangle and rectangle-refinement steps use the fast
//    inverse square root (one Newton step), as the instrument does (see setLsdExactSquareRoot);
//  - the search is confined to annuli about a center, and pixels inside exclusion rectangles
//    (the defects) produce no segment;
//  - mode 2 adds a second pass for faint segments (below).
//
// Errors (invalid arguments, memory exhaustion, broken invariants) print "LSD Error: <message>"
// to stderr and end the process with status 1.

// A gray image of doubles, row-major, width x height. The detector only reads it.
struct LsdImage {
    int width;
    int height;
    const double* data;
};

// Detects the line segments of image. Returns an array of 7 * (*n_out) doubles, one 7-tuple
// per segment in the order of acceptance: x1, y1, x2, y2 (endpoints, pixels of the image given,
// the middle of pixel (x, y) at (x, y)), width (pixels), direction (radians in (-pi, pi]: the
// angle of (dx, dy) = (x2 - x1, y2 - y1); the image gradient across the segment, dark to
// bright, points along (dy, -dx)) and -log10(NFA). The array is never null, also
// without segments; release it with freeLineSegments.
//
//  n_out        receives the number of segments; must not be null.
//  img, X, Y    the image: X x Y doubles, row-major, owned by the caller.
//  scale        sub-sampling factor before detection (0.8 in the paper; the instrument uses 0.6).
//               Must be positive; 1 means no sub-sampling.
//  sigma_scale  the gaussian filter's sigma is sigma_scale / scale when scale < 1, sigma_scale
//               otherwise (0.6 in the paper; 0.8 or 1.2 here). Must be positive.
//  quant        bound on the quantization error of the gray levels (2.0 in the paper for 8-bit
//               images; 1.0 here). Pixels with a gradient norm at most
//               rho = quant / sin(ang_th) have no level-line angle. Not negative.
//  ang_th       the region's angle tolerance tau, degrees, in (0, 180) (22.5).
//  log_eps      detection threshold: a rectangle is kept when -log10(NFA) > log_eps (0.0).
//  density_th   minimal share of region pixels in the rectangle, in [0, 1] (0.7).
//  n_bins       number of bins of the pseudo-ordering by gradient norm (1024). Positive.
//  faint_log_eps, faint_quant, faint_ang_th, faint_density_th
//               the thresholds of the faint pass run in mode 2, meaning what log_eps, quant,
//               ang_th and density_th mean for the first pass (the scratch search passes 0.0,
//               0.1, 22.5 and 0.7: the same test with a gradient threshold ten times lower).
//               Checked and used only in mode 2.
//  reg_img, reg_x, reg_y
//               when reg_img is not null: a malloc'ed int image of (*reg_x) x (*reg_y) pixels at
//               the sub-sampled scale, 0 outside segments and i + 1 on the region of the i-th
//               segment (release with free). The scratch search passes null.
//  mode         1: one pass. 2: after the first pass, a second one with the faint thresholds
//               over the pixels the first pass's segments left free (their regions and their
//               rectangles grown by their width are taken), to catch scratches too faint for
//               rho. Each pass keeps its own bound epsilon on the mean number of false
//               detections, so mode 2 allows up to twice as many. Any other value: one pass.
//  cx, cy       center of the annuli, pixels of the image given.
//  r            search radius, pixels: the annuli end at r at the most.
//  annulusCount number of annuli, as a double (truncated). Below 1, the whole image is
//               searched (and cx, cy and r play no part).
//  annulusRadii annulusCount (inner, outer) pairs of radii about the center, pixels, ascending.
//               Only pixels whose level-line point lies in one of them (bounds included) and
//               within r can take part in a segment.
//  exclusions, exclusionCount
//               rectangles of the image given (top, bottom, left, right; bounds inclusive; zone
//               and sizeClass are not read). A level-line pixel whose 2 x 2 gradient footprint
//               touches one of them takes part in no segment.
//
// Pixels outside the search area are treated as pixels without a level-line angle: they seed
// nothing and join no region, and inside a rectangle they count as not aligned.
double* LineSegmentDetection(int* n_out, const double* img, int X, int Y, double scale,
                             double sigma_scale, double quant, double ang_th, double log_eps,
                             double density_th, int n_bins, double faint_log_eps,
                             double faint_quant, double faint_ang_th, double faint_density_th,
                             int** reg_img, int* reg_x, int* reg_y, int mode, double cx, double cy,
                             double r, double annulusCount, const double* annulusRadii,
                             const defect_info_struct* exclusions, int exclusionCount);

// The same detector on an image record; the form above wraps its buffer in one.
double* LineSegmentDetection(int* n_out, const LsdImage& image, double scale, double sigma_scale,
                             double quant, double ang_th, double log_eps, double density_th,
                             int n_bins, double faint_log_eps, double faint_quant,
                             double faint_ang_th, double faint_density_th, int** reg_img,
                             int* reg_x, int* reg_y, int mode, double cx, double cy, double r,
                             double annulusCount, const double* annulusRadii,
                             const defect_info_struct* exclusions, int exclusionCount);

// Releases the array returned by LineSegmentDetection (free; null is allowed).
void freeLineSegments(double* segments);

// Test and yardstick switch, process-wide: true makes the region-to-rectangle and refinement
// steps take exact square roots, as the published method does, instead of the instrument's
// fast inverse square root. Off by default; the instrument never turns it on.
void setLsdExactSquareRoot(bool exact);
