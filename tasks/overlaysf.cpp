#include "overlaysf.h"

#include <QPainter>
#include <QPen>

namespace {

const QColor kScratchPassing(255, 165, 0);

QPen roundPen(const QColor& color) {
    return QPen(color, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

void drawZones(QPainter& painter, const TaskInfoSetting& task, int cx, int cy, double scale) {
    painter.setPen(roundPen(Qt::blue));
    for (int z = 0; z < zonesInUse(task); ++z) {
        for (int diameter : {task.sections[z].diameterMin, task.sections[z].diameterMax}) {
            const double r = (diameter / scale) / 2;
            painter.drawEllipse(QRectF(cx - r, cy - r, 2 * r, 2 * r));
        }
    }
}

void paintDefects(QImage& overlay, const SingleFiberFindings& f) {
    const QRgb large = QColor(Qt::red).rgb(), other = QColor(Qt::yellow).rgb();
    for (int y = 0; y < overlay.height(); ++y) {
        for (int x = 0; x < overlay.width(); ++x) {
            const long p = long(y) * overlay.width() + x;
            if (f.defectPixels[p] != 255) {
                continue;
            }
            const int label = f.labelMap[p];
            const bool isLarge =
                label >= 0 && label < f.defectCount && f.defects[label].sizeClass == 2;
            overlay.setPixel(x, y, isLarge ? large : other);
        }
    }
}

bool zonePassesScratches(const TaskInfoSetting& task, int zone) {
    return zone < 0 || (task.zoneResults[zone].sNoBiggerResult == 1 &&
                        task.zoneResults[zone].sBiggerResult == 1);
}

void drawScratches(QPainter& painter, const TaskInfoSetting& task, const SingleFiberFindings& f) {
    for (int i = 0; i < f.scratchCount; ++i) {
        const ScratchRecord& s = f.scratches[i];
        painter.setPen(roundPen(zonePassesScratches(task, f.scratchZones[i]) ? kScratchPassing
                                                                             : QColor(Qt::red)));
        painter.drawLine(int(s.x1), int(s.y1), int(s.x2), int(s.y2));
    }
}

}  // namespace

void drawOverlayImageSF(const unsigned char* region, int width, int height, int centerX,
                        int centerY, const TaskInfoSetting& task, double scale,
                        const SingleFiberFindings& findings, QImage& measured, QImage& overlay) {
    const int lineLength = height == width ? height : width;
    measured = QImage(region, width, height, lineLength, QImage::Format_Grayscale8).copy();
    overlay = QImage(region, width, height, width, QImage::Format_Grayscale8)
                  .convertToFormat(QImage::Format_RGB888);
    {
        QPainter painter(&overlay);
        drawZones(painter, task, centerX, centerY, scale);
    }
    if (findings.defectCount > 0) {
        paintDefects(overlay, findings);
    }
    if (findings.scratchCount > 0) {
        QPainter painter(&overlay);
        drawScratches(painter, task, findings);
    }
}
