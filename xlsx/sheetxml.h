#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

// A worksheet part ("xl/worksheets/sheet1.xml"): what we read from it and how we change it.
// Rows and columns count from 1.

struct CellValue {
    enum class Kind { Text, Number };
    Kind kind = Kind::Text;
    QString text;
    double number = 0.0;
};

// Row → column → value.
using CellEdits = QMap<int, QMap<int, CellValue>>;

struct SheetFacts {
    // The last row with a cell that holds a value or formula (0 for none). Rows that only
    // carry formatting do not count, so a template may format rows ahead of the data.
    int lastUsedRow = 0;
    // The "r:id" of the sheet's drawing, "" when the sheet has no pictures yet.
    QString drawingRelationshipId;
};

// False when the part is not well-formed XML.
bool readSheetFacts(const QByteArray& xml, SheetFacts& facts);

struct SheetChanges {
    CellEdits cells;
    int cellFormat = 0;             // the style index of every written cell
    QString drawingRelationshipId;  // when not empty, links the sheet to this drawing
};

// Writes the cells into the sheet: a cell that exists is replaced, a missing one is added to
// its row in column order, a missing row is added in row order. Texts are written as inline
// strings, so the shared string table stays as it was. The dimension is widened to cover the
// new cells. Everything else in the part is copied as it was. False when the part is not a
// well-formed sheet.
bool rewriteSheet(const QByteArray& xml, const SheetChanges& changes, QByteArray& output);
