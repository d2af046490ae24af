#include "scratchedges.h"

#include <algorithm>
#include <cmath>

#include "nobadalloc.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

// Edges of one scratch are parallel to within this (radians).
constexpr double kParallel = 0.05;
// Lines closer than this are one line, not a scratch's two edges; farther than the widest
// scratch (12 um at the single-fiber scale) they are two scratches.
constexpr double kMinSeparationPx = 2.0;
constexpr double kMaxSeparationPx = 24.0;
// The overlap along the lines, as a share of the shorter one.
constexpr double kMinOverlap = 0.5;
// The picture is sampled this far outside each edge, beyond its blur, every kSampleStep px
// along the overlap; the band must differ from both sides by more than kBandContrast levels.
constexpr double kOutsideEdgePx = 3.0;
constexpr double kSampleStepPx = 2.0;
constexpr double kBandContrast = 4.0;

// A line as an origin, a unit direction and a length.
struct Axis {
    double x, y, ux, uy, length;

    explicit Axis(const ScratchRecord& s)
        : x(s.x1), y(s.y1), length(std::hypot(s.x2 - s.x1, s.y2 - s.y1)) {
        ux = (s.x2 - s.x1) / length;
        uy = (s.y2 - s.y1) / length;
    }
    double along(double px, double py) const { return (px - x) * ux + (py - y) * uy; }
    double across(double px, double py) const { return (py - y) * ux - (px - x) * uy; }
};

double lineAngleBetween(const Axis& a, const Axis& b) {
    const double d = std::fmod(std::abs(std::atan2(a.uy, a.ux) - std::atan2(b.uy, b.ux)), kPi);
    return std::min(d, kPi - d);
}

struct Partner {
    double separation;   // signed, across the first line
    double first, last;  // the overlap along the first line
};

// Mean level along the first line's direction over [first, last], `offset` px across it.
double meanAlong(const unsigned char* image, int width, int height, const Axis& a, const Partner& p,
                 double offset) {
    double sum = 0.0;
    int n = 0;
    for (double t = p.first; t <= p.last; t += kSampleStepPx) {
        const int x = int(std::lround(a.x + t * a.ux - offset * a.uy));
        const int y = int(std::lround(a.y + t * a.uy + offset * a.ux));
        if (x >= 0 && y >= 0 && x < width && y < height) {
            sum += image[y * width + x];
            ++n;
        }
    }
    return n > 0 ? sum / n : NAN;
}

bool enclosesBand(const unsigned char* image, int width, int height, const Axis& a,
                  const Partner& p) {
    const double outward = p.separation > 0 ? kOutsideEdgePx : -kOutsideEdgePx;
    const double band = meanAlong(image, width, height, a, p, p.separation / 2);
    const double sideA = meanAlong(image, width, height, a, p, -outward);
    const double sideB = meanAlong(image, width, height, a, p, p.separation + outward);
    return band < std::min(sideA, sideB) - kBandContrast ||
           band > std::max(sideA, sideB) + kBandContrast;
}

// Whether b is the other edge of the scratch a is an edge of; fills p if so.
bool isOtherEdge(const unsigned char* image, int width, int height, const ScratchRecord& a,
                 const ScratchRecord& b, Partner& p) {
    const Axis axisA(a), axisB(b);
    if (lineAngleBetween(axisA, axisB) >= kParallel) {
        return false;
    }
    p.separation = (axisA.across(b.x1, b.y1) + axisA.across(b.x2, b.y2)) / 2;
    const double b1 = axisA.along(b.x1, b.y1), b2 = axisA.along(b.x2, b.y2);
    p.first = std::max(0.0, std::min(b1, b2));
    p.last = std::min(axisA.length, std::max(b1, b2));
    return std::abs(p.separation) >= kMinSeparationPx &&
           std::abs(p.separation) <= kMaxSeparationPx &&
           p.last - p.first >= kMinOverlap * std::min(axisA.length, axisB.length) &&
           enclosesBand(image, width, height, axisA, p);
}

// One scratch along the middle of the band, over both lines' lengths.
ScratchRecord middleOf(const ScratchRecord& a, const ScratchRecord& b, double separation) {
    const Axis axis(a);
    const double first = std::min({0.0, axis.along(b.x1, b.y1), axis.along(b.x2, b.y2)});
    const double last = std::max({axis.length, axis.along(b.x1, b.y1), axis.along(b.x2, b.y2)});
    const double ox = -axis.uy * separation / 2, oy = axis.ux * separation / 2;
    return {axis.x + first * axis.ux + ox,
            axis.y + first * axis.uy + oy,
            axis.x + last * axis.ux + ox,
            axis.y + last * axis.uy + oy,
            std::abs(separation),
            a.direction,
            std::max(a.significance, b.significance)};
}

// The nearest other edge of line byLength[a] among the shorter lines not yet taken, or
// lines.size() for none; its place across the line goes to best.
size_t nearestOtherEdge(const unsigned char* image, int width, int height,
                        const std::vector<ScratchRecord>& lines,
                        const std::vector<size_t>& byLength, size_t a,
                        const std::vector<bool>& taken, Partner& best) {
    const size_t i = byLength[a];
    size_t partner = lines.size();
    for (size_t b = a + 1; b < byLength.size(); ++b) {
        const size_t j = byLength[b];
        Partner p;
        if (!taken[j] && isOtherEdge(image, width, height, lines[i], lines[j], p) &&
            (partner == lines.size() || std::abs(p.separation) < std::abs(best.separation))) {
            partner = j;
            best = p;
        }
    }
    return partner;
}

}  // namespace

int pairScratchEdges(const unsigned char* image, int width, int height,
                     std::vector<ScratchRecord>& lines) {
    return minusOneOnBadAlloc([&] {
        // Lines choose their partners longest first, so that a line picks the other edge
        // before the pieces near it do; the list keeps its order, a pair in its longer line's
        // place.
        std::vector<size_t> byLength(lines.size());
        for (size_t i = 0; i < lines.size(); ++i) {
            byLength[i] = i;
        }
        auto length = [&](size_t i) {
            return std::hypot(lines[i].x2 - lines[i].x1, lines[i].y2 - lines[i].y1);
        };
        std::stable_sort(byLength.begin(), byLength.end(),
                         [&](size_t a, size_t b) { return length(a) > length(b); });
        std::vector<ScratchRecord> paired = lines;
        std::vector<bool> taken(lines.size(), false);
        for (size_t a = 0; a < byLength.size(); ++a) {
            const size_t i = byLength[a];
            Partner best{0.0, 0.0, 0.0};
            const size_t partner =
                taken[i] ? lines.size()
                         : nearestOtherEdge(image, width, height, lines, byLength, a, taken, best);
            if (partner != lines.size()) {
                taken[partner] = true;
                paired[i] = middleOf(lines[i], lines[partner], best.separation);
            }
        }
        lines.clear();
        for (size_t i = 0; i < paired.size(); ++i) {
            if (!taken[i]) {
                lines.push_back(paired[i]);
            }
        }
        return int(lines.size());
    });
}
