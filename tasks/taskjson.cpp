#include "taskjson.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <cstring>

namespace {

const QString kTaskInfoKey = QStringLiteral("taskInfo");

// The numeric keys of a zone object and the fields they fill, in the record's order.
struct ZoneNumber {
    const char* key;
    int16_t TaskZoneSetting::*field;
};
const ZoneNumber kZoneNumbers[] = {
    {"dCheck", &TaskZoneSetting::dCheck},
    {"sCheck", &TaskZoneSetting::sCheck},
    {"diameterMin", &TaskZoneSetting::diameterMin},
    {"diameterMax", &TaskZoneSetting::diameterMax},
    {"dSensitivity", &TaskZoneSetting::dSensitivity},
    {"sSensitivity", &TaskZoneSetting::sSensitivity},
    {"sWidthLimit", &TaskZoneSetting::sWidthLimit},
    {"sNoBiggerLimit", &TaskZoneSetting::sNoBiggerLimit},
    {"sBiggerLimit", &TaskZoneSetting::sBiggerLimit},
    {"dLimit1", &TaskZoneSetting::dLimit1},
    {"dLimit2", &TaskZoneSetting::dLimit2},
    {"dNoBiggerLimit", &TaskZoneSetting::dNoBiggerLimit},
    {"dMidLimit", &TaskZoneSetting::dMidLimit},
    {"dBiggerLimit", &TaskZoneSetting::dBiggerLimit},
};

// A value that is not a string gives empty text, as a missing key does.
QString textOf(const QJsonObject& object, const char* key) {
    return object.value(QLatin1String(key)).toString();
}

int16_t numberOf(const QJsonObject& object, const char* key) {
    return parseTaskNumber(textOf(object, key));
}

QJsonObject zoneToJson(const TaskZoneSetting& zone) {
    QJsonObject object{{"sectionName", taskText(zone.sectionName)},
                       {"sectionId", taskText(zone.sectionId)}};
    for (const ZoneNumber& number : kZoneNumbers) {
        object.insert(QLatin1String(number.key), QString::number(zone.*number.field, 10));
    }
    return object;
}

TaskZoneSetting zoneFromJson(const QJsonObject& object) {
    TaskZoneSetting zone{};
    setTaskText(zone.sectionName, textOf(object, "sectionName"));
    setTaskText(zone.sectionId, textOf(object, "sectionId"));
    for (const ZoneNumber& number : kZoneNumbers) {
        zone.*number.field = numberOf(object, number.key);
    }
    return zone;
}

}  // namespace

int16_t parseTaskNumber(const QString& text) {
    bool ok = false;
    const short value = text.toShort(&ok, 10);
    return ok ? value : 0;
}

void setTaskText(char (&field)[kTaskTextCapacity], const QString& text) {
    const QByteArray utf8 = text.toUtf8();
    int length = std::min(utf8.size(), kTaskTextCapacity - 1);
    // Step back over continuation bytes (10xxxxxx) so that no character is cut in two.
    if (length < utf8.size()) {
        while (length > 0 && (uchar(utf8[length]) & 0xC0) == 0x80) {
            --length;
        }
    }
    std::memcpy(field, utf8.constData(), size_t(length));
    std::memset(field + length, 0, size_t(kTaskTextCapacity - length));
}

QString taskText(const char (&field)[kTaskTextCapacity]) {
    return QString::fromUtf8(field, int(strnlen(field, kTaskTextCapacity)));
}

QJsonObject taskToJson(const TaskInfoSetting& task) {
    QJsonArray sections;
    for (int i = 0; i < zonesInUse(task); ++i) {
        sections.append(zoneToJson(task.sections[i]));
    }
    return QJsonObject{{"taskId", taskText(task.taskId)},
                       {"taskName", taskText(task.taskName)},
                       {"opticalType", QString::number(task.opticalType, 10)},
                       {"contactorType", QString::number(task.contactorType, 10)},
                       {"sections", sections}};
}

TaskInfoSetting taskFromJson(const QJsonObject& object) {
    TaskInfoSetting task{};
    setTaskText(task.taskName, textOf(object, "taskName"));
    setTaskText(task.taskId, textOf(object, "taskId"));
    task.opticalType = numberOf(object, "opticalType");
    task.contactorType = numberOf(object, "contactorType");
    const QJsonArray sections = object.value("sections").toArray();
    task.sectionNum = int16_t(std::min(sections.size(), kMaxZones));
    for (int i = 0; i < task.sectionNum; ++i) {
        task.sections[i] = zoneFromJson(sections[i].toObject());
    }
    return task;
}

bool parseTaskFileRoot(const QByteArray& bytes, QJsonObject& root) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject() ||
        document.object().isEmpty()) {
        return false;
    }
    root = document.object();
    return true;
}

int parseTaskFile(const QByteArray& bytes, QList<TaskInfoSetting>& tasks) {
    QJsonObject root;
    if (!parseTaskFileRoot(bytes, root)) {
        return -1;
    }
    tasks.clear();
    for (const QJsonValue& value : root.value(kTaskInfoKey).toArray()) {
        tasks.append(taskFromJson(value.toObject()));
    }
    return 0;
}

QByteArray taskFileBytes(const QList<TaskInfoSetting>& tasks) {
    QJsonArray array;
    for (const TaskInfoSetting& task : tasks) {
        array.append(taskToJson(task));
    }
    return QJsonDocument(QJsonObject{{kTaskInfoKey, array}}).toJson(QJsonDocument::Indented);
}
