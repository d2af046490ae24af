#include "xlsxworkbook.h"

#include <QBuffer>
#include <QFile>

#include "atomicfile.h"
#include "cellstyle.h"
#include "contenttypes.h"
#include "relationships.h"
#include "xmlrewriter.h"

namespace {

// The r:id of the workbook's first sheet (in tab order).
QString firstSheetRelationshipId(const QByteArray& workbookXml) {
    XmlRewriter reader(workbookXml);
    while (reader.readNext()) {
        if (reader.reader().isStartElement() && reader.depth() == 3 &&
            reader.localName() == QLatin1String("sheet")) {
            for (const QXmlStreamAttribute& attribute : reader.reader().attributes()) {
                if (attribute.qualifiedName().endsWith(QLatin1String(":id"))) {
                    return attribute.value().toString();
                }
            }
        }
    }
    return QString();
}

// "xl/media/image3.png" when images 1 and 2 are taken.
QString freePartName(const ZipPackage& package, const QString& pattern) {
    for (int number = 1;; ++number) {
        const QString name = pattern.arg(number);
        if (!package.contains(name)) {
            return name;
        }
    }
}

}  // namespace

bool XlsxWorkbook::open(const QString& path) {
    *this = XlsxWorkbook();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return fail(QStringLiteral("cannot read %1: %2").arg(path, file.errorString()));
    }
    if (!package_.read(file.readAll())) {
        return fail(QStringLiteral("%1 is not a readable workbook (zip) file").arg(path));
    }
    if (!findParts()) {
        return false;
    }
    if (!readSheetFacts(package_.part(sheetPart_), facts_)) {
        return fail(QStringLiteral("the first sheet of %1 is not well-formed").arg(path));
    }
    return true;
}

void XlsxWorkbook::setText(int row, int column, const QString& text) {
    cells_[row][column] = {CellValue::Kind::Text, text, 0.0};
}

void XlsxWorkbook::setNumber(int row, int column, double value) {
    cells_[row][column] = {CellValue::Kind::Number, QString(), value};
}

bool XlsxWorkbook::addPicture(const QImage& image, const PictureAnchor& anchor,
                              const QString& name) {
    QByteArray png;
    QBuffer buffer(&png);
    if (image.isNull() || !buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG")) {
        return fail(QStringLiteral("the picture \"%1\" cannot be encoded").arg(name));
    }
    pictures_.append({png, anchor, name});
    return true;
}

bool XlsxWorkbook::saveAs(const QString& path) {
    // The changes go into a copy, so a failed save leaves this workbook as it was.
    ZipPackage package = package_;
    QString newDrawingRelationshipId;
    if (!placePictures(package, newDrawingRelationshipId) ||
        !writeCells(package, newDrawingRelationshipId)) {
        return false;
    }
    QByteArray zip;
    if (!package.write(zip)) {
        return fail(QStringLiteral("the workbook could not be packed"));
    }
    QString writeError;
    if (!writeFileAtomically(path, zip, &writeError)) {
        return fail(writeError);
    }
    return true;
}

bool XlsxWorkbook::fail(const QString& message) {
    error_ = message;
    return false;
}

bool XlsxWorkbook::findParts() {
    const QString workbookPart =
        relatedPart(QString(), package_.part(relationshipsPartOf(QString())),
                    relationshipType::kOfficeDocument);
    const QByteArray workbookRelationships = package_.part(relationshipsPartOf(workbookPart));
    const QString sheetId = firstSheetRelationshipId(package_.part(workbookPart));
    sheetPart_ = relatedPartWithId(workbookPart, workbookRelationships, sheetId);
    stylesPart_ = relatedPart(workbookPart, workbookRelationships, relationshipType::kStyles);
    if (workbookPart.isEmpty() || !package_.contains(sheetPart_)) {
        return fail(QStringLiteral("the workbook has no first sheet"));
    }
    if (!package_.contains(stylesPart_)) {
        return fail(QStringLiteral("the workbook has no styles"));
    }
    return true;
}

bool XlsxWorkbook::placePictures(ZipPackage& package, QString& newDrawingRelationshipId) {
    if (pictures_.isEmpty()) {
        return true;
    }
    // A sheet has at most one drawing: a template's own (a logo) receives our pictures too.
    QString drawingPart = relatedPartWithId(
        sheetPart_, package.part(relationshipsPartOf(sheetPart_)), facts_.drawingRelationshipId);
    if (drawingPart.isEmpty() && !linkNewDrawing(package, drawingPart, newDrawingRelationshipId)) {
        return false;
    }
    const QString drawingRelationshipsPart = relationshipsPartOf(drawingPart);
    QByteArray drawingRelationships = package.part(drawingRelationshipsPart);
    QList<DrawingPicture> placed;
    bool linked = true;
    for (const Picture& picture : pictures_) {
        const QString media = freePartName(package, "xl/media/image%1.png");
        package.setPart(media, picture.png, ZipPackage::Compression::Store);
        const QString id = addRelationship(drawingRelationships, relationshipType::kImage,
                                           relativeTarget(drawingPart, media));
        placed.append({picture.anchor, id, picture.name});
        linked = linked && !id.isEmpty();
    }
    QByteArray drawing = package.contains(drawingPart) ? package.part(drawingPart) : emptyDrawing();
    QByteArray contentTypes = package.part(kContentTypesPart);
    if (!linked || !addPicturesToDrawing(drawing, placed) ||
        !addDefaultContentType(contentTypes, "png", kPngContentType)) {
        return fail(QStringLiteral("the sheet's drawing could not be extended"));
    }
    package.setPart(drawingPart, drawing);
    package.setPart(drawingRelationshipsPart, drawingRelationships);
    package.setPart(kContentTypesPart, contentTypes);
    return true;
}

bool XlsxWorkbook::linkNewDrawing(ZipPackage& package, QString& drawingPart,
                                  QString& relationshipId) {
    drawingPart = freePartName(package, "xl/drawings/drawing%1.xml");
    const QString sheetRelationshipsPart = relationshipsPartOf(sheetPart_);
    QByteArray sheetRelationships = package.part(sheetRelationshipsPart);
    QByteArray contentTypes = package.part(kContentTypesPart);
    relationshipId = addRelationship(sheetRelationships, relationshipType::kDrawing,
                                     relativeTarget(sheetPart_, drawingPart));
    if (relationshipId.isEmpty() ||
        !addOverrideContentType(contentTypes, drawingPart, kDrawingContentType)) {
        return fail(QStringLiteral("the sheet could not be given a drawing"));
    }
    package.setPart(sheetRelationshipsPart, sheetRelationships);
    package.setPart(kContentTypesPart, contentTypes);
    return true;
}

bool XlsxWorkbook::writeCells(ZipPackage& package, const QString& newDrawingRelationshipId) {
    if (cells_.isEmpty() && newDrawingRelationshipId.isEmpty()) {
        return true;
    }
    SheetChanges changes{cells_, 0, newDrawingRelationshipId};
    if (!cells_.isEmpty()) {
        QByteArray styles = package.part(stylesPart_);
        changes.cellFormat = centredArialFormat(styles);
        if (changes.cellFormat < 0) {
            return fail(QStringLiteral("the workbook's styles cannot take a cell format"));
        }
        package.setPart(stylesPart_, styles);
    }
    QByteArray sheet;
    if (!rewriteSheet(package.part(sheetPart_), changes, sheet)) {
        return fail(QStringLiteral("the first sheet could not be rewritten"));
    }
    package.setPart(sheetPart_, sheet);
    return true;
}
