#pragma once

#include <QFile>
#include <QList>

#include "taskjson.h"

// The built-in tasks from the factory task file (the test must link the resources).
inline QList<TaskInfoSetting> factoryTasks() {
    QFile factory(":/conf/taskinfo.conf");
    QList<TaskInfoSetting> tasks;
    if (factory.open(QIODevice::ReadOnly)) {
        parseTaskFile(factory.readAll(), tasks);
    }
    return tasks;
}
