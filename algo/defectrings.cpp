#include "defectrings.h"

namespace defect {

int GetFiberRegion(int dMin, int dMax, const int* bands, int bandCount, int* ringList,
                   int position) {
    ringList[2 * position] = dMin;
    for (int i = 0; i < bandCount; ++i) {
        const int a = bands[2 * i], b = bands[2 * i + 1];
        if (dMin >= b) {
            continue;
        }
        if (b > dMax) {  // the band reaches beyond the zone
            if (a < dMax) {
                ringList[2 * position + 1] = a;
                return position + 1;
            }
            if (a > dMax) {
                break;
            }
            continue;
        }
        if (dMin <= a) {  // the band ends inside the zone: it splits the ring
            ringList[2 * position + 1] = a;
            ++position;
        }
        ringList[2 * position] = b;
    }
    ringList[2 * position + 1] = dMax;
    return position + 1;
}

}  // namespace defect

double zoneDefectThreshold(const TaskInfoSetting& task, int zoneIndex) {
    const int s = task.sections[zoneIndex].dSensitivity;
    const bool multiFiber = task.contactorType == 1;
    if (zoneIndex == 0) {
        const double core = task.opticalType == 0 ? 14 - s : 24 - s;
        return multiFiber ? core + 5.0 : core;
    }
    if (zoneIndex == 1) {
        return (multiFiber ? 20 : 16) - static_cast<int>(s * 1.2);
    }
    return 40 - static_cast<int>(s * (multiFiber ? 1.2 : 1.4));
}

int ringRadiusPx(int diameterUm, float scale) {
    return static_cast<int>(static_cast<float>(diameterUm) / scale * 0.5);
}
