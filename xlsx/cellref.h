#pragma once

#include <QString>

// Cell references as a sheet writes them: "AB12" is column 28, row 12. Rows and columns count
// from 1, as people read them.

// "A" for 1, "Z" for 26, "AA" for 27.
QString columnLetters(int column);

// "B5" for row 5, column 2.
QString cellReference(int row, int column);

// Splits a reference into its row and column. A reference without a row ("AB") gives row 0,
// one without letters column 0. False when the text is not a reference at all.
bool parseCellReference(const QString& reference, int& row, int& column);
