#include "taskjson.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QSet>
#include <cstring>
#include <iterator>

#include "factorytasks.h"

namespace {

QJsonObject zoneObject(const QJsonObject& changes) {
    QJsonObject zone{{"sectionName", "A"}, {"sectionId", "z"}, {"dLimit1", "7"}};
    for (auto it = changes.begin(); it != changes.end(); ++it) {
        zone.insert(it.key(), it.value());
    }
    return zone;
}

TaskZoneSetting loadZone(const QJsonObject& zone) {
    QJsonObject task{{"taskId", "t"}, {"sections", QJsonArray{zone}}};
    return taskFromJson(task).sections[0];
}

// The built-in task table, one line per zone: task name (or "" for the same task), optical
// type, connector type, zone, dCheck, sCheck, diameters, sensitivities d/s, scratch limits
// (width, narrow, wide), defect limits (L1, L2, small, middle, large).
const char* const kBuiltInTable[] = {
    "IEC2.0-PC-SM-RL45dB-SF 0 0 A 1 1 0 25 3 6 0 0 0 0 0 0 0 0",
    "- - - B 1 1 25 115 6 6 3 -1 0 2 5 -1 5 0",
    "- - - D 1 0 135 250 6 6 -1 -1 -1 10 10 -1 -1 0",
    "IEC2.0-PC-SM-RL26dB-SF 0 0 A 1 1 0 15 3 6 3 2 0 0 0 0 0 0",
    "- - - B 1 1 15 115 6 6 3 -1 3 5 10 -1 5 0",
    "- - - D 1 0 135 250 6 6 -1 -1 -1 20 30 -1 5 0",
    "IEC2.0-APC-SM-SF 0 0 A 1 1 0 25 3 6 3 4 0 0 0 0 0 0",
    "- - - B 1 1 25 115 6 6 -1 -1 -1 2 5 -1 5 0",
    "- - - D 1 0 135 250 6 6 -1 -1 -1 10 10 -1 -1 0",
    "IEC2.0-PC-MM-SF 1 0 A 1 1 0 65 3 6 3 -1 0 5 5 4 0 0",
    "- - - B 1 1 65 115 6 6 5 -1 0 5 10 -1 5 0",
    "- - - D 1 0 135 250 6 6 -1 -1 -1 20 30 -1 5 0",
    "IEC2.0-PC-SM-RL45dB-MT12 0 1 A 1 0 0 25 3 3 0 0 0 0 0 0 0 0",
    "- - - B 1 0 25 115 6 6 3 -1 0 2 5 -1 5 0",
    "IEC2.0-PC-SM-RL26dB-MT12 0 1 A 1 0 0 15 3 3 3 2 0 0 0 0 0 0",
    "- - - B 1 0 15 115 6 6 3 -1 3 5 10 -1 5 0",
    "IEC2.0-APC-SM-MT12 0 1 A 1 0 0 25 3 3 3 4 0 0 0 0 0 0",
    "- - - B 1 0 25 115 6 6 -1 -1 -1 2 5 -1 5 0",
    "IEC2.0-PC-MM-MT12 1 1 A 1 0 0 65 3 3 3 -1 0 5 5 4 0 0",
    "- - - B 1 0 65 115 6 6 5 -1 0 5 10 -1 5 0",
    "IEC1.0-PC-SM-RL45dB-SF 0 0 A 1 1 0 25 3 6 0 0 0 0 0 0 0 0",
    "- - - B 1 1 25 120 6 6 3 -1 0 2 5 -1 5 0",
    "- - - D 1 0 130 250 6 6 -1 -1 -1 10 10 -1 -1 0",
    "IEC1.0-PC-SM-RL26dB-SF 0 0 A 1 1 0 25 3 6 3 2 0 3 3 2 0 0",
    "- - - B 1 1 25 120 6 6 3 -1 3 2 5 -1 5 0",
    "- - - D 1 0 130 250 6 6 -1 -1 -1 10 10 -1 0 0",
    "IEC1.0-APC-SM-SF 0 0 A 1 1 0 25 3 6 0 4 0 0 0 0 0 0",
    "- - - B 1 1 25 120 6 6 -1 -1 -1 2 5 -1 5 0",
    "- - - D 1 0 130 250 6 6 -1 -1 -1 10 10 -1 -1 0",
    "IEC1.0-PC-MM-SF 1 0 A 1 1 0 65 3 6 5 -1 0 5 5 4 0 0",
    "- - - B 1 1 65 120 6 6 5 -1 0 2 5 -1 5 0",
    "- - - D 1 0 130 250 6 6 -1 -1 -1 10 10 -1 0 0",
    "IEC1.0-PC-SM-RL45dB-MT12 0 1 A 1 1 0 25 3 6 0 0 0 0 0 0 0 0",
    "- - - B 1 1 25 120 6 6 3 -1 0 2 5 -1 5 0",
    "IEC1.0-PC-SM-RL26dB-MT12 0 1 A 1 1 0 25 3 6 3 2 0 3 3 2 0 0",
    "- - - B 1 1 25 120 6 6 3 -1 3 2 5 -1 5 0",
    "IEC1.0-APC-SM-MT12 0 1 A 1 1 0 25 3 6 0 4 0 0 0 0 0 0",
    "- - - B 1 1 25 120 6 6 -1 -1 -1 2 5 -1 5 0",
    "IEC1.0-PC-MM-MT12 1 1 A 1 1 0 65 3 6 5 -1 0 5 5 4 0 0",
    "- - - B 1 1 65 120 6 6 5 -1 0 2 5 -1 5 0",
};

QString zoneLine(const TaskInfoSetting& task, int zoneIndex) {
    const TaskZoneSetting& z = task.sections[zoneIndex];
    const QString head = zoneIndex == 0 ? QString("%1 %2 %3")
                                              .arg(taskText(task.taskName))
                                              .arg(task.opticalType)
                                              .arg(task.contactorType)
                                        : QString("- - -");
    QStringList numbers;
    for (int value : {z.dCheck, z.sCheck, z.diameterMin, z.diameterMax, z.dSensitivity,
                      z.sSensitivity, z.sWidthLimit, z.sNoBiggerLimit, z.sBiggerLimit, z.dLimit1,
                      z.dLimit2, z.dNoBiggerLimit, z.dMidLimit, z.dBiggerLimit}) {
        numbers << QString::number(value);
    }
    return head + " " + taskText(z.sectionName) + " " + numbers.join(' ');
}

}  // namespace

