#include "remotetasklist.h"

#include "taskjson.h"

TaskReload keepCurrentTask(const QList<TaskInfoSetting>& reloaded, const QString& currentTaskId) {
    for (int i = 0; i < reloaded.size(); ++i) {
        if (taskText(reloaded[i].taskId) == currentTaskId) {
            return {i, false};
        }
    }
    return reloaded.isEmpty() ? TaskReload{} : TaskReload{0, true};
}

bool liveViewMayRestart(int deviceState) {
    return deviceState != 1 && deviceState != 2;
}
