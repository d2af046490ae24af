#include "tasklist.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include "atomicfile.h"
#include "platformroot.h"
#include "shellrunner.h"
#include "taskjson.h"

namespace {

// The file's bytes, or false when it cannot be read.
bool readTaskFile(QByteArray& bytes) {
    QFile file(taskFilePath());
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    bytes = file.readAll();
    file.close();
    runShellCommand("sync");
    return true;
}

bool replaceTaskFile(const QByteArray& bytes) {
    const bool written = writeFileAtomically(taskFilePath(), bytes);
    runShellCommand("sync");
    return written;
}

}  // namespace

QString taskFilePath() {
    return platformPath("/etc/taskinfo.conf");
}

TaskList::TaskList(QObject* parent) : QObject(parent) {
    registerTaskMetaTypes();
}

int TaskList::readTaskListFromJsonFile() {
    QByteArray bytes;
    if (!readTaskFile(bytes)) {
        return -1;
    }
    return parseTaskFile(bytes, tasks_);
}

int TaskList::writeTaskListToJsonFile() {
    return replaceTaskFile(taskFileBytes(tasks_)) ? 0 : -1;
}

int TaskList::updateTaskListFromJsonObject(const QJsonObject& task) {
    QByteArray bytes;
    QJsonObject root;
    if (!readTaskFile(bytes) || !parseTaskFileRoot(bytes, root)) {
        return -1;
    }
    QJsonArray array = root.value("taskInfo").toArray();
    const QJsonValue taskId = task.value("taskId");
    int index = 0;
    while (index < array.size() && array[index].toObject().value("taskId") != taskId) {
        ++index;
    }
    if (index < array.size()) {
        array.replace(index, task);
    } else {
        array.prepend(task);  // a new task from the remote client comes first
    }
    if (!replaceTaskFile(QJsonDocument(QJsonObject{{"taskInfo", array}}).toJson())) {
        return -1;
    }
    updateDisplayTaskList();
    return 0;
}

int TaskList::deleteTaskByTaskId(const QString& taskId) {
    for (int i = 0; i < tasks_.size(); ++i) {
        if (taskText(tasks_[i].taskId) == taskId) {
            return replaceTasks(tasks_.mid(0, i) + tasks_.mid(i + 1)) ? 0 : -2;
        }
    }
    return -1;
}

void TaskList::onNewTaskInfo(TaskInfo task, int index) {
    QList<TaskInfoSetting> edited = tasks_;
    if (index >= 0 && index < edited.size()) {
        edited[index] = task;
    } else {
        edited.append(task);
    }
    if (!replaceTasks(edited)) {
        emit taskFileNotWritten(taskFilePath());
    }
}

bool TaskList::replaceTasks(const QList<TaskInfoSetting>& tasks) {
    // The list changes only with the file: a task the user sees is a task the file holds.
    if (!replaceTaskFile(taskFileBytes(tasks))) {
        return false;
    }
    tasks_ = tasks;
    updateDisplayTaskList();
    return true;
}

void TaskList::updateDisplayTaskList() {
    displayTaskList_.clear();
    for (const TaskInfoSetting& task : tasks_) {
        displayTaskList_.append(taskText(task.taskName));
    }
    emit displayTaskListChanged(displayTaskList_);
}