TEST(BuiltInTasks, TheFactoryFileHoldsTheSixteenTasksOfTheTable) {
    const QList<TaskInfoSetting> tasks = factoryTasks();
    ASSERT_EQ(tasks.size(), 16);
    EXPECT_EQ(taskText(tasks[0].taskId), "a338e868-f599-4d2a-854a-2932e885187f");
    QStringList lines;
    for (const TaskInfoSetting& task : tasks) {
        for (int zone = 0; zone < task.sectionNum; ++zone) {
            lines << zoneLine(task, zone);
        }
    }
    ASSERT_EQ(lines.size(), int(std::size(kBuiltInTable)));
    for (int i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].toStdString(), kBuiltInTable[i]) << "zone line " << i;
    }
}

TEST(BuiltInTasks, EveryTaskAndZoneHasItsOwnUuid) {
    QSet<QString> ids;
    int count = 0;
    const QRegularExpression uuid("^[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}$");
    for (const TaskInfoSetting& task : factoryTasks()) {
        ids << taskText(task.taskId);
        EXPECT_TRUE(uuid.match(taskText(task.taskId)).hasMatch());
        ++count;
        for (int zone = 0; zone < task.sectionNum; ++zone) {
            ids << taskText(task.sections[zone].sectionId);
            EXPECT_TRUE(uuid.match(taskText(task.sections[zone].sectionId)).hasMatch());
            ++count;
        }
    }
    EXPECT_EQ(ids.size(), count);
}

TEST(TaskFileFormat, TheBuiltInTasksSurviveWriteThenReadFieldByField) {
    const QList<TaskInfoSetting> tasks = factoryTasks();
    QList<TaskInfoSetting> reread;
    ASSERT_EQ(parseTaskFile(taskFileBytes(tasks), reread), 0);
    ASSERT_EQ(reread.size(), tasks.size());
    for (int i = 0; i < tasks.size(); ++i) {
        EXPECT_EQ(reread[i].sectionNum, tasks[i].sectionNum);
        for (int zone = 0; zone < tasks[i].sectionNum; ++zone) {
            EXPECT_EQ(zoneLine(reread[i], zone), zoneLine(tasks[i], zone));
            EXPECT_STREQ(reread[i].sections[zone].sectionId, tasks[i].sections[zone].sectionId);
        }
        EXPECT_STREQ(reread[i].taskId, tasks[i].taskId);
    }
}

