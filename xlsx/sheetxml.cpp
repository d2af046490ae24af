#include "sheetxml.h"

#include <QStringList>
#include <climits>

#include "cellref.h"
#include "relationships.h"
#include "xmlrewriter.h"

namespace {

// The sheet's children that must come after <drawing>, in the order the format fixes.
bool comesAfterDrawing(const QString& localName) {
    static const QStringList later = {"legacyDrawing",   "legacyDrawingHF", "drawingHF",
                                      "picture",         "oleObjects",      "controls",
                                      "webPublishItems", "tableParts",      "extLst"};
    return later.contains(localName);
}

// The position of a row or cell: its "r" attribute, or the one after the previous element,
// which is what a missing "r" means.
int rowNumber(const QXmlStreamAttributes& attributes, int previous) {
    int row = 0, column = 0;
    return parseCellReference(attributes.value("r").toString(), row, column) && row > 0
               ? row
               : previous + 1;
}

int columnNumber(const QXmlStreamAttributes& attributes, int previous) {
    int row = 0, column = 0;
    return parseCellReference(attributes.value("r").toString(), row, column) && column > 0
               ? column
               : previous + 1;
}

// XML 1.0 cannot carry most control characters; a stray one in a user's text would make the
// whole workbook unreadable, so it is dropped.
QString xmlSafeText(const QString& text) {
    QString safe;
    safe.reserve(text.size());
    for (const QChar c : text) {
        const bool allowedControl = c == '\t' || c == '\n' || c == '\r';
        const bool forbidden = (c.unicode() < 0x20 && !allowedControl) || c.unicode() == 0xFFFE ||
                               c.unicode() == 0xFFFF;
        if (!forbidden) {
            safe.append(c);
        }
    }
    return safe;
}

QString widenedDimension(const QString& reference, const CellEdits& cells) {
    const QStringList corners = reference.split(':');
    int top = INT_MAX, left = INT_MAX, bottom = 0, right = 0;
    for (const QString& corner : corners) {
        int row = 0, column = 0;
        if (parseCellReference(corner, row, column)) {
            top = qMin(top, row);
            left = qMin(left, column);
            bottom = qMax(bottom, row);
            right = qMax(right, column);
        }
    }
    for (auto row = cells.begin(); row != cells.end(); ++row) {
        top = qMin(top, row.key());
        bottom = qMax(bottom, row.key());
        left = qMin(left, row->firstKey());
        right = qMax(right, row->lastKey());
    }
    return cellReference(top, left) + ':' + cellReference(bottom, right);
}

class SheetRewriter {
public:
    SheetRewriter(const QByteArray& xml, const SheetChanges& changes)
        : xml_(xml), changes_(changes), pendingRows_(changes.cells) {}

    bool run(QByteArray& output) {
        while (xml_.readNext()) {
            const bool handled = xml_.reader().isStartElement() ? onStart() : onEnd();
            if (!handled) {
                xml_.copyCurrent();
            }
        }
        return xml_.finish(output) && sawSheetData_;
    }

private:
    // Each returns true when it wrote (or dropped) the current token itself.
    bool onStart() {
        const QString name = xml_.localName();
        const int depth = xml_.depth();
        if (depth == 1) {
            relationshipsPrefix_ =
                prefixForNamespace(xml_.reader().attributes(), kRelationshipsNamespace);
        } else if (depth == 2) {
            return onSheetChild(name);
        } else if (depth == 3 && inSheetData_ && name == QLatin1String("row")) {
            return onRow();
        } else if (depth == 4 && !pendingCells_.isEmpty() && name == QLatin1String("c")) {
            return onCell();
        } else if (depth == 4 && name == QLatin1String("c")) {
            lastColumn_ = columnNumber(xml_.reader().attributes(), lastColumn_);
        }
        return false;
    }

    bool onEnd() {
        if (!xml_.reader().isEndElement()) {
            return false;
        }
        const QString name = xml_.localName();
        if (xml_.depth() == 3 && inSheetData_ && name == QLatin1String("row")) {
            writeCellsBefore(INT_MAX);
        } else if (xml_.depth() == 2 && name == QLatin1String("sheetData")) {
            writeRowsBefore(INT_MAX);
            inSheetData_ = false;
        } else if (xml_.depth() == 1) {
            writeDrawingOnce();
        }
        return false;
    }

    bool onSheetChild(const QString& name) {
        if (comesAfterDrawing(name)) {
            writeDrawingOnce();
        }
        if (name == QLatin1String("dimension") && !changes_.cells.isEmpty()) {
            const QString reference = xml_.reader().attributes().value("ref").toString();
            xml_.copyStartWithAttribute("ref", widenedDimension(reference, changes_.cells));
            return true;
        }
        if (name == QLatin1String("sheetData")) {
            inSheetData_ = true;
            sawSheetData_ = true;
        }
        return false;
    }

