// Gaussian sub-sampling: before detection the image is filtered by a gaussian of standard
// deviation sigma and sampled every 1/scale pixels. With sigma = sigma_scale / scale the
// filter removes what the coarser grid cannot hold (aliasing would create false
// alignments), while sub-sampling itself averages noise out of the gradient.

#include <climits>
#include <cmath>

#include "lsd_internal.h"

namespace lsd {

namespace {

// The kernel reaches out to where the gaussian has fallen to 10^-prec of its peak:
// exp(-h^2 / (2 sigma^2)) = 10^-prec gives h = sigma sqrt(2 prec ln 10).
constexpr double kKernelPrec = 3.0;

// The input sample that stands for sample j of an axis of n samples, the image being
// continued by symmetry about its borders: ..., 1, 0 | 0, 1, ..., n-1 | n-1, n-2, ...
int mirror(int j, int n) {
    const int period = 2 * n;
    j %= period;
    if (j < 0) {
        j += period;
    }
    return j < n ? j : period - 1 - j;
}

// The filter along one axis. Output sample o lies at o / scale on the input axis; its taps are
// the 2h + 1 input samples around that point, weighted by the gaussian centered on it and
// normalised to sum 1.
struct AxisFilter {
    int taps;
    Buffer<double> weights;  // outputs x taps
    Buffer<int> sources;     // outputs x taps: the input sample of each tap
};

AxisFilter axisFilter(int inSize, int outSize, double scale, double sigma) {
    const int h =
        static_cast<int>(std::ceil(sigma * std::sqrt(2.0 * kKernelPrec * std::log(10.0))));
    const int n = 2 * h + 1;
    AxisFilter filter{n, allocate<double>(size_t(outSize) * n), allocate<int>(size_t(outSize) * n)};
    for (int o = 0; o < outSize; ++o) {
        const double center = o / scale;
        const int first = static_cast<int>(std::floor(center + 0.5)) - h;
        double* w = &filter.weights[size_t(o) * n];
        int* source = &filter.sources[size_t(o) * n];
        double sum = 0.0;
        for (int i = 0; i < n; ++i) {
            const double d = (first + i - center) / sigma;
            w[i] = std::exp(-0.5 * d * d);
            sum += w[i];
            source[i] = mirror(first + i, inSize);
        }
        for (int i = 0; i < n; ++i) {
            w[i] /= sum;
        }
    }
    return filter;
}

// Output row o of the vertical pass: a weighted sum of whole input rows (width values each).
void filterVertically(const double* in, int width, const AxisFilter& filter, int o, double* row) {
    for (int x = 0; x < width; ++x) {
        row[x] = 0.0;
    }
    for (int i = 0; i < filter.taps; ++i) {
        const double w = filter.weights[size_t(o) * filter.taps + i];
        const double* source = in + size_t(filter.sources[size_t(o) * filter.taps + i]) * width;
        for (int x = 0; x < width; ++x) {
            row[x] += w * source[x];
        }
    }
}

// One row of the horizontal pass: outWidth samples from the row in.
void filterHorizontally(const double* in, const AxisFilter& filter, int outWidth, double* out) {
    for (int o = 0; o < outWidth; ++o) {
        const double* w = &filter.weights[size_t(o) * filter.taps];
        const int* source = &filter.sources[size_t(o) * filter.taps];
        double sum = 0.0;
        for (int i = 0; i < filter.taps; ++i) {
            sum += w[i] * in[source[i]];
        }
        out[o] = sum;
    }
}

}  // namespace

ScaledImage gaussianSubsample(const LsdImage& in, double scale, double sigma) {
    const double xsize = std::ceil(in.width * scale);
    const double ysize = std::ceil(in.height * scale);
    if (xsize > INT_MAX || ysize > INT_MAX || xsize * ysize > double(SIZE_MAX / sizeof(double))) {
        error("gaussian_sampler: the output image size exceeds the handled size.");
    }
    ScaledImage out{static_cast<int>(xsize), static_cast<int>(ysize), nullptr};
    // The gaussian is separable: filtering vertically first and horizontally second gives the
    // same image as the paper's horizontal-then-vertical, lets the wider pass run over whole
    // rows, and needs only one row in between.
    const AxisFilter vertical = axisFilter(in.height, out.ysize, scale, sigma);
    const AxisFilter horizontal = axisFilter(in.width, out.xsize, scale, sigma);
    Buffer<double> row = allocate<double>(size_t(in.width));
    out.data = allocate<double>(size_t(out.xsize) * out.ysize);
    for (int y = 0; y < out.ysize; ++y) {
        filterVertically(in.data, in.width, vertical, y, row.get());
        filterHorizontally(row.get(), horizontal, out.xsize,
                           out.data.get() + size_t(y) * out.xsize);
    }
    return out;
}

}  // namespace lsd
