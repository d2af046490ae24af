#pragma once

#include <xlsxwriter.h>
#include <string>

#include "templatetexts.h"

// The cell formats the templates share.
struct TemplateFormats {
    lxw_format* title;     // the report's title
    lxw_format* maker;     // the maker's name
    lxw_format* product;   // the product's name
    lxw_format* heading;   // column and table titles: bold, shaded, framed
    lxw_format* label;     // the report's labels beside their values
    lxw_format* value;     // Arial, centred: what the result writers write in
    lxw_format* signLine;  // an empty field to sign or date on
};

// One template being written: a workbook with a single sheet, fixed document properties (the
// same generator writes the same files) and the shared formats. Positions are counted from 1,
// as in the result layout; libxlsxwriter's own count from 0.
class TemplateBook {
public:
    TemplateBook(const std::string& path, const char* sheetName, const TemplateTexts& texts);
    ~TemplateBook();
    TemplateBook(const TemplateBook&) = delete;
    TemplateBook& operator=(const TemplateBook&) = delete;

    lxw_worksheet* sheet() const { return sheet_; }
    const TemplateFormats& formats() const { return formats_; }

    void text(int row, int column, const char* text, lxw_format* format) const;
    // A merged block holding one text (empty for a blank field).
    void merged(int firstRow, int firstColumn, int lastRow, int lastColumn, const char* text,
                lxw_format* format) const;
    void columnWidth(int firstColumn, int lastColumn, double widthChars) const;
    void rowHeight(int row, double heightPt) const;

    // Writes the file; false when libxlsxwriter reports an error.
    bool close();

private:
    lxw_workbook* workbook_;
    lxw_worksheet* sheet_;
    TemplateFormats formats_;
};
