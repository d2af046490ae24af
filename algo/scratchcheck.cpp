#include "scratchcheck.h"

#include <algorithm>

#include "mergesegment.h"
#include "nobadalloc.h"
#include "scratchannuli.h"
#include "scratchedges.h"
#include "scratchgeometry.h"
#include "segmentsearch.h"

namespace {

// Zones looked at, at the most.
constexpr int kMaxScannedZones = 23;

int zonesToScan(const TaskInfoSetting& task) {
    return std::min(zonesInUse(task), kMaxScannedZones);
}

double diameterToRadiusPx(double diameterUm, float pixelSize) {
    return diameterUm / pixelSize * 0.5;
}

// The diameters bounding the gaps of the search: what lies between checked zones, or is
// excluded, from 0 to the outer diameter.
std::vector<int> searchGaps(const TaskInfoSetting& task, double outerDiameter,
                            const double* excludedRanges, int excludedRangeCount) {
    const int zones = zonesToScan(task);
    std::vector<int> boundaries(size_t(zones) * (2 + 2 * excludedRangeCount) + 2);
    int n = 0;
    for (int z = 0; z < zones; ++z) {
        const TaskZoneSetting& zone = task.sections[z];
        if (zone.sCheck != 0) {
            n = scratch::GetFiberRegion(zone.diameterMin, zone.diameterMax, excludedRanges,
                                        excludedRangeCount, boundaries.data(), n);
        }
    }
    boundaries.resize(size_t(GetValidCheckRadius(boundaries.data(), n, 0, int(outerDiameter))));
    return boundaries;
}

// The first zone, in task order and whether it checks scratches or not, whose outer diameter
// the scratch's line passes inside; -1 for none.
int zoneOfScratch(const TaskInfoSetting& task, const ScratchRecord& s, int cx, int cy,
                  float pixelSize) {
    const double d = Point2LineDistance(cx, cy, s.x1, s.y1, s.x2, s.y2);
    for (int z = 0; z < zonesToScan(task); ++z) {
        if (2.0 * d < task.sections[z].diameterMax / pixelSize) {
            return z;
        }
    }
    return -1;
}

void setScratchVerdicts(TaskInfoSetting& task) {
    for (int z = 0; z < zonesInUse(task); ++z) {
        TaskZoneResult& result = task.zoneResults[z];
        result.sNoBiggerResult =
            verdictWithinLimit(result.sNoBiggerNum, task.sections[z].sNoBiggerLimit);
        result.sBiggerResult = verdictWithinLimit(result.sBiggerNum, task.sections[z].sBiggerLimit);
    }
}

}  // namespace

int scratchSensitivity(const TaskInfoSetting& task) {
    int sum = 0, checked = 0;
    for (int z = 0; z < zonesToScan(task); ++z) {
        if (task.sections[z].sCheck != 0) {
            sum += task.sections[z].sSensitivity;
            ++checked;
        }
    }
    return checked == 0 ? 0 : sum / checked + 10;
}

std::vector<double> scratchSearchAnnuli(const TaskInfoSetting& task, float pixelSize,
                                        double outerDiameter, const double* excludedRanges,
                                        int excludedRangeCount) {
    // The detector searches annuli; the gaps between them come from the zones.
    const std::vector<int> gaps =
        searchGaps(task, outerDiameter, excludedRanges, excludedRangeCount);
    std::vector<double> annuli;
    double start = 0.0;
    for (size_t i = 0; i + 1 < gaps.size(); i += 2) {
        if (gaps[i] > start) {
            annuli.push_back(diameterToRadiusPx(start, pixelSize));
            annuli.push_back(diameterToRadiusPx(gaps[i], pixelSize));
        }
        start = std::max(start, double(gaps[i + 1]));
    }
    if (start < int(outerDiameter)) {
        annuli.push_back(diameterToRadiusPx(start, pixelSize));
        annuli.push_back(diameterToRadiusPx(int(outerDiameter), pixelSize));
    }
    return annuli;
}

int FindLines(const unsigned char* image, int width, int height, int cx, int cy,
              double searchRadius, double circleRadius, const std::vector<double>& searchAnnuli,
              const defect_info_struct* defectRects, int defectRectCount, int sens, int capacity,
              std::vector<ScratchRecord>& out) {
    return minusOneOnBadAlloc([&] {
        double* segments = nullptr;
        int segmentCount = 0;
        FindLumaspecSegment(image, width, height, cx, cy, searchRadius, circleRadius,
                            int(searchAnnuli.size() / 2), searchAnnuli.data(), defectRects,
                            defectRectCount, sens, &segments, &segmentCount);
        std::vector<ScratchRecord> scratches;
        MergeLumaspecSegment(reinterpret_cast<const ScratchRecord*>(segments), segmentCount, cx, cy,
                             scratches, sens);
        freeLineSegments(segments);
        if (pairScratchEdges(image, width, height, scratches) < 0) {
            return -1;
        }

        // A scratch that reaches into the inspection circle is taken across the whole circle.
        for (ScratchRecord& s : scratches) {
            if (CheckInCircle(s.x1, s.y1, s.x2, s.y2, cx, cy, circleRadius)) {
                GetLineCirclePoint(s.x1, s.y1, s.x2, s.y2, cx, cy, circleRadius, s.x1, s.y1, s.x2,
                                   s.y2);
            }
        }
        if (int(scratches.size()) > capacity) {
            return -1;
        }
        out = std::move(scratches);
        return int(out.size());
    });
}

int FindSectionScratch(const unsigned char* image, int width, int height, ScratchRecord* scratches,
                       short* zoneIndex, int capacity, int& count, TaskInfoSetting& task,
                       float pixelSize, int cx, int cy, double outerDiameter, double circleDiameter,
                       const double* excludedRanges, int excludedRangeCount,
                       const defect_info_struct* defectRects, int defectRectCount) {
    return minusOneOnBadAlloc([&] {
        count = 0;
        const int sens = scratchSensitivity(task);
        if (sens == 0) {
            setScratchVerdicts(task);
            return 0;
        }
        std::vector<ScratchRecord> found;
        const int n = FindLines(
            image, width, height, cx, cy, diameterToRadiusPx(outerDiameter, pixelSize),
            diameterToRadiusPx(circleDiameter, pixelSize),
            scratchSearchAnnuli(task, pixelSize, outerDiameter, excludedRanges, excludedRangeCount),
            defectRects, defectRectCount, sens, capacity, found);
        if (n == -1) {
            return -1;
        }
        std::copy(found.begin(), found.end(), scratches);
        gradeScratches(task, scratches, n, cx, cy, pixelSize, zoneIndex);
        count = n;
        return n;
    });
}

void gradeScratches(TaskInfoSetting& task, const ScratchRecord* scratches, int n, int cx, int cy,
                    float pixelSize, short* zoneIndex) {
    for (int i = 0; i < n; ++i) {
        const int z = zoneOfScratch(task, scratches[i], cx, cy, pixelSize);
        if (z < 0) {
            continue;
        }
        // A scratch may measure up to a quarter wider than the limit and still be narrow.
        const double widthUm = pixelSize * scratches[i].width;
        if (0.8 * widthUm < task.sections[z].sWidthLimit) {
            ++task.zoneResults[z].sNoBiggerNum;
        } else {
            ++task.zoneResults[z].sBiggerNum;
        }
        zoneIndex[i] = short(z);
    }
    setScratchVerdicts(task);
}
