#include "resultdata.h"

#include <QtGlobal>

#include "resultfigures.h"
#include "resultlayout.h"
#include "xlsxworkbook.h"

using namespace resultlayout;

namespace {

void writeZones(XlsxWorkbook& workbook, int row, const TaskInfoSetting& task) {
    int column = kDataFirstZoneColumn;
    for (const ZoneFigures& zone : zoneFigures(task)) {
        workbook.setText(row, column, zone.name);
        workbook.setNumber(row, column + 1, zone.diameterMin);
        workbook.setNumber(row, column + 2, zone.diameterMax);
        workbook.setNumber(row, column + 3, zone.defects);
        workbook.setNumber(row, column + 4, zone.scratches);
        column += kDataZoneColumns;
    }
}

bool failWith(const XlsxWorkbook& workbook, QString* error) {
    if (error != nullptr) {
        *error = workbook.errorString();
    }
    return false;
}

}  // namespace

bool saveMeasureResultDataAsXlsxSF(const QString& dataFile, const SingleFiberResultRecord& record,
                                   QString* error) {
    XlsxWorkbook workbook;
    if (!workbook.open(dataFile)) {
        return failWith(workbook, error);
    }
    const int row = qMax(workbook.lastUsedRow() + 1, kDataFirstRow);
    const QStringList values = measurementValues(record);
    for (int index = 0; index < values.size(); ++index) {
        workbook.setText(row, index + 1, values[index]);
    }
    writeZones(workbook, row, record.task);
    return workbook.saveAs(dataFile) || failWith(workbook, error);
}
