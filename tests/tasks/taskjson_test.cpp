#include "taskjson.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QSet>
#include <cstring>

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
    return taskFromJson(QJsonObject{{"taskId", "t"}, {"sections", QJsonArray{zone}}}).sections[0];
}

// Every setting of a zone and of its task, in one line.
QString zoneLine(const TaskInfoSetting& task, int zoneIndex) {
    const TaskZoneSetting& z = task.sections[zoneIndex];
    QStringList items{taskText(task.taskName), QString::number(task.opticalType),
                      QString::number(task.contactorType), taskText(z.sectionName)};
    for (int value : {z.dCheck, z.sCheck, z.diameterMin, z.diameterMax, z.dSensitivity,
                      z.sSensitivity, z.sWidthLimit, z.sNoBiggerLimit, z.sBiggerLimit, z.dLimit1,
                      z.dLimit2, z.dNoBiggerLimit, z.dMidLimit, z.dBiggerLimit}) {
        items << QString::number(value);
    }
    return items.join(' ');
}

}  // namespace

TEST(BuiltInTasks, EveryTaskAndZoneHasItsOwnUuid) {
    const QRegularExpression uuid("^[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}$");
    QStringList ids;
    for (const TaskInfoSetting& task : factoryTasks()) {
        ids << taskText(task.taskId);
        for (int zone = 0; zone < task.sectionNum; ++zone) {
            ids << taskText(task.sections[zone].sectionId);
        }
    }
    ASSERT_GT(ids.size(), 16);
    for (const QString& id : ids) {
        EXPECT_TRUE(uuid.match(id).hasMatch()) << id.toStdString();
    }
    EXPECT_EQ(QSet<QString>(ids.begin(), ids.end()).size(), ids.size());
}

TEST(TaskFileFormat, TheBuiltInTasksSurviveWriteThenReadFieldByField) {
    const QList<TaskInfoSetting> tasks = factoryTasks();
    QList<TaskInfoSetting> reread;
    ASSERT_EQ(parseTaskFile(taskFileBytes(tasks), reread), 0);
    ASSERT_EQ(reread.size(), tasks.size());
    for (int i = 0; i < tasks.size(); ++i) {
        EXPECT_STREQ(reread[i].taskId, tasks[i].taskId);
        EXPECT_EQ(reread[i].sectionNum, tasks[i].sectionNum);
        for (int zone = 0; zone < tasks[i].sectionNum; ++zone) {
            EXPECT_EQ(zoneLine(reread[i], zone).toStdString(),
                      zoneLine(tasks[i], zone).toStdString());
            EXPECT_STREQ(reread[i].sections[zone].sectionId, tasks[i].sections[zone].sectionId);
        }
    }
}

TEST(TaskFileFormat, EveryValueIsWrittenAsADecimalString) {
    TaskInfoSetting task{};
    setTaskText(task.taskName, "T");
    task.sectionNum = 1;
    task.sections[0].sNoBiggerLimit = -1;
    task.sections[0].diameterMax = 250;
    const QJsonObject zone = taskToJson(task)["sections"].toArray()[0].toObject();
    EXPECT_EQ(
        (QJsonArray{zone["sNoBiggerLimit"], zone["diameterMax"], taskToJson(task)["opticalType"]}),
        (QJsonArray{"-1", "250", "0"}));
    EXPECT_EQ(zone.size(), 16);
}

TEST(TaskFileFormat, ValuesThatAreNotDecimalTextsReadAsZero) {
    const std::pair<QJsonValue, int> values[] = {
        {7, 0},  // a JSON number
        {true, 0},
        {QJsonArray{"7"}, 0},
        {"seven", 0},
        {"32768", 0},  // beyond 16 bits
        {"-32768", -32768},
        {"0x10", 0},
        {"12", 12},
    };
    for (const auto& [value, expected] : values) {
        EXPECT_EQ(loadZone(zoneObject({{"dLimit1", value}})).dLimit1, expected)
            << QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact).toStdString();
    }
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
