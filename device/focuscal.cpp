#include "focuscal.h"

#include <cstdlib>
#include <limits>

namespace MathCal {

namespace {

constexpr double kDiagonalWeight = 1.41;
constexpr int kEndfaceStep = 2;

// The weighted differences of one row's pixels x = step .. width - step - 1 to their
// neighbours in the rows above (up), the same row and below (down).
double rowSum(const unsigned char* up, const unsigned char* row, const unsigned char* down,
              int width, int step) {
    double straight = 0.0, diagonal = 0.0;
    for (int x = step; x < width - step; ++x) {
        const int p = row[x];
        straight += std::abs(up[x] - p) + std::abs(down[x] - p) + std::abs(row[x - step] - p) +
                    std::abs(row[x + step] - p);
        diagonal += std::abs(up[x - step] - p) + std::abs(up[x + step] - p) +
                    std::abs(down[x - step] - p) + std::abs(down[x + step] - p);
    }
    return straight + kDiagonalWeight * diagonal;
}

}  // namespace

double FocusCal::GetGDSingle(unsigned char* image, int width, int height, int step) {
    if (step >= height - step) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    double total = 0.0;
    long visited = 0;
    for (int y = step; y < height - step; ++y) {
        const unsigned char* row = image + long(y) * width;
        total += rowSum(row - long(step) * width, row, row + long(step) * width, width, step);
        visited += width - 2 * step;
    }
    return total / double(visited);
}

double FocusCal::GetAllGDEndface(unsigned char* image, int width, int height) {
    return GetGDSingle(image, width, height, kEndfaceStep);
}

}  // namespace MathCal
