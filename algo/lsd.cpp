// The line segment detector's entry points: argument checks, the detection passes, and the
// list of segments handed to the caller. The stages live beside it (lsd_*.cpp).

#include "lsd.h"

#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "fastatan2.h"
#include "lsd_internal.h"

namespace lsd {

void error(const char* message) {
    std::fprintf(stderr, "LSD Error: %s\n", message);
    std::exit(1);
}

}  // namespace lsd

namespace {

using namespace lsd;

/*----------------------------------------------------------------------------------------------*/
/*                                      Arguments                                               */
/*----------------------------------------------------------------------------------------------*/

// The thresholds of one detection pass.
struct PassThresholds {
    double quant;
    double ang_th;
    double log_eps;
    double density_th;
};

// The conditions are written so that NaN fails them too.
void checkImage(const LsdImage& image) {
    if (image.data == nullptr || image.width <= 0 || image.height <= 0 ||
        double(image.width) * image.height > INT_MAX) {
        error("invalid image input.");
    }
}

void checkSampling(double scale, double sigma_scale, int n_bins) {
    if (!(scale > 0.0)) {
        error("'scale' value must be positive.");
    }
    if (!(sigma_scale > 0.0)) {
        error("'sigma_scale' value must be positive.");
    }
    if (n_bins <= 0) {
        error("'n_bins' value must be positive.");
    }
}

void checkThresholds(const PassThresholds& t) {
    if (!(t.quant >= 0.0)) {
        error("'quant' value must be positive.");
    }
    if (!(t.ang_th > 0.0 && t.ang_th < 180.0)) {
        error("'ang_th' value must be in the range (0,180).");
    }
    if (!(t.density_th >= 0.0 && t.density_th <= 1.0)) {
        error("'density_th' value must be in the range [0,1].");
    }
}

/*----------------------------------------------------------------------------------------------*/
/*                                        Output                                                */
/*----------------------------------------------------------------------------------------------*/

// The 7-tuples found so far, in a malloc'ed array that is handed over to the caller.
class SegmentList {
public:
    static constexpr int kTuple = 7;

    SegmentList()
        : data_(static_cast<double*>(std::malloc(kFirstCapacity * kTuple * sizeof(double)))) {
        if (data_ == nullptr) {
            error("not enough memory.");
        }
    }
    ~SegmentList() { std::free(data_); }
    SegmentList(const SegmentList&) = delete;
    SegmentList& operator=(const SegmentList&) = delete;

    void add(const double (&tuple)[kTuple]) {
        if (count_ == INT_MAX) {
            error("too many detections to fit in an INT.");
        }
        if (count_ == capacity_) {
            grow();
        }
        for (int i = 0; i < kTuple; ++i) {
            data_[size_t(count_) * kTuple + i] = tuple[i];
        }
        ++count_;
    }
    int count() const { return count_; }
    double* release() {
        double* data = data_;
        data_ = nullptr;
        return data;
    }

private:
    static constexpr int kFirstCapacity = 64;

    void grow() {
        const int capacity = capacity_ > INT_MAX / 2 ? INT_MAX : 2 * capacity_;
        void* data = std::realloc(data_, size_t(capacity) * kTuple * sizeof(double));
        if (data == nullptr) {
            error("not enough memory!");
        }
        data_ = static_cast<double*>(data);
        capacity_ = capacity;
    }

