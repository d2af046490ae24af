#pragma once

#include <map>
#include <vector>

#include "scratchrecord.h"

// Joins the pieces of a scratch. The detector finds a scratch as several collinear segments
// where dirt, the core or noise interrupt it; one merge round groups candidates, longest
// first, that point the same way, lie on the same line and are separated by a bounded gap, and
// turns each group into one segment between its extreme endpoints.
class LineMerge {
public:
    LineMerge();

    // One merge round: angle tolerance (radians) between a candidate and its group, p the
    // sideways tolerance (pixels) of a candidate from the group's line, gap the largest gap
    // (pixels) between a candidate and the group along the line. Appends the merged segments
    // to out and returns how many.
    int MultiMergeLine(double angleTol, double p, double gap, std::vector<ScratchRecord>& out);

    // Fill the candidates from detected segments (with the tests against arcs about the fiber
    // center) or from merged scratches. Candidates shorter than minLength or wider than
    // maxWidth pixels are left out. Both return the number of candidates.
    int FillDataCenter(const ScratchRecord* segments, int n, double cx, double cy, int minLength,
                       int maxWidth);
    int FillData(const std::vector<ScratchRecord>& scratches, int minLength, int maxWidth);

    // Longest first.
    void SortAry();

    // Keeps the scratches whose extent along x or along y exceeds minSpan pixels.
    static void ExcludeLength(std::vector<ScratchRecord>& scratches, double minSpan);

private:
    struct Candidate {
        ScratchRecord segment;  // endpoints with x1 <= x2
        double angle;           // direction folded to [0, pi): the line's orientation
        double length;
        int state;  // kFree, or the number of the group it joined (0, 1, 2 ...)
    };
    // Groups are numbered from 0 upwards, so the free marker lies below them: a marker inside
    // their range would make the members of that group look free again.
    static constexpr int kFree = -1;

    void SetPara(double angleTol, int p, int gap);
    bool FillPoint(const ScratchRecord& segment, int minLength);
    bool FillPointWidth(const ScratchRecord& segment, int maxWidth) const;
    bool looksLikeArcAboutCenter(const ScratchRecord& segment) const;
    void prepare(int candidates);
    void addCandidate(const ScratchRecord& segment);
    void SwapAryItem(int a, int b);
    int GetPartOne(std::vector<ScratchRecord>& out);
    bool joins(const Candidate& seed, const Candidate& candidate, double extentFirst,
               double extentLast) const;
    ScratchRecord GetRangePoint(const std::vector<int>& members) const;

    std::vector<Candidate> items_;
    double angleTol_ = 0.1;
    int p_ = 10;
    int gap_ = 100;
    double cx_ = 0.0, cy_ = 0.0;
    bool aboutCenter_ = false;
};

// Distances used by the grouping.
double Point2PointDis(double x1, double y1, double x2, double y2);
// Gap along the line of direction (ux, uy) between the interval [first, last] of a group and
// the interval a candidate covers on it; 0 when they overlap.
double Point2PointDisExcludeLength(double first, double last, double candidateFirst,
                                   double candidateLast);
// Distance of (px, py) from the line through (x0, y0) with unit direction (ux, uy).
double Point2LineVerticalABSDis(double px, double py, double x0, double y0, double ux, double uy);
// The larger distance of a segment's two endpoints from that line.
double Point2PointLineABSDis(const ScratchRecord& segment, double x0, double y0, double ux,
                             double uy);
