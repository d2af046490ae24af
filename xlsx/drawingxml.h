#pragma once

#include <QByteArray>
#include <QList>
#include <QSize>
#include <QString>

// A drawing part ("xl/drawings/drawing1.xml"): the pictures that float over a sheet.

struct PictureAnchor {
    int row = 1;  // the cell of the picture's top left corner, counted from 1
    int column = 1;
    QSize sizePx;  // the size it is shown at, in screen pixels (96 per inch)
};

struct DrawingPicture {
    PictureAnchor anchor;
    QString relationshipId;  // the drawing's relationship to the picture's media part
    QString name;            // shown as the picture's name and description
};

// A drawing part without pictures.
QByteArray emptyDrawing();

// Appends the pictures to a drawing, each anchored at one cell with a fixed size (it moves
// with its cell but keeps its size). The pictures and shapes already in it are kept.
// False when the part is not well-formed.
bool addPicturesToDrawing(QByteArray& drawingXml, const QList<DrawingPicture>& pictures);
