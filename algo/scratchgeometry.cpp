#include "scratchgeometry.h"

#include <cmath>

namespace {

bool strictlyInside(double x, double y, int cx, int cy, double r) {
    return (x - cx) * (x - cx) + (y - cy) * (y - cy) < r * r;
}

}  // namespace

bool CheckInCircle(double x1, double y1, double x2, double y2, int cx, int cy, double r) {
    return strictlyInside(x1, y1, cx, cy, r) || strictlyInside(x2, y2, cx, cy, r);
}

bool GetLineCirclePoint(double x1, double y1, double x2, double y2, int cx, int cy, double r,
                        double& ox1, double& oy1, double& ox2, double& oy2) {
    if (x1 == x2) {
        const double h = r * r - (x1 - cx) * (x1 - cx);
        if (h < 0.0) {
            return false;
        }
        ox1 = ox2 = x1;
        oy1 = cy + std::sqrt(h);
        oy2 = cy - std::sqrt(h);
        return true;
    }
    // y = kx + b put into (x - cx)^2 + (y - cy)^2 = r^2.
    const double k = (y2 - y1) / (x2 - x1);
    const double b = y1 - k * x1;
    const double a2 = 1.0 + k * k;
    const double a1 = 2.0 * k * (b - cy) - 2.0 * cx;
    const double a0 = (b - cy) * (b - cy) + double(cx * cx) - r * r;
    const double discriminant = a1 * a1 - 4.0 * a2 * a0;
    if (discriminant < 0.0) {
        return false;
    }
    ox1 = (-a1 + std::sqrt(discriminant)) / (2.0 * a2);
    ox2 = (-a1 - std::sqrt(discriminant)) / (2.0 * a2);
    oy1 = k * ox1 + b;
    oy2 = k * ox2 + b;
    return true;
}

double Point2LineDistance(double px, double py, double x1, double y1, double x2, double y2) {
    if (x1 == x2) {
        return std::abs(px - x1);
    }
    if (y1 == y2) {
        return std::abs(py - y1);
    }
    return std::abs((x2 - x1) * (py - y1) - (y2 - y1) * (px - x1)) /
           std::sqrt((x2 - x1) * (x2 - x1) + (y2 - y1) * (y2 - y1));
}
