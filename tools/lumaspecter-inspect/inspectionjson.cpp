#include "inspectionjson.h"

#include <QJsonArray>

#include "taskjson.h"

namespace {

QJsonObject zoneJson(const TaskZoneSetting& zone, const TaskZoneResult& r) {
    return {{"zoneName", taskText(zone.sectionName)},
            {"innerDiameter", zone.diameterMin},
            {"outerDiameter", zone.diameterMax},
            {"sNoBiggerNum", r.sNoBiggerNum},
            {"sNoBiggerResult", r.sNoBiggerResult},
            {"sBiggerNum", r.sBiggerNum},
            {"sBiggerResult", r.sBiggerResult},
            {"dNoBiggerNum", r.dNoBiggerNum},
            {"dNoBiggerResult", r.dNoBiggerResult},
            {"dMidNum", r.dMidNum},
            {"dMidReuslt", r.dMidResult},
            {"dBiggerNum", r.dBiggerNum},
            {"dBiggerResult", r.dBiggerResult},
            {"dArea", r.dArea}};
}

QJsonArray defectsJson(const MeasureSingleFiberThread& run) {
    QJsonArray defects;
    for (int i = 0; i < run.defectCount(); ++i) {
        const defect_info_struct& d = run.defects()[i];
        defects.append(QJsonObject{{"top", d.top},
                                   {"bottom", d.bottom},
                                   {"left", d.left},
                                   {"right", d.right},
                                   {"zone", d.zone},
                                   {"sizeClass", d.sizeClass}});
    }
    return defects;
}

QJsonArray scratchesJson(const MeasureSingleFiberThread& run) {
    QJsonArray scratches;
    for (int i = 0; i < run.scratchCount(); ++i) {
        const ScratchRecord& s = run.scratches()[i];
        scratches.append(QJsonObject{{"x1", s.x1},
                                     {"y1", s.y1},
                                     {"x2", s.x2},
                                     {"y2", s.y2},
                                     {"width", s.width},
                                     {"direction", s.direction},
                                     {"significance", s.significance},
                                     {"zone", run.scratchZones()[i]}});
    }
    return scratches;
}

}  // namespace

QJsonObject placeJson(const FiberPlace& place) {
    return {{"found", place.found},
            {"x", int(place.x)},
            {"y", int(place.y)},
            {"rawX", int(place.rawX)},
            {"rawY", int(place.rawY)}};
}

QJsonObject measurementJson(const MeasureSingleFiberThread& run, const MeasureRegion& region) {
    QJsonArray zones;
    for (int z = 0; z < run.results().size(); ++z) {
        zones.append(zoneJson(run.task().sections[z], run.results()[z]));
    }
    return {{"left", region.left},
            {"top", region.top},
            {"centerX", region.centerX},
            {"centerY", region.centerY},
            {"pass", run.passed()},
            {"defectCount", run.defectCount()},
            {"scratchCount", run.scratchCount()},
            {"zoneResults", zones},
            {"defects", defectsJson(run)},
            {"scratches", scratchesJson(run)}};
}
