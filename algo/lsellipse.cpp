#include "lsellipse.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

// The decomposition is Golub-Kahan: Householder reflections bring the matrix to upper
// bidiagonal form, then implicitly shifted QR steps (Wilkinson shift, bulge chased down with
// plane rotations) drive the superdiagonal to zero, one singular value at a time from the
// bottom. All matrices are row-major.

namespace {

constexpr int kMaxIterationsPerValue = 60;
constexpr double kRoundoff = std::numeric_limits<double>::epsilon();

// ---- vectors inside row-major matrices ---------------------------------------------------------

// Elements of a matrix at a fixed step: part of a row (step 1) or of a column (step = the
// number of columns).
struct Strided {
    double* first;
    std::ptrdiff_t step;
    int size;

    double& operator[](int i) const { return first[i * step]; }
};

// Column col from row `from` down.
Strided columnFrom(double* m, int rows, int cols, int col, int from) {
    return {m + std::ptrdiff_t(from) * cols + col, cols, rows - from};
}

// Row row from column `from` on.
Strided rowFrom(double* m, int cols, int row, int from) {
    return {m + std::ptrdiff_t(row) * cols + from, 1, cols - from};
}

double dot(Strided a, Strided b) {
    double sum = 0.0;
    for (int i = 0; i < a.size; ++i) {
        sum += a[i] * b[i];
    }
    return sum;
}

// ---- Householder reflections ----------------------------------------------------------------

// H = I - tau v v^T with v[0] = 1 maps the vector it was made from onto alpha e1.
struct Reflection {
    double tau;
    double alpha;
};

// Makes the reflection for x and leaves its v in x. alpha takes the sign opposite to x[0], so
// that x[0] - alpha adds magnitudes and never cancels. A zero x needs no reflection (tau 0).
Reflection reflectionFor(Strided x) {
    const double norm = std::sqrt(dot(x, x));
    if (norm == 0.0) {
        return {0.0, 0.0};
    }
    const double x0 = x[0];
    const double alpha = x0 > 0.0 ? -norm : norm;
    const double scale = 1.0 / (x0 - alpha);
    x[0] = 1.0;
    for (int i = 1; i < x.size; ++i) {
        x[i] *= scale;
    }
    return {(alpha - x0) / alpha, alpha};
}

// y = H y for the reflection (tau, v).
void reflect(double tau, Strided v, Strided y) {
    const double s = tau * dot(v, y);
    for (int i = 0; i < y.size; ++i) {
        y[i] -= s * v[i];
    }
}

// ---- plane rotations ---------------------------------------------------------------------------

// The rotation [c s; -s c] that turns (f, g) into (r, 0).
struct Rotation {
    double c, s, r;
};

Rotation rotationFor(double f, double g) {
    const double r = std::hypot(f, g);
    if (r == 0.0) {
        return {1.0, 0.0, 0.0};
    }
    return {f / r, g / r, r};
}

// Columns i and j of a rows x cols matrix become c col_i + s col_j and -s col_i + c col_j: the
// update of U (or V) when the same rotation combines rows (or columns) i and j of B.
void rotateColumns(double* m, int rows, int cols, int i, int j, Rotation g) {
    for (int r = 0; r < rows; ++r) {
        double* row = m + std::ptrdiff_t(r) * cols;
        const double a = row[i], b = row[j];
        row[i] = g.c * a + g.s * b;
        row[j] = -g.s * a + g.c * b;
    }
}

void negateColumn(double* m, int rows, int cols, int col) {
    for (int r = 0; r < rows; ++r) {
        m[std::ptrdiff_t(r) * cols + col] = -m[std::ptrdiff_t(r) * cols + col];
    }
}

void swapColumns(double* m, int rows, int cols, int i, int j) {
    for (int r = 0; r < rows; ++r) {
        std::swap(m[std::ptrdiff_t(r) * cols + i], m[std::ptrdiff_t(r) * cols + j]);
    }
}

void setIdentity(double* m, int rows, int cols) {
    std::fill(m, m + std::ptrdiff_t(rows) * cols, 0.0);
    for (int k = 0; k < std::min(rows, cols); ++k) {
        m[std::ptrdiff_t(k) * cols + k] = 1.0;
    }
}

// ---- the decomposition -----------------------------------------------------------------------

// A = U B V^T with B upper bidiagonal (diagonal d, superdiagonal e), then B driven to diagonal
// form by rotations that are folded into U and V as they are applied.
class GolubKahan {
public:
    GolubKahan(int rows, int cols, double* u, double* d, double* v, double eps)
        : rows_(rows), cols_(cols), u_(u), d_(d), v_(v), e_(cols, 0.0), eps_(eps) {}

