#include "taskinfo.h"

void registerTaskMetaTypes() {
    qRegisterMetaType<TaskInfoSetting>();
    qRegisterMetaType<TaskZoneResult>();
    qRegisterMetaType<TaskInfoSetting>("TaskInfo");
    qRegisterMetaType<TaskZoneResult>("ZoneResult");
    qRegisterMetaType<QList<TaskZoneResult>*>("QList<ZoneResult>*");
}
