#pragma once

// Least-squares ellipse fit to integer edge points: a general conic fit, then its center, then
// a centred conic fit, every linear system solved in the least-squares sense through the
// Moore-Penrose inverse from a singular value decomposition. Double precision throughout.
class LSEllipse {
public:
    // Fits n points (n >= 5). result: [0] center x, [1] center y, [2] smaller full axis,
    // [3] larger full axis, [4] angle in degrees.
    void cvFitEllipse2f(const int* xs, const int* ys, int n, double* result);

    // Minimum-norm least-squares solution x (n values) of the m x n system a x = b (a is
    // row-major). Singular values that are exactly 0 are dropped. When the decomposition does
    // not converge, x is left zero. Returns 1, or -1 when it did not converge.
    int SVD(const double* a, int m, int n, const double* b, double* x, double eps);
};