    // Reduces a (overwritten with the reflections) to B, and builds U and V.
    void bidiagonalise(double* a);
    // False when a singular value does not converge.
    bool diagonalise();
    void sortDescending();

private:
    void accumulateU(double* a, const std::vector<double>& tau);
    void accumulateV(double* a, const std::vector<double>& tau);
    bool converge(int k);
    int unreducedBlockStart(int k);
    void zeroNegligibleDiagonals(int l, int k);
    int lastZeroDiagonal(int l, int k) const;
    void chaseRowOut(int i, int k);
    void chaseColumnOut(int l, int k);
    double wilkinsonShift(int l, int k) const;
    void qrStep(int l, int k);

    int rows_, cols_;
    double* u_;
    double* d_;
    double* v_;
    std::vector<double> e_;  // e_[k] couples d_[k] and d_[k + 1]; the last one stays 0
    double eps_;
    double negligibleDiagonal_ = 0.0;
};

// Column k is reflected onto d[k] from the left; then row k, right of the diagonal, onto e[k]
// from the right. The reflections' vectors stay in a, where they were made.
void GolubKahan::bidiagonalise(double* a) {
    std::vector<double> tauLeft(cols_, 0.0), tauRight(cols_, 0.0);
    for (int k = 0; k < cols_; ++k) {
        const Strided column = columnFrom(a, rows_, cols_, k, k);
        const Reflection left = reflectionFor(column);
        d_[k] = left.alpha;
        tauLeft[k] = left.tau;
        for (int j = k + 1; j < cols_; ++j) {
            reflect(left.tau, column, columnFrom(a, rows_, cols_, j, k));
        }
        if (k + 1 < cols_) {
            const Strided row = rowFrom(a, cols_, k, k + 1);
            const Reflection right = reflectionFor(row);
            e_[k] = right.alpha;
            tauRight[k] = right.tau;
            for (int i = k + 1; i < rows_; ++i) {
                reflect(right.tau, row, rowFrom(a, cols_, i, k + 1));
            }
        }
    }
    double norm = 0.0;
    for (int k = 0; k < cols_; ++k) {
        norm = std::max(norm, std::fabs(d_[k]) + std::fabs(e_[k]));
    }
    negligibleDiagonal_ = eps_ * norm;
    accumulateU(a, tauLeft);
    accumulateV(a, tauRight);
}

// U = H_0 H_1 ... H_{n-1} times the first n columns of the identity, applied from the last
// reflection back: H_k only mixes rows k and below, where the columns before k are still zero.
void GolubKahan::accumulateU(double* a, const std::vector<double>& tau) {
    setIdentity(u_, rows_, cols_);
    for (int k = cols_ - 1; k >= 0; --k) {
        for (int j = k; j < cols_; ++j) {
            reflect(tau[k], columnFrom(a, rows_, cols_, k, k), columnFrom(u_, rows_, cols_, j, k));
        }
    }
}

// V = G_0 G_1 ... G_{n-2}, where G_k acts on indices k + 1 and up, built the same way.
void GolubKahan::accumulateV(double* a, const std::vector<double>& tau) {
    setIdentity(v_, cols_, cols_);
    for (int k = cols_ - 2; k >= 0; --k) {
        for (int j = k + 1; j < cols_; ++j) {
            reflect(tau[k], rowFrom(a, cols_, k, k + 1), columnFrom(v_, cols_, cols_, j, k + 1));
        }
    }
}

bool GolubKahan::diagonalise() {
    for (int k = cols_ - 1; k >= 0; --k) {
        if (!converge(k)) {
            return false;
        }
        if (d_[k] < 0.0) {
            d_[k] = -d_[k];
            negateColumn(v_, cols_, cols_, k);
        }
    }
    return true;
}

// Iterates on the unreduced block that ends at k until e[k - 1] is negligible.
bool GolubKahan::converge(int k) {
    for (int iteration = 0;; ++iteration) {
        const int l = unreducedBlockStart(k);
        zeroNegligibleDiagonals(l, k);
        if (l == k) {
            return true;
        }
        if (iteration == kMaxIterationsPerValue) {
            return false;
        }
        const int zero = lastZeroDiagonal(l, k);
        if (zero == k) {
            chaseColumnOut(l, k);
        } else if (zero >= 0) {
            chaseRowOut(zero, k);
        } else {
            qrStep(l, k);
        }
    }
}

// Sets the negligible superdiagonal elements above k to zero, going up until one is: the block
// from there to k has no zero on its superdiagonal. Negligible means lost in the rounding of its
// neighbours on the diagonal; a looser test would save an iteration or two but bend the
// singular vectors, and the solutions with them, by as much.
int GolubKahan::unreducedBlockStart(int k) {
    int l = k;
    while (l > 0) {
        double& coupling = e_[l - 1];
        if (std::fabs(coupling) <= kRoundoff * (std::fabs(d_[l - 1]) + std::fabs(d_[l]))) {
            coupling = 0.0;
            break;
        }
        --l;
    }
    return l;
}

// A diagonal element below eps times the size of B is a zero singular value in the making: it
// is set to exactly zero and then split off by chasing its row or column out. A converged
// singular value that small becomes exactly zero too, and so is dropped from the inverse.
void GolubKahan::zeroNegligibleDiagonals(int l, int k) {
    for (int i = l; i <= k; ++i) {
        if (std::fabs(d_[i]) <= negligibleDiagonal_) {
            d_[i] = 0.0;
        }
    }
}

int GolubKahan::lastZeroDiagonal(int l, int k) const {
    for (int i = k; i >= l; --i) {
        if (d_[i] == 0.0) {
            return i;
        }
    }
    return -1;
}

// d[i] is 0 (i < k): row i holds only e[i]. Rotating row i against the rows below, one at a
// time, moves that element right until it falls off the block.
void GolubKahan::chaseRowOut(int i, int k) {
    double f = e_[i];
    e_[i] = 0.0;
    for (int j = i + 1; j <= k; ++j) {
        const Rotation g = rotationFor(d_[j], f);
        d_[j] = g.r;
        rotateColumns(u_, rows_, cols_, j, i, g);
        if (j < k) {
            f = -g.s * e_[j];
            e_[j] *= g.c;
        }
    }
}

// d[k] is 0: column k holds only e[k - 1]. Rotating column k against the columns to its left
// moves that element up until it falls off the block.
void GolubKahan::chaseColumnOut(int l, int k) {
    double f = e_[k - 1];
    e_[k - 1] = 0.0;
    for (int j = k - 1; j >= l; --j) {
        const Rotation g = rotationFor(d_[j], f);
        d_[j] = g.r;
        rotateColumns(v_, cols_, cols_, j, k, g);
        if (j > l) {
            f = -g.s * e_[j - 1];
            e_[j - 1] *= g.c;
        }
    }
}

// The eigenvalue of the trailing 2 x 2 block of B^T B (over the block l..k) nearer to its last
// diagonal element.
double GolubKahan::wilkinsonShift(int l, int k) const {
    const double above = k - 1 > l ? e_[k - 2] : 0.0;
    const double first = d_[k - 1] * d_[k - 1] + above * above;
    const double last = d_[k] * d_[k] + e_[k - 1] * e_[k - 1];
    const double off = d_[k - 1] * e_[k - 1];
    const double half = 0.5 * (first - last);
    const double root = std::hypot(half, off);
    const double denominator = half >= 0.0 ? half + root : half - root;
    return denominator == 0.0 ? last : last - off * off / denominator;
}

// One implicitly shifted QR step on the block l..k: the first right rotation is the one of the
// shifted B^T B; the bulge it creates below the diagonal is chased down by alternating left
// and right rotations.
void GolubKahan::qrStep(int l, int k) {
    const double shift = wilkinsonShift(l, k);
    double y = d_[l] * d_[l] - shift;
    double z = d_[l] * e_[l];
    for (int p = l; p < k; ++p) {
        const Rotation right = rotationFor(y, z);
        if (p > l) {
            e_[p - 1] = right.r;
        }
        const double diagonal = right.c * d_[p] + right.s * e_[p];
        const double coupling = -right.s * d_[p] + right.c * e_[p];
        const double bulge = right.s * d_[p + 1];
        const double next = right.c * d_[p + 1];
        rotateColumns(v_, cols_, cols_, p, p + 1, right);

        const Rotation left = rotationFor(diagonal, bulge);
        d_[p] = left.r;
        e_[p] = left.c * coupling + left.s * next;
        d_[p + 1] = -left.s * coupling + left.c * next;
        rotateColumns(u_, rows_, cols_, p, p + 1, left);
        if (p + 1 < k) {
            y = e_[p];
            z = left.s * e_[p + 1];
            e_[p + 1] *= left.c;
        }
    }
}

void GolubKahan::sortDescending() {
    for (int i = 0; i < cols_; ++i) {
        const int largest = int(std::max_element(d_ + i, d_ + cols_) - d_);
        if (largest != i) {
            std::swap(d_[i], d_[largest]);
            swapColumns(u_, rows_, cols_, i, largest);
            swapColumns(v_, cols_, cols_, i, largest);
        }
    }
}

// ---- the ellipse fit ---------------------------------------------------------------------------

constexpr double kSolveEps = 1e-6;
// Right-hand side of the general conic fit; any constant would do, this one keeps the
// coefficients of typical edge point sets in a comfortable range.
constexpr double kGeneralConicRhs = 10000.0;
// Below this a term is too small to divide by: relative to c for sin(-2 theta), absolute for
// the quadratic form along an axis.
constexpr double kTiny = 1e-6;
// The angle is converted to degrees with this rounded pi, as it always has been: angles stay
// comparable with those recorded before.
constexpr double kPi = 3.1415926;

// Least-squares fit of Cols coefficients to n points, rhs on every row: rowOf(i, row) writes
// the Cols terms of point i.
template <int Cols, typename RowOf>
void fitRows(LSEllipse& solver, int n, double rhs, RowOf rowOf, double* coefficients) {
    std::vector<double> a(std::size_t(n) * Cols);
    const std::vector<double> b(n, rhs);
    for (int i = 0; i < n; ++i) {
        rowOf(i, &a[std::size_t(i) * Cols]);
    }
    solver.SVD(a.data(), n, Cols, b.data(), coefficients, kSolveEps);
}

// Semi-axis of the centred conic along the eigenvector of its quadratic form whose eigenvalue
// is twiceEigenvalue / 2: sqrt(2 / |twiceEigenvalue|). A value too small to invert is kept as
// it is.
double semiAxis(double twiceEigenvalue) {
    const double magnitude = std::fabs(twiceEigenvalue);
    return magnitude > kTiny ? std::sqrt(2.0 / magnitude) : magnitude;
}

// Degrees plus 90. A theta from atan2 is within +-90 degrees, which leaves the result in
// [0, 180] and the wraps idle; they are the angle's documented bounds, kept for any theta.
double degreesOf(double theta) {
    double degrees = theta * 180.0 / kPi + 90.0;
    if (degrees < -180.0) {
        degrees += 360.0;
    }
    if (degrees > 360.0) {
        degrees -= 360.0;
    }
    return degrees;
}

}  // namespace

