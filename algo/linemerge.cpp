#include "linemerge.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "nobadalloc.h"

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int kInitialCapacity = 2048;

// Segments shorter than this have no direction to speak of.
constexpr double kDegenerateLength = 0.1;
// A candidate whose farther end is less than 3 px farther from the fiber center than its
// line is, stays within 3 px of one circle about the center: a piece of a circular edge (the
// core's, a ring of dirt) rather than of a scratch. Between 3 and 5 px it is such a piece
// only when it sits symmetrically about the point of its line nearest the center, its middle
// within 2 px of that point: a chord.
constexpr double kArcBand = 3.0;
constexpr double kChordBand = 5.0;
constexpr double kChordMiddleOffset = 2.0;

double foldedAngle(double direction) {
    double angle = std::fmod(direction, kPi);
    return angle < 0.0 ? angle + kPi : angle;
}

double angleBetweenLines(double a, double b) {
    const double d = std::abs(a - b);
    return std::min(d, kPi - d);
}

double lengthOf(const ScratchRecord& s) {
    return std::hypot(s.x2 - s.x1, s.y2 - s.y1);
}

// Position of (x, y) along the line through (x0, y0) with unit direction (ux, uy).
double along(double x, double y, double x0, double y0, double ux, double uy) {
    return (x - x0) * ux + (y - y0) * uy;
}

}  // namespace

double Point2PointDis(double x1, double y1, double x2, double y2) {
    return std::hypot(x2 - x1, y2 - y1);
}

double Point2PointDisExcludeLength(double first, double last, double candidateFirst,
                                   double candidateLast) {
    return std::max({0.0, candidateFirst - last, first - candidateLast});
}

double Point2LineVerticalABSDis(double px, double py, double x0, double y0, double ux, double uy) {
    return std::abs((px - x0) * uy - (py - y0) * ux);
}

double Point2PointLineABSDis(const ScratchRecord& s, double x0, double y0, double ux, double uy) {
    return std::max(Point2LineVerticalABSDis(s.x1, s.y1, x0, y0, ux, uy),
                    Point2LineVerticalABSDis(s.x2, s.y2, x0, y0, ux, uy));
}

LineMerge::LineMerge() {
    items_.reserve(kInitialCapacity);
}

void LineMerge::SetPara(double angleTol, int p, int gap) {
    angleTol_ = angleTol;
    p_ = p;
    gap_ = gap;
}

bool LineMerge::FillPointWidth(const ScratchRecord& segment, int maxWidth) const {
    return segment.width <= maxWidth;
}

bool LineMerge::looksLikeArcAboutCenter(const ScratchRecord& s) const {
    const double lineDistance =
        std::abs((s.x2 - s.x1) * (cy_ - s.y1) - (s.y2 - s.y1) * (cx_ - s.x1)) / lengthOf(s);
    const double farther =
        std::max(Point2PointDis(cx_, cy_, s.x1, s.y1), Point2PointDis(cx_, cy_, s.x2, s.y2));
    const double rise = farther - lineDistance;
    if (rise < kArcBand) {
        return true;
    }
    if (rise >= kChordBand) {
        return false;
    }
    const double ux = (s.x2 - s.x1) / lengthOf(s), uy = (s.y2 - s.y1) / lengthOf(s);
    const double middle = along((s.x1 + s.x2) / 2, (s.y1 + s.y2) / 2, cx_, cy_, ux, uy);
    return std::abs(middle) < kChordMiddleOffset;
}

bool LineMerge::FillPoint(const ScratchRecord& segment, int minLength) {
    const double length = lengthOf(segment);
    if (length < kDegenerateLength || length < minLength) {
        return false;
    }
    return !(aboutCenter_ && looksLikeArcAboutCenter(segment));
}

void LineMerge::addCandidate(const ScratchRecord& segment) {
    Candidate candidate{segment, foldedAngle(segment.direction), lengthOf(segment), kFree};
    if (candidate.segment.x1 > candidate.segment.x2) {
        std::swap(candidate.segment.x1, candidate.segment.x2);
        std::swap(candidate.segment.y1, candidate.segment.y2);
    }
    items_.push_back(candidate);
}

int LineMerge::FillDataCenter(const ScratchRecord* segments, int n, double cx, double cy,
                              int minLength, int maxWidth) {
    return minusOneOnBadAlloc([&] {
        prepare(n);
        cx_ = cx;
        cy_ = cy;
        aboutCenter_ = true;
        for (int i = 0; i < n; ++i) {
            if (FillPoint(segments[i], minLength) && FillPointWidth(segments[i], maxWidth)) {
                addCandidate(segments[i]);
            }
        }
        return int(items_.size());
    });
}

int LineMerge::FillData(const std::vector<ScratchRecord>& scratches, int minLength, int maxWidth) {
    return minusOneOnBadAlloc([&] {
        prepare(int(scratches.size()));
        aboutCenter_ = false;
        for (const ScratchRecord& scratch : scratches) {
            if (FillPoint(scratch, minLength) && FillPointWidth(scratch, maxWidth)) {
                addCandidate(scratch);
            }
        }
        return int(items_.size());
    });
}

// The work array keeps its first capacity of 2048 candidates and grows to the exact number
// when more arrive.
void LineMerge::prepare(int candidates) {
    items_.clear();
    if (size_t(candidates) > items_.capacity()) {
        items_.reserve(size_t(candidates));
    }
}

void LineMerge::SwapAryItem(int a, int b) {
    std::swap(items_[a], items_[b]);
}

