#include "tasklist.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include "readonlyfolder.h"
#include "taskjson.h"
#include "temproot.h"
#include "testfiles.h"

namespace {

QByteArray fileBytes() {
    return fileContents(taskFilePath());
}

void putFile(const QByteArray& bytes) {
    ASSERT_TRUE(writeFile(taskFilePath(), bytes));
}

QStringList idsInFile() {
    QStringList ids;
    for (const QJsonValue& task :
         QJsonDocument::fromJson(fileBytes()).object()["taskInfo"].toArray()) {
        ids << task.toObject()["taskId"].toString();
    }
    return ids;
}

class TaskListFile : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(QDir().mkpath(root_.file("etc")));
        putFile(fileContents(":/conf/taskinfo.conf"));
        ASSERT_EQ(list_.readTaskListFromJsonFile(), 0);
        ASSERT_EQ(list_.tasks().size(), 16);
    }

    TempRoot root_;
    TaskList list_;
};

TaskInfoSetting userTask(const char* name, const char* id) {
    TaskInfoSetting task{};
    setTaskText(task.taskName, name);
    setTaskText(task.taskId, id);
    task.sectionNum = 1;
    setTaskText(task.sections[0].sectionName, "A");
    task.sections[0].diameterMax = 30;
    return task;
}

}  // namespace

TEST_F(TaskListFile, AMissingOrBrokenFileLeavesTheListAsItWas) {
    QFile::remove(taskFilePath());
    EXPECT_EQ(list_.readTaskListFromJsonFile(), -1);
    EXPECT_EQ(list_.tasks().size(), 16);
    putFile("{\"taskInfo\": [");
    EXPECT_EQ(list_.readTaskListFromJsonFile(), -1);
    EXPECT_EQ(list_.tasks().size(), 16);

    TaskList fresh;
    EXPECT_EQ(fresh.readTaskListFromJsonFile(), -1);
    EXPECT_TRUE(fresh.tasks().isEmpty());
}

TEST_F(TaskListFile, TheEditorReplacesATaskInPlaceAndAddsNewOnesLastInTheFile) {
    QStringList names;
    QObject::connect(&list_, &TaskList::displayTaskListChanged,
                     [&](const QStringList& shown) { names = shown; });
    list_.onNewTaskInfo(userTask("Edited", list_.tasks()[3].taskId), 3);
    EXPECT_EQ(names.size(), 16);
    EXPECT_EQ(names[3], "Edited");
    EXPECT_EQ(idsInFile()[3], taskText(list_.tasks()[3].taskId));

    list_.onNewTaskInfo(userTask("New", "22222222-2222-4222-8222-222222222222"), 16);
    EXPECT_EQ(names.size(), 17);
    EXPECT_EQ(names.last(), "New");
    EXPECT_EQ(list_.displayTaskList(), names);

    TaskList reread;
    ASSERT_EQ(reread.readTaskListFromJsonFile(), 0);
    ASSERT_EQ(reread.tasks().size(), 17);
    EXPECT_STREQ(reread.tasks()[3].taskName, "Edited");
    EXPECT_STREQ(reread.tasks().last().taskName, "New");
    EXPECT_EQ(reread.tasks().last().sections[0].diameterMax, 30);
    EXPECT_EQ(taskFileBytes(reread.tasks()), fileBytes());
    EXPECT_FALSE(QFile::exists(taskFilePath() + ".tmp"));
}

TEST_F(TaskListFile, ARemoteUpdateReplacesInPlaceOrPutsANewTaskFirst) {
    const QStringList before = idsInFile();
    QJsonObject changed = taskToJson(list_.tasks()[5]);
    changed["taskName"] = "Renamed";
    ASSERT_EQ(list_.updateTaskListFromJsonObject(changed), 0);
    EXPECT_EQ(idsInFile(), before);
    ASSERT_EQ(list_.readTaskListFromJsonFile(), 0);
    EXPECT_STREQ(list_.tasks()[5].taskName, "Renamed");

    QJsonObject added = taskToJson(userTask("Remote", "33333333-3333-4333-8333-333333333333"));
    added["extra"] = "kept as sent";
    ASSERT_EQ(list_.updateTaskListFromJsonObject(added), 0);
    EXPECT_EQ(idsInFile().size(), 17);
    EXPECT_EQ(idsInFile().first(), "33333333-3333-4333-8333-333333333333");
    const QJsonObject first =
        QJsonDocument::fromJson(fileBytes()).object()["taskInfo"].toArray()[0].toObject();
    EXPECT_EQ(first["extra"].toString(), "kept as sent");
}

TEST_F(TaskListFile, ARemoteUpdateOfABrokenFileFailsAndChangesNothing) {
    putFile("not json");
    EXPECT_EQ(list_.updateTaskListFromJsonObject(taskToJson(list_.tasks()[0])), -1);
    EXPECT_EQ(fileBytes(), "not json");
    QFile::remove(taskFilePath());
    EXPECT_EQ(list_.updateTaskListFromJsonObject(taskToJson(list_.tasks()[0])), -1);
    EXPECT_FALSE(QFile::exists(taskFilePath()));
}

TEST_F(TaskListFile, DeletingRemovesTheTaskAndAnUnknownIdChangesNothing) {
    const QByteArray before = fileBytes();
    EXPECT_EQ(list_.deleteTaskByTaskId("no-such-task"), -1);
    EXPECT_EQ(fileBytes(), before);
    EXPECT_EQ(list_.tasks().size(), 16);

    const QString second = taskText(list_.tasks()[1].taskId);
    EXPECT_EQ(list_.deleteTaskByTaskId(second), 0);
    EXPECT_EQ(list_.tasks().size(), 15);
    EXPECT_FALSE(idsInFile().contains(second));
    EXPECT_EQ(list_.displayTaskList().size(), 15);
}

TEST_F(TaskListFile, AReadOnlyCardRefusesEveryWriteAndKeepsFileAndList) {
    const QByteArray before = fileBytes();
    ReadOnlyFolder readOnly(root_.file("etc"));
    if (!readOnly.active()) {
        GTEST_SKIP() << "cannot make a folder read-only here";
    }
    QString notWritten;
    QObject::connect(&list_, &TaskList::taskFileNotWritten,
                     [&](const QString& path) { notWritten = path; });
    list_.onNewTaskInfo(userTask("Lost", "44444444-4444-4444-8444-444444444444"), 16);
    EXPECT_EQ(notWritten, taskFilePath());
    EXPECT_EQ(list_.deleteTaskByTaskId(taskText(list_.tasks()[1].taskId)), -2);
    EXPECT_EQ(list_.updateTaskListFromJsonObject(taskToJson(list_.tasks()[0])), -1);
    EXPECT_EQ(list_.writeTaskListToJsonFile(), -1);
    EXPECT_EQ(list_.tasks().size(), 16) << "the list shows what the file holds";
    EXPECT_EQ(fileBytes(), before);
}
