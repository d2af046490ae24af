#include "resultsample.h"

#include <QPainter>
#include <QRandomGenerator>

#include "factorytasks.h"

namespace {

void fillZoneResults(TaskInfoSetting& task) {
    for (int zone = 0; zone < kMaxZones; ++zone) {
        TaskZoneResult& result = task.zoneResults[zone];
        result = TaskZoneResult{};
        result.dNoBiggerNum = int16_t(zone + 1);
        result.dMidNum = 1;
        result.sNoBiggerNum = int16_t(zone);
        result.dNoBiggerResult = result.dMidResult = result.dBiggerResult = 1;
        result.sNoBiggerResult = result.sBiggerResult = zone == 1 ? 0 : 1;
    }
}

}  // namespace

SingleFiberResultRecord sampleRecord(const QString& connectorId, int saveMode, bool passed) {
    SingleFiberResultRecord record;
    record.saveMode = saveMode;
    record.connectorId = connectorId;
    record.passed = passed;
    record.task = factoryTasks().value(0);
    fillZoneResults(record.task);
    record.measured = samplePicture(QImage::Format_Grayscale8);
    record.overlay = samplePicture(QImage::Format_RGB888);
    record.time = QDateTime(QDate(2024, 5, 17), QTime(14, 3, 9));
    record.describer = "Patch cord";
    record.manufacturer = "Fiber Works";
    record.operatorName = "Lin";
    return record;
}

QImage samplePicture(QImage::Format format, int side) {
    QImage picture(side, side, QImage::Format_RGB888);
    picture.fill(QColor(30, 30, 30));
    {
        QPainter painter(&picture);
        painter.setBrush(QColor(200, 200, 200));
        painter.drawEllipse(QPoint(side / 2, side / 2), side / 3, side / 3);
    }
    QRandomGenerator noise(7);
    for (int y = 0; y < side; y += 3) {
        for (int x = 0; x < side; x += 3) {
            const int shade = int(noise.bounded(40));
            picture.setPixelColor(x, y, QColor(shade, shade, shade));
        }
    }
    return picture.convertToFormat(format);
}
