#include "zonerules.h"

#include <gtest/gtest.h>

#include "factorytasks.h"
#include "taskjson.h"

TEST(ZoneRules, OnlyAnInvertedPairBeyondFiveHundredIsRefused) {
    const struct {
        int min, max;
        bool rejected;
    } pairs[] = {{30, 20, false},   {40, 30, false},  {500, 500, false},
                 {600, 700, false}, {600, 550, true}, {501, 501, true}};
    for (const auto& p : pairs) {
        EXPECT_EQ(isDiameterPairRejected(p.min, p.max), p.rejected) << p.min << "-" << p.max;
    }
}

TEST(ZoneRules, SingleFiberTasksTakeSixZonesAndMultiFiberTasksThree) {
    for (int count = 0; count <= 7; ++count) {
        EXPECT_EQ(canAddZone(count, kContactorSF), count < 6) << count;
        EXPECT_EQ(canAddZone(count, kContactorMF), count < 3) << count;
    }
}

TEST(ZoneRules, ANameIsTakenOnlyByAnotherTaskAndComparedExactly) {
    QList<TaskInfoSetting> tasks{TaskInfoSetting{}, TaskInfoSetting{}};
    setTaskText(tasks[0].taskName, "Patch cords");
    setTaskText(tasks[0].taskId, "id-0");
    setTaskText(tasks[1].taskName, "Pigtails");
    setTaskText(tasks[1].taskId, "id-1");
    EXPECT_TRUE(isTaskNameTaken(tasks, "Pigtails", "id-0"));
    EXPECT_TRUE(isTaskNameTaken(tasks, "Pigtails", "new-id"));
    EXPECT_FALSE(isTaskNameTaken(tasks, "Pigtails", "id-1")) << "a task keeps its own name";
    EXPECT_FALSE(isTaskNameTaken(tasks, "pigtails", "id-0"));
    EXPECT_FALSE(isTaskNameTaken(tasks, "Pigtails ", "id-0"));
}

TEST(ZoneRules, TheBuiltInTasksAreKnownByTheirIds) {
    const QList<TaskInfoSetting> tasks = factoryTasks();
    ASSERT_FALSE(tasks.isEmpty());
    for (const TaskInfoSetting& task : tasks) {
        EXPECT_TRUE(isBuiltInTaskId(taskText(task.taskId))) << task.taskId;
    }
    EXPECT_EQ(builtInTaskIds().size(), tasks.size());
    QString changed = taskText(tasks[0].taskId);
    changed[0] = changed[0] == 'a' ? 'b' : 'a';
    EXPECT_FALSE(isBuiltInTaskId(changed));
    EXPECT_FALSE(isBuiltInTaskId(QString()));
}
