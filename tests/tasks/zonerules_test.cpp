#include "zonerules.h"

#include <gtest/gtest.h>

#include "taskjson.h"

TEST(ZoneRules, OnlyAnInvertedPairBeyondFiveHundredIsRefused) {
    EXPECT_FALSE(isDiameterPairRejected(30, 20));
    EXPECT_FALSE(isDiameterPairRejected(40, 30));
    EXPECT_FALSE(isDiameterPairRejected(500, 500));
    EXPECT_FALSE(isDiameterPairRejected(600, 700));
    EXPECT_TRUE(isDiameterPairRejected(600, 550));
    EXPECT_TRUE(isDiameterPairRejected(501, 501));
}

TEST(ZoneRules, SingleFiberTasksTakeSixZonesAndMultiFiberTasksThree) {
    for (int count = 0; count <= 5; ++count) {
        EXPECT_TRUE(canAddZone(count, kContactorSF)) << count;
    }
    EXPECT_FALSE(canAddZone(6, kContactorSF));
    for (int count = 0; count <= 2; ++count) {
        EXPECT_TRUE(canAddZone(count, kContactorMF)) << count;
    }
    EXPECT_FALSE(canAddZone(3, kContactorMF));
    EXPECT_FALSE(canAddZone(5, kContactorMF));
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
    EXPECT_EQ(builtInTaskIds().size(), 16);
    EXPECT_TRUE(isBuiltInTaskId("a338e868-f599-4d2a-854a-2932e885187f"));
    EXPECT_FALSE(isBuiltInTaskId("a338e868-f599-4d2a-854a-2932e885187e"));
    EXPECT_FALSE(isBuiltInTaskId(QString()));
}
