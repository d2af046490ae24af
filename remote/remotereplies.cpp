#include "remotereplies.h"

#include <QBuffer>
#include <QFile>
#include <QJsonArray>

#include "taskjson.h"
#include "tasklist.h"

namespace {

QString text(int number) {
    return QString::number(number);
}

// A picture as the client decodes it: JPEG at full quality, then Base64.
QString jpegBase64(const QImage& image) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "jpg", 100);
    return QString::fromLatin1(buffer.data().toBase64());
}

QJsonObject zoneReply(const TaskZoneSetting& zone, const TaskZoneResult& result) {
    return {
        {"zoneName", taskText(zone.sectionName)},
        {"innerDiameter", text(zone.diameterMin)},
        {"outerDiameter", text(zone.diameterMax)},
        {"sNoBiggerNum", text(result.sNoBiggerNum)},
        {"sNoBiggerResult", text(result.sNoBiggerResult)},
        {"sBiggerNum", text(result.sBiggerNum)},
        {"sBiggerResult", text(result.sBiggerResult)},
        {"dNoBiggerNum", text(result.dNoBiggerNum)},
        {"dNoBiggerResult", text(result.dNoBiggerResult)},
        {"dMidNum", text(result.dMidNum)},
        {"dMidReuslt", text(result.dMidResult)},  // spelt as the clients in the field read it
        {"dBiggerNum", text(result.dBiggerNum)},
        {"dBiggerResult", text(result.dBiggerResult)},
        {"dArea", QString::number(result.dArea, 'g', 15)},
    };
}

QJsonArray zoneReplies(const RemoteMeasurement& measurement) {
    QJsonArray zones;
    const int count = qMin(measurement.results.size(), kMaxZones);
    for (int i = 0; i < count; ++i) {
        zones.append(zoneReply(measurement.task.sections[i], measurement.results[i]));
    }
    return zones;
}

}  // namespace

QJsonObject deviceInfoReply() {
    return {{"deviceName", "Lumaspecter"},
            {"deviceId", "SN12345678"},
            {"softwareVersion", "v1.1.3"},
            {"hardwareVersion", "v1.0.1"},
            {"firmwareVersion", "v2.6.32"}};
}

QJsonObject measurementReply(const RemoteMeasurement& measurement, const QString& connectorId,
                             const RemoteReportTexts& texts, const QDateTime& now) {
    if (!measurement.taken) {
        return {};
    }
    const TaskInfoSetting& task = measurement.task;
    const bool singleFiber = task.contactorType == 0;
    return {
        {"taskId", taskText(task.taskId)},
        {"taskName", taskText(task.taskName)},
        {"opticalType", text(task.opticalType)},
        {"contactorType", text(task.contactorType)},
        {"saveName", connectorId},
        {"saveTime", now.toString("yyyy-MM-dd HH:mm:ss")},
        {"imageWidth", text(measurement.image.width())},
        {"imageHeight", text(measurement.image.height())},
        {"overlayImageData", jpegBase64(measurement.overlay)},
        {"originImageData", jpegBase64(measurement.image)},
        {"fiberX", text(singleFiber ? measurement.fiberX : 0)},
        {"fiberY", text(singleFiber ? measurement.fiberY : 0)},
        {"measureResult", measurement.pass ? "1" : "0"},
        {"zoneNumber", text(task.sectionNum)},
        {"zoneResults", zoneReplies(measurement)},
        {"description", texts.description},
        {"operator", texts.operatorName},
        {"manufacturer", texts.manufacturer},
    };
}

void addTaskFileReply(QJsonObject& data) {
    QFile file(taskFilePath());
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    QJsonObject root;
    if (!parseTaskFileRoot(file.readAll(), root)) {
        data["result"] = "failure";
        data["desc"] = "parse task error";
        return;
    }
    for (auto it = root.constBegin(); it != root.constEnd(); ++it) {
        data[it.key()] = it.value();
    }
    data["result"] = "success";
    data["desc"] = "";
}
