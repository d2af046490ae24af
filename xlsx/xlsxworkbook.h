#pragma once

#include <QImage>
#include <QList>
#include <QString>

#include "drawingxml.h"
#include "sheetxml.h"
#include "zippackage.h"

// A workbook opened for adding values and pictures to its first sheet, typically a copy of a
// template. Only the parts that must change are rewritten (the sheet, styles.xml, the sheet's
// drawing and the relationship and content type lists); in those, every element we do not touch
// is kept, and every other part is copied back byte for byte. So a template a user has edited
// in a spreadsheet program (a logo, colours, column widths, shared strings) keeps all of it.
//
// Changes are collected and written by saveAs() in one step; nothing reaches the disk before.
class XlsxWorkbook {
public:
    // Reads the workbook (a file or a ":/" resource). False, with errorString() telling why,
    // when it cannot be read or is not a workbook with a first sheet and a style part.
    bool open(const QString& path);
    const QString& errorString() const { return error_; }

    // The last row of the first sheet that holds a value (0 for none), as opened.
    int lastUsedRow() const { return facts_.lastUsedRow; }

    // Sets a cell of the first sheet, in Arial and centred (rows and columns from 1).
    void setText(int row, int column, const QString& text);
    void setNumber(int row, int column, double value);

    // Places a picture (stored as PNG) over the first sheet with its top left corner in a cell.
    // False when the image is empty or cannot be encoded.
    bool addPicture(const QImage& image, const PictureAnchor& anchor, const QString& name);

    // Writes the workbook with the changes to path, replacing the file in one step: a crash
    // leaves the old file or the new one, never a mixture. The caller runs "sync" after.
    // False, with errorString(), when it could not be written; the file is then as it was.
    bool saveAs(const QString& path);

private:
    struct Picture {
        QByteArray png;
        PictureAnchor anchor;
        QString name;
    };

    bool fail(const QString& message);
    bool findParts();
    bool placePictures(ZipPackage& package, QString& newDrawingRelationshipId);
    bool linkNewDrawing(ZipPackage& package, QString& drawingPart, QString& relationshipId);
    bool writeCells(ZipPackage& package, const QString& newDrawingRelationshipId);

    ZipPackage package_;
    QString sheetPart_;
    QString stylesPart_;
    SheetFacts facts_;
    CellEdits cells_;
    QList<Picture> pictures_;
    QString error_;
};
