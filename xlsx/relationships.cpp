#include "relationships.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include "xmlrewriter.h"

namespace {

constexpr const char* kEmptyRelationships =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    "<Relationships "
    "xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\"></Relationships>";

QString folderOf(const QString& partName) {
    const int slash = partName.lastIndexOf('/');
    return slash < 0 ? QString() : partName.left(slash);
}

QString freeId(const QList<Relationship>& relationships) {
    QSet<QString> taken;
    for (const Relationship& relationship : relationships) {
        taken.insert(relationship.id);
    }
    for (int number = relationships.size() + 1;; ++number) {
        const QString id = QStringLiteral("rId%1").arg(number);
        if (!taken.contains(id)) {
            return id;
        }
    }
}

}  // namespace

QList<Relationship> readRelationships(const QByteArray& xml) {
    QList<Relationship> relationships;
    XmlRewriter reader(xml);
    while (reader.readNext()) {
        if (reader.reader().isStartElement() && reader.depth() == 2 &&
            reader.localName() == QLatin1String("Relationship")) {
            const QXmlStreamAttributes attributes = reader.reader().attributes();
            relationships.append({attributes.value("Id").toString(),
                                  attributes.value("Type").toString(),
                                  attributes.value("Target").toString()});
        }
    }
    return relationships;
}

QString addRelationship(QByteArray& xml, const QString& type, const QString& target) {
    const QByteArray input = xml.isEmpty() ? QByteArray(kEmptyRelationships) : xml;
    const QString id = freeId(readRelationships(input));
    QByteArray output;
    const bool ok = appendToRoot(
        input,
        [&](XmlRewriter& rewriter) {
            QXmlStreamWriter& writer = rewriter.writer();
            writer.writeEmptyElement(rewriter.qualified("Relationship"));
            writer.writeAttribute("Id", id);
            writer.writeAttribute("Type", type);
            writer.writeAttribute("Target", target);
        },
        output);
    if (!ok) {
        return QString();
    }
    xml = output;
    return id;
}

QString relationshipsPartOf(const QString& partName) {
    const QString folder = folderOf(partName);
    const QString file = QFileInfo(partName).fileName();
    return (folder.isEmpty() ? QString() : folder + '/') + "_rels/" + file + ".rels";
}

QString resolveTarget(const QString& sourcePart, const QString& target) {
    if (target.startsWith('/')) {
        return QDir::cleanPath(target).mid(1);
    }
    return QDir::cleanPath("/" + folderOf(sourcePart) + "/" + target).mid(1);
}

QString relativeTarget(const QString& sourcePart, const QString& targetPart) {
    return QDir("/" + folderOf(sourcePart)).relativeFilePath("/" + targetPart);
}

QString relatedPart(const QString& sourcePart, const QByteArray& relationshipsXml,
                    const QString& type) {
    for (const Relationship& relationship : readRelationships(relationshipsXml)) {
        if (relationship.type == type) {
            return resolveTarget(sourcePart, relationship.target);
        }
    }
    return QString();
}

QString relatedPartWithId(const QString& sourcePart, const QByteArray& relationshipsXml,
                          const QString& id) {
    for (const Relationship& relationship : readRelationships(relationshipsXml)) {
        if (relationship.id == id) {
            return resolveTarget(sourcePart, relationship.target);
        }
    }
    return QString();
}
