#include "datatemplates.h"

#include <cstdio>
#include <string>

#include "resultlayout.h"
#include "templatebook.h"

using namespace resultlayout;

namespace {

constexpr int kMultiFiberCount = 12;
constexpr int kMultiFiberColumns = 3;
constexpr double kFixedColumnWidths[kDataFixedColumns] = {16, 18, 18, 18, 20, 14, 10};

std::string numbered(const char* pattern, int number) {
    char text[64];
    std::snprintf(text, sizeof text, pattern, number);
    return text;
}

// Maker and product over the fixed columns (over the whole width they would be centred far
// off to the right), the fixed titles each spanning the two title rows. The titles and the
// first column stay in view while scrolling; printed, the sheet lies on its side.
void writeHeading(const TemplateBook& book, const TemplateTexts& texts) {
    const TemplateFormats& formats = book.formats();
    book.merged(1, 1, 1, kDataFixedColumns, texts.maker, formats.maker);
    book.merged(2, 1, 2, kDataFixedColumns, texts.product, formats.product);
    for (int column = 1; column <= kDataFixedColumns; ++column) {
        book.merged(kDataTitleRow, column, kDataSubtitleRow, column,
                    texts.measurementTitles[column - 1], formats.heading);
        book.columnWidth(column, column, kFixedColumnWidths[column - 1]);
    }
    worksheet_freeze_panes(book.sheet(), kDataFirstRow - 1, 1);
    worksheet_set_landscape(book.sheet());
}

// Numbered groups ("Zone 1", "Zone 2", ...) with the same subtitles under each.
void writeGroups(const TemplateBook& book, const char* groupPattern, int groups,
                 const char* const* subtitles, int columnsPerGroup) {
    const TemplateFormats& formats = book.formats();
    for (int group = 0; group < groups; ++group) {
        const int first = kDataFirstZoneColumn + group * columnsPerGroup;
        book.merged(kDataTitleRow, first, kDataTitleRow, first + columnsPerGroup - 1,
                    numbered(groupPattern, group + 1).c_str(), formats.heading);
        for (int column = 0; column < columnsPerGroup; ++column) {
            book.text(kDataSubtitleRow, first + column, subtitles[column], formats.heading);
        }
        book.columnWidth(first, first + columnsPerGroup - 1, 10);
    }
}

}  // namespace

bool writeDataTemplate(const std::string& path, const TemplateTexts& texts) {
    TemplateBook book(path, texts.dataSheet, texts);
    writeHeading(book, texts);
    writeGroups(book, texts.zone, kZoneSlots, texts.zoneSubtitles, kDataZoneColumns);
    return book.close();
}

bool writeMultiFiberDataTemplate(const std::string& path, const TemplateTexts& texts) {
    TemplateBook book(path, texts.dataSheet, texts);
    writeHeading(book, texts);
    writeGroups(book, texts.fiber, kMultiFiberCount, texts.fiberSubtitles, kMultiFiberColumns);
    return book.close();
}
