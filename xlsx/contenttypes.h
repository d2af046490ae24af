#pragma once

#include <QByteArray>
#include <QString>

// "[Content_Types].xml": the media type of every part, by file extension ("Default") or by
// part name ("Override").

constexpr const char* kContentTypesPart = "[Content_Types].xml";
constexpr const char* kPngContentType = "image/png";
constexpr const char* kDrawingContentType =
    "application/vnd.openxmlformats-officedocument.drawing+xml";

// Adds a type for a file extension ("png") unless the extension has one. False when the part
// is not well-formed.
bool addDefaultContentType(QByteArray& xml, const QString& extension, const QString& type);

// Adds a type for one part ("xl/drawings/drawing1.xml") unless the part has one.
bool addOverrideContentType(QByteArray& xml, const QString& partName, const QString& type);
