#pragma once

#include <QList>
#include <QString>

#include "taskinfo.h"

// What the controller does with its task list after the remote client changed the task file
// (methods 1 and 10). A new task is put first and a deleted one leaves a gap, so the current
// task is found again by its taskId, never by its place in the list.

struct TaskReload {
    int index = -1;        // the current task in the reloaded list; -1 when the list is empty
    bool changed = false;  // the current task is gone and the first one took its place
};

TaskReload keepCurrentTask(const QList<TaskInfoSetting>& reloaded, const QString& currentTaskId);

// Whether a changed task may restart live view now: not while a trigger's autofocus (state 1)
// or capture and measurement (state 2) run, which a restart would cut off.
bool liveViewMayRestart(int deviceState);
