#include "cellref.h"

QString columnLetters(int column) {
    QString letters;
    for (int rest = column; rest > 0; rest = (rest - 1) / 26) {
        letters.prepend(QChar('A' + (rest - 1) % 26));
    }
    return letters;
}

QString cellReference(int row, int column) {
    return columnLetters(column) + QString::number(row);
}

bool parseCellReference(const QString& reference, int& row, int& column) {
    row = 0;
    column = 0;
    int index = 0;
    for (; index < reference.size() && reference[index].isLetter(); ++index) {
        const QChar letter = reference[index].toUpper();
        if (letter < 'A' || letter > 'Z') {
            return false;
        }
        column = column * 26 + (letter.unicode() - 'A' + 1);
    }
    for (; index < reference.size() && reference[index].isDigit(); ++index) {
        row = row * 10 + reference[index].digitValue();
    }
    return index == reference.size() && (row > 0 || column > 0);
}
