#include "finddefect.h"

#include <algorithm>
#include <vector>

#include "defectfilter.h"
#include "defectmap.h"
#include "defectrings.h"
#include "findvaliddefect.h"
#include "nobadalloc.h"

namespace {

struct Rings {
    std::vector<int> radii;  // (inner, outer) pairs
    std::vector<double> thresholds;
};

// The rings of every zone with defect checking on, in pixel radii, or false when there are
// more than the defect map holds.
bool ringsOfTask(const TaskInfoSetting& task, const int* bands, int bandCount, float scale,
                 Rings& rings) {
    const int zones = zonesInUse(task);
    std::vector<int> ringList(2 * static_cast<size_t>(zones) * (bandCount + 1));
    int position = 0;
    for (int z = 0; z < zones; ++z) {
        const TaskZoneSetting& zone = task.sections[z];
        if (zone.dCheck != 1) {
            continue;
        }
        const int end = defect::GetFiberRegion(zone.diameterMin, zone.diameterMax, bands, bandCount,
                                               ringList.data(), position);
        rings.thresholds.insert(rings.thresholds.end(), end - position,
                                zoneDefectThreshold(task, z));
        position = end;
    }
    if (position > GetFiberDefectMap::kMaxRings) {
        return false;
    }
    for (int i = 0; i < 2 * position; ++i) {
        rings.radii.push_back(ringRadiusPx(ringList[i], scale));
    }
    return true;
}

void applyMask(unsigned char* defectMap, const unsigned char* mask, long size) {
    for (long i = 0; i < size; ++i) {
        if (mask[i] == 255) {
            defectMap[i] = 0;
        }
    }
}

}  // namespace

int AlgGetFiberDefect(const unsigned char* image, const unsigned char* maskRegion,
                      unsigned char* defectMap, unsigned char* defectMap2,
                      const unsigned char* zoneMap, TaskInfoSetting& task, int width, int height,
                      int centerX, int centerY, float scale, const int* bands, int bandCount,
                      defect_info_struct* defectList, short* labelMap, int maxDefects) {
    return minusOneOnBadAlloc([&] {
        Rings rings;
        if (bandCount < 0 || !ringsOfTask(task, bands, bandCount, scale, rings)) {
            return -1;
        }
        GetFiberDefectMap map;
        map.SetRadiusList(rings.radii.data(), rings.thresholds.data(),
                          static_cast<int>(rings.thresholds.size()));
        map.GetNearBwDefectImgMap(image, defectMap, width, height, centerX, centerY);
        if (maskRegion != nullptr) {
            applyMask(defectMap, maskRegion, static_cast<long>(width) * height);
        }

        GetFiberValidDefect extractor;
        const int count = extractor.GetValidDefect(defectMap, defectMap2, zoneMap, width, height,
                                                   centerX, centerY);
        if (count == -1 || count > maxDefects) {
            return -1;
        }
        defect_info_struct* found = extractor.GetDefectList();
        DefecetFilter(found, count, task, scale);
        SetDefectRectPixel(found, width, height, count, nullptr, labelMap, 255);
        std::copy(found, found + count, defectList);
        return count;
    });
}
