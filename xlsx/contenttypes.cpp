#include "contenttypes.h"

#include "xmlrewriter.h"

namespace {

// Whether a "Default" or "Override" entry already names the key. Extensions are compared
// without regard to case, as the package format says.
bool hasEntry(const QByteArray& xml, const QString& element, const QString& attribute,
              const QString& key) {
    XmlRewriter reader(xml);
    while (reader.readNext()) {
        if (reader.reader().isStartElement() && reader.depth() == 2 &&
            reader.localName() == element &&
            reader.reader().attributes().value(attribute).compare(key, Qt::CaseInsensitive) == 0) {
            return true;
        }
    }
    return false;
}

bool addEntry(QByteArray& xml, const QString& element, const QString& attribute, const QString& key,
              const QString& type) {
    if (hasEntry(xml, element, attribute, key)) {
        return true;
    }
    QByteArray output;
    const bool ok = appendToRoot(
        xml,
        [&](XmlRewriter& rewriter) {
            QXmlStreamWriter& writer = rewriter.writer();
            writer.writeEmptyElement(rewriter.qualified(element));
            writer.writeAttribute(attribute, key);
            writer.writeAttribute("ContentType", type);
        },
        output);
    if (ok) {
        xml = output;
    }
    return ok;
}

}  // namespace

bool addDefaultContentType(QByteArray& xml, const QString& extension, const QString& type) {
    return addEntry(xml, "Default", "Extension", extension, type);
}

bool addOverrideContentType(QByteArray& xml, const QString& partName, const QString& type) {
    return addEntry(xml, "Override", "PartName", "/" + partName, type);
}
