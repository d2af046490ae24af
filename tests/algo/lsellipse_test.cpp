#include "lsellipse.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "nearvalues.h"

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kEps = 1e-6;

// ---- the least-squares solver ------------------------------------------------------------------

struct System {
    int m, n;
    std::vector<double> a;  // row-major m x n
    std::vector<double> b;

    std::vector<double> solve(int* status = nullptr) const {
        std::vector<double> x(n, std::nan(""));
        const int s = LSEllipse().SVD(a.data(), m, n, b.data(), x.data(), kEps);
        if (status != nullptr) {
            *status = s;
        }
        return x;
    }
};

TEST(LeastSquaresSolver, GivesTheMinimumNormLeastSquaresSolution) {
    struct Case {
        const char* what;
        System system;
        std::vector<double> expected;
        double tolerance = 1e-12;
    };
    const Case cases[] = {
        // b = A (2, 3) + r with r orthogonal to both columns: no x fits exactly.
        {"full rank, overdetermined", {4, 2, {1, 0, 1, 1, 1, 2, 1, 3}, {3, 4, 7, 12}}, {2, 3}},
        {"square", {3, 3, {4, -2, 1, 3, 6, -4, 2, 1, 8}, {3, 3, 28}}, {1, 2, 3}},
        // Every x with x0 + x1 = 1/14 fits; the shortest splits it evenly.
        {"duplicate columns", {3, 2, {1, 1, 2, 2, 3, 3}, {1, 0, 0}}, {1.0 / 28, 1.0 / 28}},
        // b = A (any, 1, -1, 2) and b = A (1, any, 2, any): zero columns leave their unknowns 0.
        {"first column zero",
         {4, 4, {0, 1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 10, 0, 2, 1, 1}, {5, 11, 19, 3}},
         {0, 1, -1, 2}},
        {"zero columns between",
         {4, 4, {1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 7, 0, 2, 0, 9, 0}, {5, 11, 19, 20}},
         {1, 0, 2, 0}},
        // Underdetermined: the shortest x lies in the row space, x = A^T y.
        {"one equation, two unknowns", {1, 2, {1, 1}, {2}}, {1, 1}},
        {"two equations, three unknowns", {2, 3, {1, 0, 1, 0, 1, 1}, {3, 3}}, {1, 1, 2}},
        {"zero matrix", {3, 2, std::vector<double>(6, 0.0), {1, 2, 3}}, {0, 0}, 0.0},
        // The exact solution is (2, 0), but the second singular value, about 5e-10 of the
        // first, is below eps: solved as the rank-1 system it nearly is.
        {"nearly singular", {2, 2, {1, 1, 1, 1 + 1e-9}, {2, 2}}, {1, 1}, 1e-6},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        int status = 0;
        expectNear(c.expected, c.system.solve(&status), c.tolerance);
        EXPECT_EQ(1, status);
    }
}

// ---- the ellipse fit ---------------------------------------------------------------------------

using Fit = std::array<double, 5>;

struct Points {
    std::vector<int> xs, ys;

    void add(int x, int y) {
        xs.push_back(x);
        ys.push_back(y);
    }

    Fit fit() const {
        Fit result;
        LSEllipse().cvFitEllipse2f(xs.data(), ys.data(), int(xs.size()), result.data());
        return result;
    }
};

// Points of the ellipse with semi-axes (along, across) whose `along` axis points at `degrees`
// from the x axis, rounded to whole pixels as edge points are.
Points ellipsePoints(double cx, double cy, double along, double across, double degrees, int count) {
    const double phi = degrees * kPi / 180.0;
    Points points;
    for (int k = 0; k < count; ++k) {
        const double tau = 2.0 * kPi * k / count;
        const double u = along * std::cos(tau), v = across * std::sin(tau);
        points.add(int(std::lround(cx + u * std::cos(phi) - v * std::sin(phi))),
                   int(std::lround(cy + u * std::sin(phi) + v * std::cos(phi))));
    }
    return points;
}

// The angle is the direction of the larger axis plus 90 degrees: 90 when it lies along x.
TEST(EllipseFit, FitsCirclesAndRotatedEllipsesOfEdgePoints) {
    struct Case {
        double cx, cy, along, across, degrees;
        int count;
        double angleTolerance;  // negative: a circle has no angle
    };
    const Case cases[] = {{160, 160, 122, 122, 0, 400, -1},  {300, 240, 130, 110, 0, 400, 0.2},
                          {250, 200, 130, 70, 30, 500, 0.3}, {250, 200, 130, 70, -30, 500, 0.3},
                          {250, 200, 130, 70, 60, 500, 0.3}, {250, 200, 130, 70, 89, 500, 0.3},
                          {250, 200, 130, 70, -89, 500, 0.3}};
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.along << " x " << c.across << " at " << c.degrees);
        const Fit fit = ellipsePoints(c.cx, c.cy, c.along, c.across, c.degrees, c.count).fit();
        expectNear({c.cx, c.cy}, {fit[0], fit[1]}, 0.05);
        expectNear({2 * c.across, 2 * c.along}, {fit[2], fit[3]}, 0.5);
        if (c.angleTolerance >= 0) {
            EXPECT_NEAR(c.degrees + 90.0, fit[4], c.angleTolerance);
        }
    }
}

// Five points fix a conic: (x/10)^2 + (y/5)^2 = 1 around (200, 150) through five whole-pixel
// points. Their centroid is off the center, so the center step has work to do.
TEST(EllipseFit, FitsFivePointsOnAConicExactly) {
    const Fit fit = Points{{210, 190, 200, 206, 192}, {150, 150, 155, 154, 153}}.fit();
    expectNear({200.0, 150.0, 10.0, 20.0}, {fit[0], fit[1], fit[2], fit[3]}, 1e-9);
    EXPECT_NEAR(90.0, fit[4], 1e-6);
}

}  // namespace