    double* data_;
    int count_ = 0;
    int capacity_ = kFirstCapacity;
};

/*----------------------------------------------------------------------------------------------*/
/*                                      Detection                                               */
/*----------------------------------------------------------------------------------------------*/

// What the passes share.
struct Detection {
    LsdImage image;  // at the sub-sampled scale
    double scale;
    int n_bins;
    SearchArea area;
    double logNT;
    LevelLineField field;
    Buffer<int> order;
    Buffer<Point> regionPoints;
    Buffer<int> labels;  // the region image, when asked for
    SegmentList segments;
};

Detection startDetection(const LsdImage& image, double scale, int n_bins, const SearchArea& area,
                         bool withLabels) {
    const size_t pixels = size_t(image.width) * image.height;
    return Detection{
        image,
        scale,
        n_bins,
        area,
        // NT = 11 (X Y)^(5/2): the rectangles of the sub-sampled image, at 11 precisions
        5.0 * (std::log10(double(image.width)) + std::log10(double(image.height))) / 2.0 +
            std::log10(11.0),
        allocateLevelLineField(image.width, image.height),
        allocate<int>(pixels),
        allocate<Point>(pixels),
        withLabels ? allocateZeroed<int>(pixels) : nullptr,
        {}};
}

// The rectangle grown by its width on every side. An edge's gradient does not stop where its
// rectangle does: it fades over about the edge's width, which the rectangle measures, and at
// the faint pass's lower threshold that fringe would come back as segments alongside.
Rect withFringe(const Rect& rec) {
    Rect r = rec;
    r.x1 -= rec.width * rec.dx;
    r.y1 -= rec.width * rec.dy;
    r.x2 += rec.width * rec.dx;
    r.y2 += rec.width * rec.dy;
    r.width = 3.0 * rec.width;
    return r;
}

// Marks the region of segment number (from 1), its rectangle and the fringe around it
// kTaken, which a later pass must leave alone, and labels the region in the region image.
void claim(Detection& d, const Region& region, const Rect& rec, int number) {
    LevelLineField& field = d.field;
    for (int i = 0; i < region.size; ++i) {
        const size_t j = size_t(region.pts[i].y) * field.xsize + region.pts[i].x;
        field.state[j] |= kTaken;
        if (d.labels != nullptr) {
            d.labels[j] = number;
        }
    }
    forEachPixelInRect(withFringe(rec), field.xsize, field.ysize,
                       [&](int x, int y) { field.state[size_t(y) * field.xsize + x] |= kTaken; });
}

// The gradient of a pixel belongs to the point (x + 0.5, y + 0.5) of the sub-sampled grid,
// whose pixel x lies at x / scale in the image given: hence the half pixel, then the scale.
void addSegment(Detection& d, const Rect& rec, double log_nfa) {
    const double x1 = (rec.x1 + 0.5) / d.scale;
    const double y1 = (rec.y1 + 0.5) / d.scale;
    const double x2 = (rec.x2 + 0.5) / d.scale;
    const double y2 = (rec.y2 + 0.5) / d.scale;
    // Departure from the paper: the sixth value is the direction, not the precision p.
    const double direction = fastAtan2(static_cast<float>(y2 - y1), static_cast<float>(x2 - x1));
    d.segments.add({x1, y1, x2, y2, rec.width / d.scale, direction, log_nfa});
}

// One pass of the paper's detector over the pixels left free: seeds by decreasing gradient,
// a region grown from each, its rectangle, refinement, and validation by the NFA.
void detectPass(Detection& d, const PassThresholds& t) {
    const double prec = M_PI * t.ang_th / 180.0;
    const double p = t.ang_th / 180.0;
    const double rho = t.quant / std::sin(prec);
    computeLevelLines(d.image, rho, d.field);
    restrictToSearchArea(d.area, d.scale, d.field);
    const int count = orderByGradient(d.field, d.n_bins, d.order.get());
    // A region smaller than this cannot be meaningful: even all aligned, NT p^n > 1.
    const int min_reg_size = static_cast<int>(-d.logNT / std::log10(p));
    Region region{d.regionPoints.get(), 0};
    for (int k = 0; k < count; ++k) {
        const int seed = d.order[k];
        if (!d.field.isFree(seed)) {
            continue;
        }
        const Direction reg_dir =
            growRegion(seed % d.field.xsize, seed / d.field.xsize, prec, d.field, region);
        if (region.size < min_reg_size) {
            continue;
        }
        Rect rec = regionToRect(region, d.field, reg_dir, prec, p);
        if (!refineRegion(region, d.field, prec, p, t.density_th, rec)) {
            continue;
        }
        const double log_nfa = improveRect(rec, d.field, d.logNT, t.log_eps);
        if (log_nfa <= t.log_eps) {
            continue;
        }
        addSegment(d, rec, log_nfa);
        claim(d, region, rec, d.segments.count());
    }
}

int annuliIn(double annulusCount) {
    return annulusCount >= 1.0 ? static_cast<int>(std::fmin(annulusCount, INT_MAX)) : 0;
}

// The region image goes to the caller when asked for.
void handOverLabels(Detection& d, int** reg_img, int* reg_x, int* reg_y) {
    if (reg_img == nullptr) {
        return;
    }
    *reg_img = d.labels.release();
    if (reg_x != nullptr) {
        *reg_x = d.image.width;
    }
    if (reg_y != nullptr) {
        *reg_y = d.image.height;
    }
}

}  // namespace

double* LineSegmentDetection(int* n_out, const LsdImage& image, double scale, double sigma_scale,
                             double quant, double ang_th, double log_eps, double density_th,
                             int n_bins, double faint_log_eps, double faint_quant,
                             double faint_ang_th, double faint_density_th, int** reg_img,
                             int* reg_x, int* reg_y, int mode, double cx, double cy, double r,
                             double annulusCount, const double* annulusRadii,
                             const defect_info_struct* exclusions, int exclusionCount) {
    checkImage(image);
    checkSampling(scale, sigma_scale, n_bins);
    const PassThresholds first{quant, ang_th, log_eps, density_th};
    const PassThresholds faint{faint_quant, faint_ang_th, faint_log_eps, faint_density_th};
    checkThresholds(first);
    const bool faintPass = mode == 2;
    if (faintPass) {
        checkThresholds(faint);
    }

    // Below scale 1 the gaussian widens to sigma_scale / scale: it must remove what the
    // coarser grid cannot hold, or aliasing would line pixels up by accident.
    ScaledImage scaled{image.width, image.height, nullptr};
    if (scale != 1.0) {
        scaled = gaussianSubsample(image, scale, scale < 1.0 ? sigma_scale / scale : sigma_scale);
    }
    const LsdImage working{scaled.xsize, scaled.ysize,
                           scale != 1.0 ? scaled.data.get() : image.data};
    const SearchArea area{
        cx, cy, r, annuliIn(annulusCount), annulusRadii, exclusions, exclusionCount};
    Detection d = startDetection(working, scale, n_bins, area, reg_img != nullptr);
    detectPass(d, first);
    if (faintPass) {
        detectPass(d, faint);
    }
    handOverLabels(d, reg_img, reg_x, reg_y);
    *n_out = d.segments.count();
    return d.segments.release();
}

double* LineSegmentDetection(int* n_out, const double* img, int X, int Y, double scale,
                             double sigma_scale, double quant, double ang_th, double log_eps,
                             double density_th, int n_bins, double faint_log_eps,
                             double faint_quant, double faint_ang_th, double faint_density_th,
                             int** reg_img, int* reg_x, int* reg_y, int mode, double cx, double cy,
                             double r, double annulusCount, const double* annulusRadii,
                             const defect_info_struct* exclusions, int exclusionCount) {
    return LineSegmentDetection(n_out, LsdImage{X, Y, img}, scale, sigma_scale, quant, ang_th,
                                log_eps, density_th, n_bins, faint_log_eps, faint_quant,
                                faint_ang_th, faint_density_th, reg_img, reg_x, reg_y, mode, cx, cy,
                                r, annulusCount, annulusRadii, exclusions, exclusionCount);
}

void freeLineSegments(double* segments) {
    std::free(segments);
}
