#pragma once

#include <QList>
#include <QString>

#include "taskinfo.h"

// The tasks the tool inspects with: the task file under the platform root, or the factory
// tasks when the root has none that can be read. `note` tells the user when a task file is
// there but gives no task, so that the fall back to the factory tasks is not silent.
QList<TaskInfoSetting> availableTasks(QString& note);

// The task named or identified by `wanted`; without it, the task remembered in the setting
// "LAST_TASK_UUID", else the first. Returns false with a reason when there is no such task.
bool chooseTask(const QList<TaskInfoSetting>& tasks, const QString& wanted, TaskInfoSetting& chosen,
                QString& error);
