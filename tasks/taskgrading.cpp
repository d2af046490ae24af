#include "taskgrading.h"

#include <algorithm>

#include "taskjson.h"

namespace {

bool hasExtent(const TaskZoneSetting& zone) {
    return zone.diameterMax > zone.diameterMin;
}

bool isChecked(const TaskZoneSetting& zone) {
    return zone.dCheck != 0 || zone.sCheck != 0;
}

}  // namespace

QString taskGradingProblem(const TaskInfoSetting& task) {
    const QString name = taskText(task.taskName);
    const TaskZoneSetting* zones = task.sections;
    const TaskZoneSetting* end = zones + zonesInUse(task);
    if (std::none_of(zones, end, hasExtent)) {
        return QStringLiteral(
                   "the task \"%1\" grades nothing: no zone has an outer diameter "
                   "above its inner one")
            .arg(name);
    }
    const TaskZoneSetting* empty = std::find_if(zones, end, [](const TaskZoneSetting& zone) {
        return isChecked(zone) && !hasExtent(zone);
    });
    if (empty != end) {
        return QStringLiteral(
                   "the task \"%1\" grades nothing in zone \"%2\": its outer diameter "
                   "(%3 um) is not above its inner one (%4 um)")
            .arg(name, taskText(empty->sectionName))
            .arg(empty->diameterMax)
            .arg(empty->diameterMin);
    }
    return QString();
}
