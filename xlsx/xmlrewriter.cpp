#include "xmlrewriter.h"

XmlRewriter::XmlRewriter(const QByteArray& input) : reader_(input), writer_(&output_) {
    reader_.setNamespaceProcessing(false);
}

bool XmlRewriter::readNext() {
    if (reader_.atEnd()) {
        return false;  // reading on would turn a finished document into an error
    }
    if (reader_.tokenType() == QXmlStreamReader::EndElement) {
        --depth_;
    }
    reader_.readNext();
    if (reader_.atEnd() || reader_.hasError()) {
        return false;
    }
    if (reader_.isStartElement()) {
        ++depth_;
        if (depth_ == 1) {
            const QString name = reader_.qualifiedName().toString();
            const int colon = name.indexOf(':');
            rootPrefix_ = colon < 0 ? QString() : name.left(colon);
        }
    }
    return true;
}

QString XmlRewriter::localName() const {
    return localPart(reader_.qualifiedName().toString());
}

QString XmlRewriter::qualified(const QString& local) const {
    return rootPrefix_.isEmpty() ? local : rootPrefix_ + ':' + local;
}

void XmlRewriter::copyCurrent() {
    switch (reader_.tokenType()) {
        case QXmlStreamReader::StartDocument:
            if (reader_.documentVersion().isEmpty()) {
                break;  // the part has no XML declaration, and gets none
            }
            if (reader_.isStandaloneDocument()) {
                writer_.writeStartDocument(reader_.documentVersion().toString(), true);
            } else {
                writer_.writeStartDocument(reader_.documentVersion().toString());
            }
            break;
        case QXmlStreamReader::StartElement:
            writer_.writeStartElement(reader_.qualifiedName().toString());
            for (const QXmlStreamAttribute& attribute : reader_.attributes()) {
                writer_.writeAttribute(attribute.qualifiedName().toString(),
                                       attribute.value().toString());
            }
            break;
        case QXmlStreamReader::EndElement:
            writer_.writeEndElement();
            break;
        case QXmlStreamReader::Characters:
            if (reader_.isCDATA()) {
                writer_.writeCDATA(reader_.text().toString());
            } else {
                writer_.writeCharacters(reader_.text().toString());
            }
            break;
        case QXmlStreamReader::Comment:
            writer_.writeComment(reader_.text().toString());
            break;
        case QXmlStreamReader::ProcessingInstruction:
            writer_.writeProcessingInstruction(reader_.processingInstructionTarget().toString(),
                                               reader_.processingInstructionData().toString());
            break;
        case QXmlStreamReader::EntityReference:
            writer_.writeEntityReference(reader_.name().toString());
            break;
        case QXmlStreamReader::DTD:
            writer_.writeDTD(reader_.text().toString());
            break;
        default:
            break;
    }
}

void XmlRewriter::copyStartWithAttribute(const QString& name, const QString& value) {
    writer_.writeStartElement(reader_.qualifiedName().toString());
    bool written = false;
    for (const QXmlStreamAttribute& attribute : reader_.attributes()) {
        const QString attributeName = attribute.qualifiedName().toString();
        const bool replaced = attributeName == name;
        writer_.writeAttribute(attributeName, replaced ? value : attribute.value().toString());
        written = written || replaced;
    }
    if (!written) {
        writer_.writeAttribute(name, value);
    }
}

void XmlRewriter::skipCurrentElement() {
    reader_.skipCurrentElement();
}

bool XmlRewriter::finish(QByteArray& output) {
    while (readNext()) {
        copyCurrent();
    }
    if (reader_.hasError()) {
        return false;
    }
    writer_.writeEndDocument();
    output = output_;
    return true;
}

QString localPart(const QString& qualifiedName) {
    return qualifiedName.mid(qualifiedName.indexOf(':') + 1);
}

QString prefixForNamespace(const QXmlStreamAttributes& attributes, const QString& namespaceUri) {
    for (const QXmlStreamAttribute& attribute : attributes) {
        const QString name = attribute.qualifiedName().toString();
        if (name.startsWith(QLatin1String("xmlns:")) && attribute.value() == namespaceUri) {
            return name.mid(6);
        }
    }
    return QString();
}

bool appendToRoot(const QByteArray& input, const std::function<void(XmlRewriter&)>& writeChildren,
                  QByteArray& output) {
    XmlRewriter xml(input);
    bool appended = false;
    while (xml.readNext()) {
        if (xml.reader().isEndElement() && xml.depth() == 1) {
            writeChildren(xml);
            appended = true;
        }
        xml.copyCurrent();
    }
    return xml.finish(output) && appended;
}
