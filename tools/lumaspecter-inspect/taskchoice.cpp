#include "taskchoice.h"

#include <QFile>
#include <QFileInfo>

#include "settingsstore.h"
#include "taskjson.h"
#include "tasklist.h"

QList<TaskInfoSetting> availableTasks(QString& note) {
    TaskList list;
    const bool read = list.readTaskListFromJsonFile() == 0;
    if (read && !list.tasks().isEmpty()) {
        return list.tasks();
    }
    if (QFileInfo::exists(taskFilePath())) {
        note = QString("%1: %2; inspecting with the factory tasks")
                   .arg(taskFilePath(), read ? "holds no task" : "not a task file");
    }
    QList<TaskInfoSetting> factory;
    QFile resource(":/conf/taskinfo.conf");
    if (resource.open(QIODevice::ReadOnly)) {
        parseTaskFile(resource.readAll(), factory);
    }
    return factory;
}

bool chooseTask(const QList<TaskInfoSetting>& tasks, const QString& wanted, TaskInfoSetting& chosen,
                QString& error) {
    const QString key =
        wanted.isEmpty() ? SettingsStore().textValue(SettingsStore::kLastTaskUuid) : wanted;
    for (const TaskInfoSetting& task : tasks) {
        if (taskText(task.taskName) == key || taskText(task.taskId) == key) {
            chosen = task;
            return true;
        }
    }
    if (!wanted.isEmpty() || tasks.isEmpty()) {
        error = tasks.isEmpty() ? QString("no tasks")
                                : QString("no task named or with id \"%1\"").arg(wanted);
        return false;
    }
    chosen = tasks.first();
    return true;
}
