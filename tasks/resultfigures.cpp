#include "resultfigures.h"

#include "taskjson.h"

QStringList measurementValues(const SingleFiberResultRecord& record) {
    return {record.connectorId,
            record.describer,
            record.manufacturer,
            taskText(record.task.taskName),
            record.time.toString("yyyy-MM-dd HH:mm:ss"),
            record.operatorName,
            verdictText(record.passed, record.language)};
}

QList<ZoneFigures> zoneFigures(const TaskInfoSetting& task) {
    QList<ZoneFigures> zones;
    const int count = qBound(0, int(task.sectionNum), kMaxZones);
    for (int index = 0; index < count; ++index) {
        const TaskZoneSetting& zone = task.sections[index];
        const TaskZoneResult& result = task.zoneResults[index];
        ZoneFigures figures;
        figures.name = taskText(zone.sectionName);
        figures.diameterMin = zone.diameterMin;
        figures.diameterMax = zone.diameterMax;
        figures.defects = result.dNoBiggerNum + result.dMidNum + result.dBiggerNum;
        figures.defectsPass =
            result.dNoBiggerResult != 0 && result.dMidResult != 0 && result.dBiggerResult != 0;
        figures.scratches = result.sNoBiggerNum + result.sBiggerNum;
        figures.scratchesPass = result.sNoBiggerResult != 0 && result.sBiggerResult != 0;
        zones.append(figures);
    }
    return zones;
}

QString verdictText(bool passed, int language) {
    if (language != 0) {
        return passed ? QStringLiteral("合格") : QStringLiteral("不合格");
    }
    return passed ? QStringLiteral("Pass") : QStringLiteral("Fail");
}
