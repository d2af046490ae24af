#include "drawingxml.h"

#include "relationships.h"
#include "xmlrewriter.h"

namespace {

constexpr const char* kSpreadsheetDrawingNamespace =
    "http://schemas.openxmlformats.org/drawingml/2006/spreadsheetDrawing";
constexpr const char* kDrawingMainNamespace =
    "http://schemas.openxmlformats.org/drawingml/2006/main";
constexpr qint64 kEmuPerPixel = 9525;  // 914400 per inch at 96 pixels per inch

// The shape ids of a drawing must differ, so new pictures continue after the largest one.
int largestShapeId(const QByteArray& xml) {
    int largest = 1;
    XmlRewriter reader(xml);
    while (reader.readNext()) {
        if (reader.reader().isStartElement() && reader.localName() == QLatin1String("cNvPr")) {
            largest = qMax(largest, reader.reader().attributes().value("id").toInt());
        }
    }
    return largest;
}

void writeEmpty(QXmlStreamWriter& writer, const QString& name,
                const QList<QPair<QString, QString>>& attributes) {
    writer.writeEmptyElement(name);
    for (const auto& attribute : attributes) {
        writer.writeAttribute(attribute.first, attribute.second);
    }
}

void writeFromCell(QXmlStreamWriter& writer, const PictureAnchor& anchor) {
    writer.writeStartElement("xdr:from");
    writer.writeTextElement("xdr:col", QString::number(anchor.column - 1));
    writer.writeTextElement("xdr:colOff", "0");
    writer.writeTextElement("xdr:row", QString::number(anchor.row - 1));
    writer.writeTextElement("xdr:rowOff", "0");
    writer.writeEndElement();
}

void writePictureShape(QXmlStreamWriter& writer, const DrawingPicture& picture, int shapeId,
                       const QString& cx, const QString& cy) {
    writer.writeStartElement("xdr:pic");
    writer.writeStartElement("xdr:nvPicPr");
    writeEmpty(writer, "xdr:cNvPr",
               {{"id", QString::number(shapeId)}, {"name", picture.name}, {"descr", picture.name}});
    writer.writeStartElement("xdr:cNvPicPr");
    writeEmpty(writer, "a:picLocks", {{"noChangeAspect", "1"}});
    writer.writeEndElement();
    writer.writeEndElement();
    writer.writeStartElement("xdr:blipFill");
    writeEmpty(writer, "a:blip", {{"r:embed", picture.relationshipId}});
    writer.writeStartElement("a:stretch");
    writeEmpty(writer, "a:fillRect", {});
    writer.writeEndElement();
    writer.writeEndElement();
    writer.writeStartElement("xdr:spPr");
    writer.writeStartElement("a:xfrm");
    writeEmpty(writer, "a:off", {{"x", "0"}, {"y", "0"}});
    writeEmpty(writer, "a:ext", {{"cx", cx}, {"cy", cy}});
    writer.writeEndElement();
    writer.writeStartElement("a:prstGeom");
    writer.writeAttribute("prst", "rect");
    writeEmpty(writer, "a:avLst", {});
    writer.writeEndElement();
    writer.writeEndElement();
    writer.writeEndElement();
}

// One anchor, declaring its own prefixes so that it fits whatever prefixes the part uses.
void writeAnchor(QXmlStreamWriter& writer, const DrawingPicture& picture, int shapeId) {
    const QString cx = QString::number(picture.anchor.sizePx.width() * kEmuPerPixel);
    const QString cy = QString::number(picture.anchor.sizePx.height() * kEmuPerPixel);
    writer.writeStartElement("xdr:oneCellAnchor");
    writer.writeAttribute("xmlns:xdr", kSpreadsheetDrawingNamespace);
    writer.writeAttribute("xmlns:a", kDrawingMainNamespace);
    writer.writeAttribute("xmlns:r", kRelationshipsNamespace);
    writeFromCell(writer, picture.anchor);
    writeEmpty(writer, "xdr:ext", {{"cx", cx}, {"cy", cy}});
    writePictureShape(writer, picture, shapeId, cx, cy);
    writeEmpty(writer, "xdr:clientData", {});
    writer.writeEndElement();
}

}  // namespace

QByteArray emptyDrawing() {
    return QByteArray(
               "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
               "<xdr:wsDr xmlns:xdr=\"") +
           kSpreadsheetDrawingNamespace + "\" xmlns:a=\"" + kDrawingMainNamespace +
           "\"></xdr:wsDr>";
}

bool addPicturesToDrawing(QByteArray& drawingXml, const QList<DrawingPicture>& pictures) {
    int shapeId = largestShapeId(drawingXml);
    QByteArray output;
    const bool ok = appendToRoot(
        drawingXml,
        [&](XmlRewriter& rewriter) {
            for (const DrawingPicture& picture : pictures) {
                writeAnchor(rewriter.writer(), picture, ++shapeId);
            }
        },
        output);
    if (ok) {
        drawingXml = output;
    }
    return ok;
}
