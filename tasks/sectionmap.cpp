#include "sectionmap.h"

#include <algorithm>
#include <cstring>

namespace {

struct ZoneRing {
    double innerSquared;
    double outerSquared;
};

double squared(double value) {
    return value * value;
}

}  // namespace

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
        for (int x = 0; x < width; ++x) {
            const double d2 = double(dy2 + static_cast<long>(x - centerX) * (x - centerX));
            for (int i = 0; i < zones; ++i) {
                if (rings[i].innerSquared <= d2 && d2 < rings[i].outerSquared) {
                    row[x] = static_cast<unsigned char>(i);
                    break;
                }
            }
        }
    }
}
