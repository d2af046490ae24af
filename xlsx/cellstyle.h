#pragma once

#include <QByteArray>

// The one cell format our values are written in: Arial 11, centred horizontally and vertically.
// Returns its index in the workbook's cell formats (the "s" of a cell). The first time, its font
// and format are appended to styles.xml; later saves find and reuse them, so a day's workbook
// gains one format however many rows it collects. Every other style of the workbook is kept.
// Returns -1, leaving the part as it was, when it has no font or cell format list.
int centredArialFormat(QByteArray& stylesXml);
