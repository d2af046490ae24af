#include "defectfilter.h"

namespace {

enum SizeClass : int16_t { kSmall = 0, kMiddle = 1, kLarge = 2 };

SizeClass sizeClassOf(double q, const TaskZoneSetting& zone) {
    const double limit1 = static_cast<double>(zone.dLimit1 * zone.dLimit1);
    const double limit2 = static_cast<double>(zone.dLimit2 * zone.dLimit2);
    if (q < limit1) {
        return kSmall;
    }
    if (zone.dLimit1 == zone.dLimit2 || q > limit2) {
        return kLarge;
    }
    return kMiddle;
}

void countDefect(TaskZoneResult& result, SizeClass sizeClass) {
    switch (sizeClass) {
        case kSmall:
            ++result.dNoBiggerNum;
            break;
        case kMiddle:
            ++result.dMidNum;
            break;
        case kLarge:
            ++result.dBiggerNum;
            break;
    }
}

}  // namespace

void DefecetFilter(defect_info_struct* list, int count, TaskInfoSetting& task, float scale) {
    const int zones = zonesInUse(task);
    for (int i = 0; i < count; ++i) {
        defect_info_struct& defect = list[i];
        if (defect.zone < 0 || defect.zone >= zones) {
            continue;
        }
        // The box's diagonal shrunk by sqrt(0.8) is the defect's size; squares avoid the root.
        const double w = (defect.right - defect.left) * static_cast<double>(scale);
        const double h = (defect.bottom - defect.top) * static_cast<double>(scale);
        const double q = 0.8 * (w * w + h * h);
        const SizeClass sizeClass = sizeClassOf(q, task.sections[defect.zone]);
        defect.sizeClass = sizeClass;
        TaskZoneResult& result = task.zoneResults[defect.zone];
        countDefect(result, sizeClass);
        result.dArea += 0.8 * w * h;
    }
    for (int k = 0; k < zones; ++k) {
        const TaskZoneSetting& zone = task.sections[k];
        TaskZoneResult& result = task.zoneResults[k];
        result.dNoBiggerResult = verdictWithinLimit(result.dNoBiggerNum, zone.dNoBiggerLimit);
        result.dMidResult = verdictWithinLimit(result.dMidNum, zone.dMidLimit);
        result.dBiggerResult = verdictWithinLimit(result.dBiggerNum, zone.dBiggerLimit);
    }
}
