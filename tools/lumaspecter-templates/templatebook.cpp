#include "templatebook.h"

#include <cstdio>

namespace {

constexpr lxw_color_t kHeadingShade = 0xDDEBF7;
constexpr lxw_color_t kLabelShade = 0xF2F2F2;
constexpr time_t kFixedCreationTime = 1704067200;  // 2024-01-01: reproducible files

lxw_format* centred(lxw_workbook* workbook) {
    lxw_format* format = workbook_add_format(workbook);
    format_set_font_name(format, "Arial");
    format_set_align(format, LXW_ALIGN_CENTER);
    format_set_align(format, LXW_ALIGN_VERTICAL_CENTER);
    return format;
}

lxw_format* shaded(lxw_workbook* workbook, lxw_color_t shade) {
    lxw_format* format = centred(workbook);
    format_set_bold(format);
    format_set_bg_color(format, shade);
    format_set_border(format, LXW_BORDER_THIN);
    return format;
}

lxw_format* sized(lxw_workbook* workbook, double size, bool bold) {
    lxw_format* format = centred(workbook);
    format_set_font_size(format, size);
    if (bold) {
        format_set_bold(format);
    }
    return format;
}

TemplateFormats addFormats(lxw_workbook* workbook) {
    TemplateFormats formats;
    formats.title = sized(workbook, 20, true);
    formats.maker = sized(workbook, 14, true);
    formats.product = sized(workbook, 12, false);
    formats.heading = shaded(workbook, kHeadingShade);
    formats.label = shaded(workbook, kLabelShade);
    formats.value = centred(workbook);
    formats.signLine = centred(workbook);
    format_set_bottom(formats.signLine, LXW_BORDER_THIN);
    return formats;
}

}  // namespace

TemplateBook::TemplateBook(const std::string& path, const char* sheetName,
                           const TemplateTexts& texts)
    : workbook_(workbook_new(path.c_str())),
      sheet_(workbook_add_worksheet(workbook_, sheetName)),
      formats_(addFormats(workbook_)) {
    lxw_doc_properties properties = {};
    properties.author = const_cast<char*>(texts.maker);
    properties.company = const_cast<char*>(texts.maker);
    properties.created = kFixedCreationTime;
    workbook_set_properties(workbook_, &properties);
    worksheet_set_paper(sheet_, 9);  // A4
}

TemplateBook::~TemplateBook() {
    if (workbook_) {
        workbook_close(workbook_);
    }
}

void TemplateBook::text(int row, int column, const char* text, lxw_format* format) const {
    worksheet_write_string(sheet_, row - 1, column - 1, text, format);
}

void TemplateBook::merged(int firstRow, int firstColumn, int lastRow, int lastColumn,
                          const char* text, lxw_format* format) const {
    worksheet_merge_range(sheet_, firstRow - 1, firstColumn - 1, lastRow - 1, lastColumn - 1, text,
                          format);
}

void TemplateBook::columnWidth(int firstColumn, int lastColumn, double widthChars) const {
    worksheet_set_column(sheet_, firstColumn - 1, lastColumn - 1, widthChars, nullptr);
}

void TemplateBook::rowHeight(int row, double heightPt) const {
    worksheet_set_row(sheet_, row - 1, heightPt, nullptr);
}

bool TemplateBook::close() {
    const lxw_error error = workbook_close(workbook_);
    workbook_ = nullptr;
    if (error != LXW_NO_ERROR) {
        std::fprintf(stderr, "lumaspecter-templates: %s\n", lxw_strerror(error));
    }
    return error == LXW_NO_ERROR;
}
