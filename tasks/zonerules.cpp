#include "zonerules.h"

#include <QFile>

#include "taskjson.h"

bool isDiameterPairRejected(int diameterMin, int diameterMax) {
    return diameterMin >= diameterMax && diameterMax > 500;
}

bool canAddZone(int zoneCount, int contactorType) {
    if (zoneCount <= 5 && contactorType == kContactorSF) {
        return true;
    }
    return zoneCount <= 2 && contactorType == kContactorMF;
}

bool isTaskNameTaken(const QList<TaskInfoSetting>& tasks, const QString& name,
                     const QString& ownTaskId) {
    for (const TaskInfoSetting& task : tasks) {
        if (taskText(task.taskName) == name && taskText(task.taskId) != ownTaskId) {
            return true;
        }
    }
    return false;
}

const QSet<QString>& builtInTaskIds() {
    static const QSet<QString> ids = [] {
        QSet<QString> found;
        QFile factory(":/conf/taskinfo.conf");
        QList<TaskInfoSetting> tasks;
        if (factory.open(QIODevice::ReadOnly) && parseTaskFile(factory.readAll(), tasks) == 0) {
            for (const TaskInfoSetting& task : tasks) {
                found.insert(taskText(task.taskId));
            }
        }
        return found;
    }();
    return ids;
}

bool isBuiltInTaskId(const QString& taskId) {
    return builtInTaskIds().contains(taskId);
}