    bool onRow() {
        currentRow_ = rowNumber(xml_.reader().attributes(), currentRow_);
        lastColumn_ = 0;
        writeRowsBefore(currentRow_);
        pendingCells_ = pendingRows_.take(currentRow_);
        if (pendingCells_.isEmpty()) {
            return false;
        }
        // "spans" is only a hint about the row's cells; it would be wrong once cells are added.
        QXmlStreamWriter& writer = xml_.writer();
        writer.writeStartElement(xml_.reader().qualifiedName().toString());
        for (const QXmlStreamAttribute& attribute : xml_.reader().attributes()) {
            if (attribute.qualifiedName() != QLatin1String("spans")) {
                writer.writeAttribute(attribute.qualifiedName().toString(),
                                      attribute.value().toString());
            }
        }
        return true;
    }

    bool onCell() {
        lastColumn_ = columnNumber(xml_.reader().attributes(), lastColumn_);
        writeCellsBefore(lastColumn_);
        if (!pendingCells_.contains(lastColumn_)) {
            return false;
        }
        writeCell(currentRow_, lastColumn_, pendingCells_.take(lastColumn_));
        xml_.skipCurrentElement();
        return true;
    }

    void writeRowsBefore(int row) {
        while (!pendingRows_.isEmpty() && pendingRows_.firstKey() < row) {
            const int number = pendingRows_.firstKey();
            const QMap<int, CellValue> cells = pendingRows_.take(number);
            QXmlStreamWriter& writer = xml_.writer();
            writer.writeStartElement(xml_.qualified("row"));
            writer.writeAttribute("r", QString::number(number));
            for (auto cell = cells.begin(); cell != cells.end(); ++cell) {
                writeCell(number, cell.key(), cell.value());
            }
            writer.writeEndElement();
        }
    }

    void writeCellsBefore(int column) {
        while (!pendingCells_.isEmpty() && pendingCells_.firstKey() < column) {
            const int number = pendingCells_.firstKey();
            writeCell(currentRow_, number, pendingCells_.take(number));
        }
    }

    void writeCell(int row, int column, const CellValue& value) {
        QXmlStreamWriter& writer = xml_.writer();
        writer.writeStartElement(xml_.qualified("c"));
        writer.writeAttribute("r", cellReference(row, column));
        writer.writeAttribute("s", QString::number(changes_.cellFormat));
        if (value.kind == CellValue::Kind::Number) {
            writer.writeTextElement(xml_.qualified("v"), QString::number(value.number, 'g', 15));
        } else {
            const QString text = xmlSafeText(value.text);
            writer.writeAttribute("t", "inlineStr");
            writer.writeStartElement(xml_.qualified("is"));
            writer.writeStartElement(xml_.qualified("t"));
            if (text != text.trimmed()) {
                writer.writeAttribute("xml:space", "preserve");
            }
            writer.writeCharacters(text);
            writer.writeEndElement();
            writer.writeEndElement();
        }
        writer.writeEndElement();
    }

    void writeDrawingOnce() {
        if (changes_.drawingRelationshipId.isEmpty() || drawingWritten_) {
            return;
        }
        drawingWritten_ = true;
        QXmlStreamWriter& writer = xml_.writer();
        writer.writeEmptyElement(xml_.qualified("drawing"));
        QString prefix = relationshipsPrefix_;
        if (prefix.isEmpty()) {
            prefix = "r";
            writer.writeAttribute("xmlns:r", kRelationshipsNamespace);
        }
        writer.writeAttribute(prefix + ":id", changes_.drawingRelationshipId);
    }

    XmlRewriter xml_;
    const SheetChanges& changes_;
    CellEdits pendingRows_;
    QMap<int, CellValue> pendingCells_;  // cells still to write into the row being copied
    QString relationshipsPrefix_;
    bool inSheetData_ = false;
    bool sawSheetData_ = false;
    bool drawingWritten_ = false;
    int currentRow_ = 0;
    int lastColumn_ = 0;
};

}  // namespace

bool readSheetFacts(const QByteArray& xml, SheetFacts& facts) {
    facts = SheetFacts();
    XmlRewriter reader(xml);
    QString section;
    int row = 0;
    while (reader.readNext()) {
        if (!reader.reader().isStartElement()) {
            continue;
        }
        const QString name = reader.localName();
        if (reader.depth() == 2) {
            section = name;
        }
        const QXmlStreamAttributes attributes = reader.reader().attributes();
        if (reader.depth() == 2 && name == QLatin1String("drawing")) {
            for (const QXmlStreamAttribute& attribute : attributes) {
                if (attribute.qualifiedName().endsWith(QLatin1String(":id"))) {
                    facts.drawingRelationshipId = attribute.value().toString();
                }
            }
        } else if (reader.depth() == 3 && section == QLatin1String("sheetData")) {
            row = rowNumber(attributes, row);
        } else if (reader.depth() == 5 && section == QLatin1String("sheetData") &&
                   (name == QLatin1String("v") || name == QLatin1String("is") ||
                    name == QLatin1String("f"))) {
            facts.lastUsedRow = qMax(facts.lastUsedRow, row);
        }
    }
    return !reader.reader().hasError();
}

bool rewriteSheet(const QByteArray& xml, const SheetChanges& changes, QByteArray& output) {
    return SheetRewriter(xml, changes).run(output);
}