TEST(TaskFileFormat, EveryValueIsWrittenAsADecimalString) {
    TaskInfoSetting task{};
    setTaskText(task.taskName, "T");
    task.sectionNum = 1;
    task.sections[0].sNoBiggerLimit = -1;
    task.sections[0].diameterMax = 250;
    const QJsonObject zone = taskToJson(task)["sections"].toArray()[0].toObject();
    EXPECT_EQ(zone["sNoBiggerLimit"], QJsonValue("-1"));
    EXPECT_EQ(zone["diameterMax"], QJsonValue("250"));
    EXPECT_EQ(zone.size(), 16);
    EXPECT_EQ(taskToJson(task)["opticalType"], QJsonValue("0"));
}

TEST(TaskFileFormat, ValuesThatAreNotDecimalTextsReadAsZero) {
    EXPECT_EQ(loadZone(zoneObject({{"dLimit1", 7}})).dLimit1, 0) << "a JSON number";
    EXPECT_EQ(loadZone(zoneObject({{"dLimit1", true}})).dLimit1, 0);
    EXPECT_EQ(loadZone(zoneObject({{"dLimit1", QJsonArray{"7"}}})).dLimit1, 0);
    EXPECT_EQ(loadZone(zoneObject({{"dLimit1", "seven"}})).dLimit1, 0);
    EXPECT_EQ(loadZone(zoneObject({{"dLimit1", "32768"}})).dLimit1, 0) << "beyond 16 bits";
    EXPECT_EQ(loadZone(zoneObject({{"dLimit1", "-32768"}})).dLimit1, -32768);
    EXPECT_EQ(loadZone(zoneObject({{"dLimit1", "0x10"}})).dLimit1, 0);
    EXPECT_EQ(loadZone(zoneObject({})).dLimit1, 7);
    EXPECT_EQ(loadZone(zoneObject({})).dBiggerLimit, 0) << "a missing key";
    EXPECT_STREQ(loadZone(zoneObject({{"sectionName", 5}})).sectionName, "");
}

TEST(TaskFileFormat, TextsAndZonesAreCutToTheRecordsCapacity) {
    QJsonArray sevenZones;
    for (int i = 0; i < 7; ++i) {
        sevenZones.append(zoneObject({{"sectionName", QString("Z%1").arg(i)}}));
    }
    const QString longName = QString(200, QChar(0x00e9));  // 400 bytes of UTF-8
    const TaskInfoSetting task = taskFromJson(QJsonObject{
        {"taskName", longName}, {"taskId", QString(300, 'x')}, {"sections", sevenZones}});
    EXPECT_EQ(task.sectionNum, 6);
    EXPECT_STREQ(task.sections[5].sectionName, "Z5");
    EXPECT_EQ(strlen(task.taskId), 255u);
    EXPECT_EQ(strlen(task.taskName), 254u) << "no character is cut in half";
    EXPECT_EQ(taskText(task.taskName), QString(127, QChar(0x00e9)));
}

TEST(TaskFileFormat, BrokenFilesAreRefusedAndLeaveTheListAlone) {
    const QList<TaskInfoSetting> before = factoryTasks();
    const QByteArray good = taskFileBytes(before);
    const QByteArray broken[] = {
        QByteArray(),
        "   ",
        "{}",
        "[1, 2]",
        "\"taskInfo\"",
        good.left(good.size() / 2),
        "{\"taskInfo\": [{\"taskName\": \"\xff\xfe\"}]}",
        QByteArray("{\"taskInfo\": []}\0garbage", 24),
    };
    for (const QByteArray& bytes : broken) {
        QList<TaskInfoSetting> tasks = before;
        EXPECT_EQ(parseTaskFile(bytes, tasks), -1) << bytes.left(40).toStdString();
        EXPECT_EQ(tasks.size(), before.size());
    }
}

TEST(TaskFileFormat, AnObjectWithoutTaskArrayGivesNoTasks) {
    QList<TaskInfoSetting> tasks = factoryTasks();
    EXPECT_EQ(parseTaskFile("{\"taskInfo\": \"none\"}", tasks), 0);
    EXPECT_TRUE(tasks.isEmpty());
    EXPECT_EQ(parseTaskFile("{\"taskInfo\": [3, null]}", tasks), 0);
    ASSERT_EQ(tasks.size(), 2);
    EXPECT_EQ(tasks[1].sectionNum, 0);
}
