#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <ostream>

// The independent reader of the tests: openpyxl, through the small scripts beside the tests,
// run with Debian's own python (the python on PATH may lack Debian's modules).

// What dump_workbook.py reports of a workbook; an empty object (and a test failure) when
// openpyxl cannot read it.
QJsonObject readWithOpenpyxl(const QString& path);

// The value openpyxl reads in a cell ("A5"), as text; "" for an empty cell.
QString cellText(const QJsonObject& workbook, const QString& reference);

// The texts of several cells, in the order named: one comparison checks a whole row of them.
QStringList cellTexts(const QJsonObject& workbook, const QStringList& references);

// Edits a template as a user would (edit_template.py): "User note" in noteCell, a fill on A1,
// column B 33 wide, and the logo picture at A4 when one is given.
bool editLikeAUser(const QString& path, const QString& noteCell, const QString& logo = QString());

// The rows in the order the sheet part lists them (its "rowOrder").
QList<int> rowOrder(const QJsonObject& workbook);

// Lets GoogleTest print texts in failure messages.
void PrintTo(const QString& text, std::ostream* stream);
