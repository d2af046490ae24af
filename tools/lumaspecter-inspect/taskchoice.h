#pragma once

#include <QList>
#include <QString>

#include "taskinfo.h"

// The tasks the tool inspects with: the task file under the platform root, or the factory
// tasks when the root has none that can be read.
QList<TaskInfoSetting> availableTasks();

// The task named or identified by `wanted`; without it, the task remembered in the setting
// "LAST_TASK_UUID", else the first. Returns false with a reason when there is no such task.
bool chooseTask(const QList<TaskInfoSetting>& tasks, const QString& wanted, TaskInfoSetting& chosen,
                QString& error);
