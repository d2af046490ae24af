#pragma once

// Least-squares ellipse fit to integer edge points: a general conic fit, then its center, then
// a centred conic fit, every linear system solved in the least-squares sense through the
// Moore-Penrose inverse from a singular value decomposition. Double precision throughout.
class LSEllipse {
public:
    // Fits n points (n >= 5). result: [0] center x, [1] center y, [2] smaller full axis,
    // [3] larger full axis, [4] angle in degrees: the direction of the larger axis plus 90, so
    // 90 for an ellipse that is widest along x. With n < 1 every result is NaN. Points on a
    // line give no ellipse: the fit still returns finite values then, without error.
    void cvFitEllipse2f(const int* xs, const int* ys, int n, double* result);

    // Minimum-norm least-squares solution x (n values) of the m x n system a x = b (a is
    // row-major, any m and n >= 1). Singular values below eps times the size of the matrix (of
    // the order of its largest singular value) are made exactly 0, and singular values that
    // are exactly 0 are dropped: eps is the relative rank tolerance. When the decomposition
    // does not converge, x is left zero. Returns 1, or -1 when it did not converge.
    // In the system's own terms this is gmiv, x = A+ b.
    int SVD(const double* a, int m, int n, const double* b, double* x, double eps);

private:
    // The Moore-Penrose inverse A+ = V S+ U^T (n x m, row-major) of the m x n matrix a, over the
    // rank leading singular values that are not exactly 0. Returns 1, or -1 as muav does.
    static int ginv(const double* a, int m, int n, double eps, double* pseudoInverse);

    // Singular value decomposition a = U diag(s) V^T of an m x n matrix with m >= n: a is
    // overwritten as work space, u gets m x n, s n values (non-negative, descending), v n x n.
    // eps is the relative rank tolerance of SVD. Returns 1, or -1 when a singular value has not
    // converged after 60 iterations.
    static int muav(double* a, int m, int n, double* u, double* s, double* v, double eps);
};
