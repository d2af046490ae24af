#pragma once

#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QStringList>

#include "taskinfo.h"

// The inspection tasks of the instrument and their file "/etc/taskinfo.conf". The settings
// screen owns one; the remote protocol reads the file whole and updates one task at a time.
// Every write replaces the file in one step and is followed by "sync".
class TaskList : public QObject {
    Q_OBJECT

public:
    explicit TaskList(QObject* parent = nullptr);

    const QList<TaskInfoSetting>& tasks() const { return tasks_; }
    const QStringList& displayTaskList() const { return displayTaskList_; }

    // Loads the file into the list. Returns -1, leaving the list as it was, when the file is
    // missing, unreadable or not a non-empty JSON object; 0 otherwise.
    int readTaskListFromJsonFile();

    // Writes the whole list to the file. Returns 0, or -1 when it could not be written (full
    // or read-only card), leaving the old file as it was.
    int writeTaskListToJsonFile();

    // Puts one task object, as the remote client sent it, into the file: in place of the task
    // with the same "taskId", or first when there is none. Returns -1 when the file cannot be
    // read, parsed or written (a failed write leaves the old file), 0 otherwise. The list in
    // memory follows only when it is reloaded.
    int updateTaskListFromJsonObject(const QJsonObject& task);

    // Removes the task from the list and the file. Returns -1 when no task has that id, -2
    // when the file could not be written (the list and the file then keep the task).
    int deleteTaskByTaskId(const QString& taskId);

    // Rebuilds the task names the screens show.
    void updateDisplayTaskList();

public slots:
    // From the task editor: replaces the task at `index` when it is a position in the list,
    // and otherwise appends the new task at the end; then saves the list. When the file cannot
    // be written, the list and the file stay as they were and taskFileNotWritten is emitted.
    void onNewTaskInfo(TaskInfo task, int index);

signals:
    void displayTaskListChanged(const QStringList& names);
    void taskFileNotWritten(const QString& path);

private:
    bool replaceTasks(const QList<TaskInfoSetting>& tasks);

    QList<TaskInfoSetting> tasks_;
    QStringList displayTaskList_;
};

// The path of the task file under the platform root.
QString taskFilePath();