int LSEllipse::muav(double* a, int m, int n, double* u, double* s, double* v, double eps) {
    GolubKahan decomposition(m, n, u, s, v, eps);
    decomposition.bidiagonalise(a);
    if (!decomposition.diagonalise()) {
        return -1;
    }
    decomposition.sortDescending();
    return 1;
}

// A matrix with fewer rows than columns is decomposed with zero rows added below: they only
// add zero singular values, which the inverse drops, and its extra columns are never formed.
int LSEllipse::ginv(const double* a, int m, int n, double eps, double* pseudoInverse) {
    const int rows = std::max(m, n);
    std::vector<double> work(std::size_t(rows) * n, 0.0);
    std::copy(a, a + std::size_t(m) * n, work.begin());
    std::vector<double> u(std::size_t(rows) * n), s(n), v(std::size_t(n) * n);
    if (muav(work.data(), rows, n, u.data(), s.data(), v.data(), eps) < 0) {
        return -1;
    }
    const int rank = int(std::find(s.begin(), s.end(), 0.0) - s.begin());
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < m; ++j) {
            double sum = 0.0;
            for (int p = 0; p < rank; ++p) {
                sum += v[std::size_t(i) * n + p] * u[std::size_t(j) * n + p] / s[p];
            }
            pseudoInverse[std::size_t(i) * m + j] = sum;
        }
    }
    return 1;
}

