#include "overlaysf.h"

#include <QPainter>
#include <QPen>
#include <cstring>

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

// The region as an RGB picture, gray on all three channels. Each pixel is written as four
// equal bytes, the fourth overwritten by the next pixel: one store a pixel, in any byte order.
// The row's last pixel is written byte by byte, so that nothing is written past the row.
QImage rgbCopy(const unsigned char* region, int width, int height) {
    QImage rgb(width, height, QImage::Format_RGB888);
    for (int y = 0; y < height; ++y) {
        const unsigned char* in = region + long(y) * width;
        unsigned char* out = rgb.scanLine(y);
        for (int x = 0; x + 1 < width; ++x) {
            const uint32_t gray = in[x] * 0x01010101u;
            std::memcpy(out + 3 * x, &gray, 4);
        }
        std::memset(out + 3 * (width - 1), in[width - 1], 3);
    }
    return rgb;
}

void setRgb(unsigned char* pixel, QRgb color) {
    pixel[0] = uchar(qRed(color));
    pixel[1] = uchar(qGreen(color));
    pixel[2] = uchar(qBlue(color));
}

// Defect pixels are few: each row is searched for them with memchr and only they are written.
void paintDefects(QImage& overlay, const SingleFiberFindings& f) {
    const QRgb large = QColor(Qt::red).rgb(), other = QColor(Qt::yellow).rgb();
    const int width = overlay.width();
    for (int y = 0; y < overlay.height(); ++y) {
        const unsigned char* row = f.defectPixels + long(y) * width;
        unsigned char* out = overlay.scanLine(y);
        for (const void* hit = std::memchr(row, 255, size_t(width)); hit != nullptr;) {
            const int x = int(static_cast<const unsigned char*>(hit) - row);
            const int label = f.labelMap[long(y) * width + x];
            const bool isLarge =
                label >= 0 && label < f.defectCount && f.defects[label].sizeClass == 2;
            setRgb(out + 3 * x, isLarge ? large : other);
            hit = std::memchr(row + x + 1, 255, size_t(width - x - 1));
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
    overlay = rgbCopy(region, width, height);
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