void LineMerge::SortAry() {
    const int n = int(items_.size());
    for (int i = 0; i + 1 < n; ++i) {
        int longest = i;
        for (int j = i + 1; j < n; ++j) {
            if (items_[j].length > items_[longest].length) {
                longest = j;
            }
        }
        if (longest != i) {
            SwapAryItem(i, longest);
        }
    }
}

int LineMerge::MultiMergeLine(double angleTol, double p, double gap,
                              std::vector<ScratchRecord>& out) {
    return minusOneOnBadAlloc([&] {
        SetPara(angleTol, int(p), int(gap));
        return GetPartOne(out);
    });
}

bool LineMerge::joins(const Candidate& seed, const Candidate& candidate, double extentFirst,
                      double extentLast) const {
    if (angleBetweenLines(seed.angle, candidate.angle) >= angleTol_) {
        return false;
    }
    const ScratchRecord& s = seed.segment;
    const ScratchRecord& c = candidate.segment;
    const double ux = (s.x2 - s.x1) / seed.length, uy = (s.y2 - s.y1) / seed.length;
    const double a = along(c.x1, c.y1, s.x1, s.y1, ux, uy);
    const double b = along(c.x2, c.y2, s.x1, s.y1, ux, uy);
    const double gap =
        Point2PointDisExcludeLength(extentFirst, extentLast, std::min(a, b), std::max(a, b));
    if (gap >= gap_) {
        return false;
    }
    // Sideways, a piece may lie p pixels off, the other edge of a scratch up to p wide, and
    // stray further by what the angle tolerance allows over the gap it bridges. The group's
    // line is itself only known to within its width over its length: across the gap it may
    // lie gap * width / length off, and that uncertainty counts against the piece. A long
    // straight group reaches far; the short, wide outline of a spot predicts too little to
    // pick up another spot's outline far along its tangent.
    const double offset = Point2PointLineABSDis(c, s.x1, s.y1, ux, uy);
    const double lineUncertainty = gap * s.width / (extentLast - extentFirst);
    return offset + lineUncertainty < p_ + gap * std::tan(angleTol_);
}

int LineMerge::GetPartOne(std::vector<ScratchRecord>& out) {
    std::map<int, std::vector<int>> groups;
    const int n = int(items_.size());
    for (int i = 0; i < n; ++i) {
        if (items_[i].state != kFree) {
            continue;
        }
        const int group = int(groups.size());
        Candidate& seed = items_[i];
        seed.state = group;
        groups[group].push_back(i);
        double extentFirst = 0.0, extentLast = seed.length;
        const double ux = (seed.segment.x2 - seed.segment.x1) / seed.length;
        const double uy = (seed.segment.y2 - seed.segment.y1) / seed.length;
        for (int j = i + 1; j < n; ++j) {
            Candidate& candidate = items_[j];
            if (candidate.state != kFree || !joins(seed, candidate, extentFirst, extentLast)) {
                continue;
            }
            candidate.state = group;
            groups[group].push_back(j);
            for (double t : {along(candidate.segment.x1, candidate.segment.y1, seed.segment.x1,
                                   seed.segment.y1, ux, uy),
                             along(candidate.segment.x2, candidate.segment.y2, seed.segment.x1,
                                   seed.segment.y1, ux, uy)}) {
                extentFirst = std::min(extentFirst, t);
                extentLast = std::max(extentLast, t);
            }
        }
    }
    int written = 0;
    for (const auto& group : groups) {
        const ScratchRecord merged = GetRangePoint(group.second);
        if (merged.x1 >= 0 && merged.y1 >= 0 && merged.x2 >= 0 && merged.y2 >= 0) {
            out.push_back(merged);
            ++written;
        }
    }
    return written;
}

// The group's segment. The detector sees a scratch wider than a couple of pixels as its two
// edges, two parallel lines with opposite gradients: the scratch runs midway between the
// outermost members, along the seed's direction, between the extreme member endpoints, and is
// as wide as the members lie apart (or as its widest member, if wider).
ScratchRecord LineMerge::GetRangePoint(const std::vector<int>& members) const {
    const Candidate& seed = items_[members.front()];
    const ScratchRecord& s = seed.segment;
    const double ux = (s.x2 - s.x1) / seed.length, uy = (s.y2 - s.y1) / seed.length;
    // Positions along the seed's line, and sideways (signed) of it.
    double first = 0.0, last = seed.length, nearSide = 0.0, farSide = 0.0, width = s.width;
    for (int index : members) {
        const ScratchRecord& m = items_[index].segment;
        for (const auto& [x, y] : {std::pair(m.x1, m.y1), std::pair(m.x2, m.y2)}) {
            const double t = along(x, y, s.x1, s.y1, ux, uy);
            const double side = (y - s.y1) * ux - (x - s.x1) * uy;
            first = std::min(first, t);
            last = std::max(last, t);
            nearSide = std::min(nearSide, side);
            farSide = std::max(farSide, side);
        }
        width = std::max(width, m.width);
    }
    const double middle = (nearSide + farSide) / 2;
    const double ox = -uy * middle, oy = ux * middle;
    return {s.x1 + first * ux + ox,
            s.y1 + first * uy + oy,
            s.x1 + last * ux + ox,
            s.y1 + last * uy + oy,
            std::max(width, farSide - nearSide),
            s.direction,
            s.significance};
}

void LineMerge::ExcludeLength(std::vector<ScratchRecord>& scratches, double minSpan) {
    scratches.erase(std::remove_if(scratches.begin(), scratches.end(),
                                   [minSpan](const ScratchRecord& s) {
                                       return !(std::abs(s.x2 - s.x1) > minSpan ||
                                                std::abs(s.y2 - s.y1) > minSpan);
                                   }),
                    scratches.end());
}
