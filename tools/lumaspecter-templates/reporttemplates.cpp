#include "reporttemplates.h"

#include <cstdio>
#include <string>

#include "resultlayout.h"
#include "templatebook.h"

using namespace resultlayout;

namespace {

constexpr int kMultiFiberCount = 12;

// Title, maker, product and the labelled value fields (labels in A:B, values in C:G).
void writeHeading(const TemplateBook& book, const TemplateTexts& texts) {
    const TemplateFormats& formats = book.formats();
    book.columnWidth(1, kReportColumns, kReportColumnWidthChars);
    book.merged(1, 1, 2, kReportColumns, texts.reportTitle, formats.title);
    book.merged(3, 1, 3, kReportColumns, texts.maker, formats.maker);
    book.merged(4, 1, 4, kReportColumns, texts.product, formats.product);
    for (int index = 0; index < kReportValueRows; ++index) {
        const int row = kReportFirstValueRow + index;
        book.merged(row, 1, row, kReportValueColumn - 1, texts.reportLabels[index], formats.label);
        book.merged(row, kReportValueColumn, row, kReportColumns, "", formats.value);
    }
    worksheet_fit_to_pages(book.sheet(), 1, 1);
}

// The table's counted columns: "Defects" and "Scratchs", each over "Count" and "P/F".
void writeCountTitles(const TemplateBook& book, const TemplateTexts& texts, int firstColumn) {
    const TemplateFormats& formats = book.formats();
    const char* groups[2] = {texts.tableDefects, texts.tableScratches};
    for (int group = 0; group < 2; ++group) {
        const int column = firstColumn + 2 * group;
        book.merged(kReportTableTitleRow, column, kReportTableTitleRow, column + 1, groups[group],
                    formats.heading);
        book.text(kReportTableSubtitleRow, column, texts.tableCounts[0], formats.heading);
        book.text(kReportTableSubtitleRow, column + 1, texts.tableCounts[1], formats.heading);
    }
}

// The two captions, the rows that hold the pictures, and the signature and date fields.
void writePictureArea(const TemplateBook& book, const TemplateTexts& texts, int captionRow) {
    const TemplateFormats& formats = book.formats();
    const int span = kReportPictureColumns - 1;
    book.merged(captionRow, kReportOriginalColumn, captionRow, kReportOriginalColumn + span,
                texts.original, formats.heading);
    book.merged(captionRow, kReportAnalyseColumn, captionRow, kReportAnalyseColumn + span,
                texts.analyse, formats.heading);
    for (int row = captionRow + 1; row <= captionRow + kReportPictureRows; ++row) {
        book.rowHeight(row, kReportPictureRowHeightPt);
    }
    const int signatureRow = captionRow + 1 + kReportPictureRows;
    book.text(signatureRow, 1, texts.signature, formats.label);
    book.merged(signatureRow, 2, signatureRow, 3, "", formats.signLine);
    book.text(signatureRow, kReportAnalyseColumn, texts.date, formats.label);
    book.merged(signatureRow, kReportAnalyseColumn + 1, signatureRow, kReportColumns, "",
                formats.signLine);
    worksheet_print_area(book.sheet(), 0, 0, signatureRow - 1, kReportColumns - 1);
}

}  // namespace

bool writeReportTemplate(const std::string& path, const TemplateTexts& texts) {
    TemplateBook book(path, texts.reportSheet, texts);
    const TemplateFormats& formats = book.formats();
    writeHeading(book, texts);
    book.merged(kReportTableTitleRow, 1, kReportTableTitleRow, 3, texts.tableZone, formats.heading);
    for (int column = 1; column <= 3; ++column) {
        book.text(kReportTableSubtitleRow, column, texts.tableZoneSubtitles[column - 1],
                  formats.heading);
    }
    writeCountTitles(book, texts, 4);
    writePictureArea(book, texts, kReportCaptionRow);
    return book.close();
}

bool writeMultiFiberReportTemplate(const std::string& path, const TemplateTexts& texts) {
    TemplateBook book(path, texts.reportSheet, texts);
    const TemplateFormats& formats = book.formats();
    writeHeading(book, texts);
    book.merged(kReportTableTitleRow, 1, kReportTableSubtitleRow, 1, texts.tableFiber,
                formats.heading);
    writeCountTitles(book, texts, 2);
    book.merged(kReportTableTitleRow, 6, kReportTableSubtitleRow, kReportColumns,
                texts.fiberSubtitles[0], formats.heading);
    for (int fiber = 1; fiber <= kMultiFiberCount; ++fiber) {
        char name[64];
        std::snprintf(name, sizeof name, texts.fiber, fiber);
        book.text(kReportFirstZoneRow + fiber - 1, 1, name, formats.label);
    }
    writePictureArea(book, texts, kReportFirstZoneRow + kMultiFiberCount + 1);
    return book.close();
}
