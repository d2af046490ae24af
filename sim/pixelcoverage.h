#pragma once

namespace sim {

// How much of the pixel centred on (x, y) a shape covers, by testing 89 points of a Fibonacci
// lattice inside the pixel. The lattice spreads its points evenly in every direction (seen
// along either axis they fall in 89 distinct rows and columns), so even a straight,
// axis-aligned edge is placed to about 1/89 px; and it is symmetric about the pixel's middle,
// so a shape's coverage has its centroid where the shape has.
template <class Inside>
double sampledCoverage(double x, double y, const Inside& inside) {
    constexpr int kPoints = 89;
    constexpr int kStep = 55;    // the Fibonacci number before 89
    constexpr int kOffset = 27;  // makes the lattice point-symmetric about the middle
    int hits = 0;
    for (int k = 0; k < kPoints; ++k) {
        const int row = (k * kStep + kOffset) % kPoints;
        if (inside(x + (k + 0.5) / kPoints - 0.5, y + (row + 0.5) / kPoints - 0.5)) {
            ++hits;
        }
    }
    return hits / double(kPoints);
}

// A pixel whose middle lies farther than this from a shape's outline is wholly in or out.
constexpr double kCoverageMargin = 0.75;

// The coverage of the pixel at (x, y), given its middle's signed distance to the outline
// (negative inside). Only pixels the outline crosses pay for sampling.
template <class Inside>
double coverage(double outlineDistance, double x, double y, const Inside& inside) {
    if (outlineDistance <= -kCoverageMargin) {
        return 1.0;
    }
    if (outlineDistance >= kCoverageMargin) {
        return 0.0;
    }
    return sampledCoverage(x, y, inside);
}

}  // namespace sim
