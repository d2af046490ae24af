// The number of false alarms (NFA) of a rectangle, and the improvement of a rectangle that is
// not meaningful yet.
//
// Under the a-contrario model (a noise image) the level-line angles are independent and
// uniform, so each pixel of a rectangle is aligned with it with probability p, and the
// number k of aligned pixels among n follows the binomial law. A rectangle is meaningful
// when NFA = NT * P[K >= k] is small, NT being the number of rectangles that could have been
// tested: with (X Y)^2 choices of ends, (X Y)^(1/2) widths and 11 precisions, NT = 11 (X Y)^(5/2).

#include <cfloat>
#include <cmath>

#include "lsd_internal.h"

namespace lsd {

/*----------------------------------------------------------------------------------------------*/
/*                                       Log-gamma                                              */
/*----------------------------------------------------------------------------------------------*/

namespace {

// ln Gamma(x) for x > 0 by the Lanczos approximation, good for small x:
//     Gamma(x) = sum_n q_n x^n / prod_n (x + n) * (x + 5.5)^(x + 0.5) * e^-(x + 5.5)
double logGammaLanczos(double x) {
    static const double q[7] = {75122.6331530, 80916.6278952, 36308.2951477, 8687.24529705,
                                1168.92649479, 83.8676043424, 2.50662827511};
    double series = 0.0;
    double product = 1.0;
    for (int n = 6; n >= 0; --n) {
        series = series * x + q[n];
        product *= x + n;
    }
    return (x + 0.5) * std::log(x + 5.5) - (x + 5.5) + std::log(series / product);
}

// ln Gamma(x) by Windschitl's approximation, good for large x:
//     Gamma(x) = sqrt(2 pi / x) (x / e  sqrt(x sinh(1/x) + 1 / (810 x^6)))^x
double logGammaWindschitl(double x) {
    return 0.918938533204673 + (x - 0.5) * std::log(x) - x +
           0.5 * x * std::log(x * std::sinh(1.0 / x) + 1.0 / (810.0 * std::pow(x, 6.0)));
}

double logGamma(double x) {
    return x > 15.0 ? logGammaWindschitl(x) : logGammaLanczos(x);
}

}  // namespace

/*----------------------------------------------------------------------------------------------*/
/*                                          NFA                                                 */
/*----------------------------------------------------------------------------------------------*/

namespace {

// -log10(NFA) of a rectangle holding n pixels of which k are aligned with probability p
// each: NFA = NT * sum_{i=k..n} C(n, i) p^i (1 - p)^(n - i).
//
// The binomial tail is summed from its first term, term(k) = C(n, k) p^k (1 - p)^(n - k),
// taken through log-gamma, with term(i) = term(i - 1) (n - i + 1) / i  p / (1 - p). The ratio
// of consecutive terms decreases with i, so once it is below 1 the rest of the sum is at most
// a geometric series; the sum stops when that bound is below a tenth of the result (in
// -log10), which is all the precision a detection threshold needs.
double nfa(int n, int k, double p, double logNT) {
    if (n < 0 || k < 0 || k > n || p <= 0.0 || p >= 1.0) {
        error("nfa: wrong n, k or p values.");
    }
    if (n == 0 || k == 0) {
        return -logNT;
    }
    if (n == k) {
        return -logNT - n * std::log10(p);
    }
    const double log1term = logGamma(n + 1.0) - logGamma(k + 1.0) - logGamma(n - k + 1.0) +
                            k * std::log(p) + (n - k) * std::log(1.0 - p);
    double term = std::exp(log1term);
    if (term < DBL_MIN) {
        // The first term underflows. Beyond the mean the tail is about its first term;
        // below it, the tail is large and the rectangle meaningless.
        return k > n * p ? -log1term / M_LN10 - logNT : -logNT;
    }
    const double p_term = p / (1.0 - p);
    const double tolerance = 0.1;
    double bin_tail = term;
    for (int i = k + 1; i <= n; ++i) {
        const double ratio = (n - i + 1.0) / i * p_term;
        term *= ratio;
        bin_tail += term;
        if (ratio < 1.0) {
            const double err = term * ((1.0 - std::pow(ratio, n - i + 1.0)) / (1.0 - ratio) - 1.0);
            if (err < tolerance * std::fabs(-std::log10(bin_tail) - logNT) * bin_tail) {
                break;
            }
        }
    }
    return -std::log10(bin_tail) - logNT;
}

}  // namespace

// Pixels outside the image are not counted: the rectangle is tested on what it covers.
double rectNfa(const Rect& rec, const LevelLineField& field, double logNT) {
    const double cos_tau = std::cos(rec.prec);
    int pts = 0;
    int alg = 0;
    forEachPixelInRect(rec, field.xsize, field.ysize, [&](int x, int y) {
        ++pts;
        if (field.aligned(y * field.xsize + x, rec.dx, rec.dy, cos_tau)) {
            ++alg;
        }
    });
    return nfa(pts, alg, rec.p, logNT);
}

/*----------------------------------------------------------------------------------------------*/
/*                                 Rectangle improvement                                        */
/*----------------------------------------------------------------------------------------------*/

namespace {

// Applies change to a copy of rec five times in a row, and keeps in rec the copy with the best
// NFA if it beats log_nfa. change returns false when it cannot be applied (the NFA is then not
// recomputed). Returns the best -log10(NFA).
template <typename Change>
double tryFiveSteps(Rect& rec, double log_nfa, const LevelLineField& field, double logNT,
                    Change change) {
    Rect r = rec;
    for (int n = 0; n < 5; ++n) {
        if (!change(r)) {
            continue;
        }
        const double log_nfa_new = rectNfa(r, field, logNT);
        if (log_nfa_new > log_nfa) {
            log_nfa = log_nfa_new;
            rec = r;
        }
    }
    return log_nfa;
}

bool halvePrecision(Rect& r) {
    r.p /= 2.0;
    r.prec = r.p * M_PI;
    return true;
}

constexpr double kDelta = 0.5;  // width step, pixels

bool thinner(Rect& r) {
    if (r.width - kDelta < 0.5) {
        return false;
    }
    r.width -= kDelta;
    return true;
}

// Thinner by moving one long side in, the central line following by half the step; side is
// +1 or -1 along (-dy, dx).
bool thinnerFromSide(Rect& r, double side) {
    if (!thinner(r)) {
        return false;
    }
    const double shift = side * kDelta / 2.0;
    r.x1 += -r.dy * shift;
    r.y1 += r.dx * shift;
    r.x2 += -r.dy * shift;
    r.y2 += r.dx * shift;
    return true;
}

}  // namespace

// A rectangle that is not meaningful may still hold a meaningful one: a finer precision
// suits a very straight structure, a thinner rectangle drops pixels that only dilute it.
// The paper tries, in this order, five finer precisions, five widths, five shifts of each
// side, and five finer precisions again, and stops as soon as the rectangle is meaningful.
double improveRect(Rect& rec, const LevelLineField& field, double logNT, double log_eps) {
    double log_nfa = rectNfa(rec, field, logNT);
    if (log_nfa > log_eps) {
        return log_nfa;
    }
    log_nfa = tryFiveSteps(rec, log_nfa, field, logNT, halvePrecision);
    if (log_nfa > log_eps) {
        return log_nfa;
    }
    log_nfa = tryFiveSteps(rec, log_nfa, field, logNT, thinner);
    if (log_nfa > log_eps) {
        return log_nfa;
    }
    log_nfa =
        tryFiveSteps(rec, log_nfa, field, logNT, [](Rect& r) { return thinnerFromSide(r, 1.0); });
    if (log_nfa > log_eps) {
        return log_nfa;
    }
    log_nfa =
        tryFiveSteps(rec, log_nfa, field, logNT, [](Rect& r) { return thinnerFromSide(r, -1.0); });
    if (log_nfa > log_eps) {
        return log_nfa;
    }
    return tryFiveSteps(rec, log_nfa, field, logNT, halvePrecision);
}

}  // namespace lsd
