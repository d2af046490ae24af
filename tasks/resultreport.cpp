#include "resultreport.h"

#include "resultfigures.h"
#include "resultlayout.h"
#include "xlsxworkbook.h"

using namespace resultlayout;

static_assert(kMaxZones <= kZoneSlots, "the report table has a row for every zone");

namespace {

void writeValues(XlsxWorkbook& workbook, const SingleFiberResultRecord& record) {
    const QStringList values = measurementValues(record);
    for (int index = 0; index < values.size() && index < kReportValueRows; ++index) {
        workbook.setText(kReportFirstValueRow + index, kReportValueColumn, values[index]);
    }
}

void writeZoneTable(XlsxWorkbook& workbook, const SingleFiberResultRecord& record) {
    int row = kReportFirstZoneRow;
    for (const ZoneFigures& zone : zoneFigures(record.task)) {
        workbook.setText(row, 1, zone.name);
        workbook.setNumber(row, 2, zone.diameterMin);
        workbook.setNumber(row, 3, zone.diameterMax);
        workbook.setNumber(row, 4, zone.defects);
        workbook.setText(row, 5, verdictText(zone.defectsPass, record.language));
        workbook.setNumber(row, 6, zone.scratches);
        workbook.setText(row, 7, verdictText(zone.scratchesPass, record.language));
        ++row;
    }
}

bool placePicture(XlsxWorkbook& workbook, const QImage& image, int column, const QString& name) {
    if (image.isNull()) {
        return true;
    }
    const QSize shown =
        image.size().scaled(kReportPictureSidePx, kReportPictureSidePx, Qt::KeepAspectRatio);
    return workbook.addPicture(image, {kReportPictureRow, column, shown}, name);
}

}  // namespace

bool saveMeasureResultReportAsXlsxSF(const QString& reportFile, const QString& templateFile,
                                     const SingleFiberResultRecord& record, QString* error) {
    XlsxWorkbook workbook;
    bool ok = workbook.open(templateFile);
    if (ok) {
        writeValues(workbook, record);
        writeZoneTable(workbook, record);
        ok = placePicture(workbook, record.measured, kReportOriginalColumn, "Original") &&
             placePicture(workbook, record.overlay, kReportAnalyseColumn, "Analyse") &&
             workbook.saveAs(reportFile);
    }
    if (!ok && error != nullptr) {
        *error = workbook.errorString();
    }
    return ok;
}
