#include "sectionmap.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

struct ZoneRing {
    double innerSquared;
    double outerSquared;
};

double squared(double value) {
    return value * value;
}

// The smallest whole distance t >= 0 along the row at which the squared distance dy2 + t^2,
// taken as a double as the pixel test takes it, reaches `bound`.
long firstReaching(long dy2, double bound) {
    long t = bound > double(dy2) ? long(std::ceil(std::sqrt(bound - double(dy2)))) : 0;
    while (t > 0 && double(dy2 + (t - 1) * (t - 1)) >= bound) {
        --t;
    }
    while (double(dy2 + t * t) < bound) {
        ++t;
    }
    return t;
}

// Sets the row's pixels from centerX - last to centerX - first and from centerX + first to
// centerX + last (those inside the row) to `zone`.
void paintSpans(unsigned char* row, int width, int centerX, long first, long last,
                unsigned char zone) {
    for (long from : {long(centerX) - last, long(centerX) + first}) {
        const long begin = std::max(from, 0L),
                   end = std::min(from + (last - first) + 1, long(width));
        if (begin < end) {
            std::memset(row + begin, zone, size_t(end - begin));
        }
    }
}

}  // namespace

// Each row is painted by spans: a ring covers the pixels whose distance along the row from
// the center lies between two whole numbers found once per row. The zones are painted last to
// first, so that where rings overlap the first zone in task order stays.
void initSectionMapByTaskInfoSF(const TaskInfoSetting& task, unsigned char* zoneMap, int width,
                                int height, int centerX, int centerY, double scale) {
    std::memset(zoneMap, 0, static_cast<size_t>(width) * height);
    const int zones = zonesInUse(task);
    ZoneRing rings[kMaxZones];
    for (int i = 0; i < zones; ++i) {
        rings[i] = {squared(zoneRadiusPx(task.sections[i].diameterMin, scale)),
                    squared(zoneRadiusPx(task.sections[i].diameterMax, scale))};
    }
    for (int y = 0; y < height; ++y) {
        unsigned char* row = zoneMap + static_cast<long>(y) * width;
        const long dy2 = static_cast<long>(y - centerY) * (y - centerY);
        for (int i = zones - 1; i >= 0; --i) {
            const long first = firstReaching(dy2, rings[i].innerSquared);
            const long end = firstReaching(dy2, rings[i].outerSquared);
            if (first < end) {
                paintSpans(row, width, centerX, first, end - 1, static_cast<unsigned char>(i));
            }
        }
    }
}
