#include "cellstyle.h"

#include <QStringList>

#include "xmlrewriter.h"

namespace {

// A font is recognised by its settings ("name=Arial", "sz=11", ...), in any order.
const QString& arialSignature() {
    static const QString signature = "family=2;name=Arial;sz=11";
    return signature;
}

struct StyleLists {
    bool hasFonts = false;
    bool hasFormats = false;
    int fontCount = 0;
    int formatCount = 0;
    int arialFont = -1;
    int centredFormat = -1;
};

QString fontSignature(QStringList settings) {
    settings.sort();
    return settings.join(';');
}

bool isCentredArialFormat(const QXmlStreamAttributes& xf, const QXmlStreamAttributes& alignment,
                          int arialFont) {
    return xf.value("fontId").toInt() == arialFont && xf.value("numFmtId").toInt() == 0 &&
           xf.value("fillId").toInt() == 0 && xf.value("borderId").toInt() == 0 &&
           alignment.value("horizontal") == QLatin1String("center") &&
           alignment.value("vertical") == QLatin1String("center");
}

// One font or cell format as the scan meets it.
struct StyleEntry {
    QStringList settings;  // "name=Arial" for each child of a font
    QXmlStreamAttributes attributes;
    QXmlStreamAttributes alignment;
};

void countEntry(StyleLists& lists, const QString& list, const StyleEntry& entry) {
    if (list == QLatin1String("fonts")) {
        if (lists.arialFont < 0 && fontSignature(entry.settings) == arialSignature()) {
            lists.arialFont = lists.fontCount;
        }
        ++lists.fontCount;
    } else if (list == QLatin1String("cellXfs")) {
        if (lists.centredFormat < 0 && lists.arialFont >= 0 &&
            isCentredArialFormat(entry.attributes, entry.alignment, lists.arialFont)) {
            lists.centredFormat = lists.formatCount;
        }
        ++lists.formatCount;
    }
}

StyleLists scanStyles(const QByteArray& xml) {
    StyleLists lists;
    XmlRewriter reader(xml);
    QString list;
    StyleEntry entry;
    while (reader.readNext()) {
        const QXmlStreamReader& token = reader.reader();
        if (token.isStartElement() && reader.depth() == 2) {
            list = reader.localName();
            lists.hasFonts = lists.hasFonts || list == QLatin1String("fonts");
            lists.hasFormats = lists.hasFormats || list == QLatin1String("cellXfs");
        } else if (token.isStartElement() && reader.depth() == 3) {
            entry = {QStringList(), token.attributes(), QXmlStreamAttributes()};
        } else if (token.isStartElement() && reader.depth() == 4) {
            entry.settings << reader.localName() + '=' + token.attributes().value("val");
            if (reader.localName() == QLatin1String("alignment")) {
                entry.alignment = token.attributes();
            }
        } else if (token.isEndElement() && reader.depth() == 3) {
            countEntry(lists, list, entry);
        }
    }
    return lists;
}

void writeArialFont(QXmlStreamWriter& writer, const XmlRewriter& rewriter) {
    writer.writeStartElement(rewriter.qualified("font"));
    writer.writeEmptyElement(rewriter.qualified("sz"));
    writer.writeAttribute("val", "11");
    writer.writeEmptyElement(rewriter.qualified("name"));
    writer.writeAttribute("val", "Arial");
    writer.writeEmptyElement(rewriter.qualified("family"));
    writer.writeAttribute("val", "2");
    writer.writeEndElement();
}

void writeCentredFormat(QXmlStreamWriter& writer, const XmlRewriter& rewriter, int font) {
    writer.writeStartElement(rewriter.qualified("xf"));
    writer.writeAttribute("numFmtId", "0");
    writer.writeAttribute("fontId", QString::number(font));
    writer.writeAttribute("fillId", "0");
    writer.writeAttribute("borderId", "0");
    writer.writeAttribute("xfId", "0");
    writer.writeAttribute("applyFont", "1");
    writer.writeAttribute("applyAlignment", "1");
    writer.writeEmptyElement(rewriter.qualified("alignment"));
    writer.writeAttribute("horizontal", "center");
    writer.writeAttribute("vertical", "center");
    writer.writeEndElement();
}

// Copies the styles, appending the font (when addFont) and the format that uses font `font`.
bool appendCentredArial(QByteArray& xml, const StyleLists& lists, bool addFont, int font) {
    XmlRewriter rewriter(xml);
    while (rewriter.readNext()) {
        const QXmlStreamReader& token = rewriter.reader();
        const bool isFonts = rewriter.depth() == 2 && rewriter.localName() == "fonts";
        const bool isFormats = rewriter.depth() == 2 && rewriter.localName() == "cellXfs";
        if (token.isStartElement() && isFonts && addFont) {
            rewriter.copyStartWithAttribute("count", QString::number(lists.fontCount + 1));
        } else if (token.isStartElement() && isFormats) {
            rewriter.copyStartWithAttribute("count", QString::number(lists.formatCount + 1));
        } else {
            if (token.isEndElement() && isFonts && addFont) {
                writeArialFont(rewriter.writer(), rewriter);
            } else if (token.isEndElement() && isFormats) {
                writeCentredFormat(rewriter.writer(), rewriter, font);
            }
            rewriter.copyCurrent();
        }
    }
    return rewriter.finish(xml);
}

}  // namespace

int centredArialFormat(QByteArray& stylesXml) {
    const StyleLists lists = scanStyles(stylesXml);
    if (!lists.hasFonts || !lists.hasFormats) {
        return -1;
    }
    if (lists.centredFormat >= 0) {
        return lists.centredFormat;
    }
    const bool addFont = lists.arialFont < 0;
    const int font = addFont ? lists.fontCount : lists.arialFont;
    QByteArray edited = stylesXml;
    if (!appendCentredArial(edited, lists, addFont, font)) {
        return -1;
    }
    stylesXml = edited;
    return lists.formatCount;
}