int LSEllipse::SVD(const double* a, int m, int n, const double* b, double* x, double eps) {
    std::fill(x, x + n, 0.0);
    std::vector<double> pseudoInverse(std::size_t(n) * m);
    if (ginv(a, m, n, eps, pseudoInverse.data()) < 0) {
        return -1;
    }
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < m; ++j) {
            x[i] += pseudoInverse[std::size_t(i) * m + j] * b[j];
        }
    }
    return 1;
}

// A general conic through the points, -g0 dx^2 - g1 dy^2 - g2 dx dy + g3 dx + g4 dy = const in
// offsets from the centroid, gives the center where its gradient vanishes; a conic centred
// there, a ex^2 + b ey^2 + c ex ey = 1, gives the axes and the angle.
void LSEllipse::cvFitEllipse2f(const int* xs, const int* ys, int n, double* result) {
    if (n < 1) {
        std::fill(result, result + 5, std::numeric_limits<double>::quiet_NaN());
        return;
    }
    double cx = 0.0, cy = 0.0;
    for (int i = 0; i < n; ++i) {
        cx += xs[i];
        cy += ys[i];
    }
    cx /= n;
    cy /= n;
    const auto dx = [&](int i) { return xs[i] - cx; };
    const auto dy = [&](int i) { return ys[i] - cy; };

    double g[5];
    fitRows<5>(
        *this, n, kGeneralConicRhs,
        [&](int i, double* row) {
            const double x = dx(i), y = dy(i);
            row[0] = -x * x;
            row[1] = -y * y;
            row[2] = -x * y;
            row[3] = x;
            row[4] = y;
        },
        g);

    const double gradient[4] = {2.0 * g[0], g[2], g[2], 2.0 * g[1]};
    const double linear[2] = {g[3], g[4]};
    double center[2];
    SVD(gradient, 2, 2, linear, center, kSolveEps);

    double q[3];
    fitRows<3>(
        *this, n, 1.0,
        [&](int i, double* row) {
            const double x = dx(i) - center[0], y = dy(i) - center[1];
            row[0] = x * x;
            row[1] = y * y;
            row[2] = x * y;
        },
        q);
    const double a = q[0], b = q[1], c = q[2];

    // The form's eigenvalues are (a + b -/+ t) / 2 with t = sqrt((b - a)^2 + c^2), taken as
    // c / sin(-2 theta) unless c is too small for that. When c is (next to) exactly 0 with
    // b < a, sin(-2 theta) is the rounding left of sin(pi) rather than 0, and t comes out far
    // too small: the axes of such a perfectly symmetric point set, taller than wide, are pulled
    // towards their mean. Edge points of a real picture always leave c well clear of that.
    const double theta = -0.5 * std::atan2(c, b - a);
    double t = std::sin(-2.0 * theta);
    t = std::fabs(t) > std::fabs(c) * kTiny ? c / t : b - a;

    result[0] = cx + center[0];
    result[1] = cy + center[1];
    result[2] = 2.0 * semiAxis(a + b - t);
    result[3] = 2.0 * semiAxis(a + b + t);
    if (result[3] < result[2]) {
        std::swap(result[2], result[3]);
    }
    result[4] = degreesOf(theta);
}
