#pragma once

#include <QByteArray>
#include <QString>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <functional>

// Streams an XML part into a new one token by token. Whatever the caller does not change
// comes out as it went in: element and attribute names keep their namespace prefixes
// (namespace processing is off, so "xmlns:r" is an ordinary attribute), and comments,
// whitespace and attribute order are kept. The caller looks at each token, writes its own
// elements where it wants them and copies or skips the token.
class XmlRewriter {
public:
    explicit XmlRewriter(const QByteArray& input);

    // Advances to the next token; false at the end of the input or on an error.
    bool readNext();
    const QXmlStreamReader& reader() const { return reader_; }
    QXmlStreamWriter& writer() { return writer_; }

    // Open elements including the current start element (1 for the root's own start tag).
    int depth() const { return depth_; }
    // The local name of the current element ("row" for "x:row").
    QString localName() const;
    // The root element's prefix ("" or "x"), so that added elements match its names.
    QString rootPrefix() const { return rootPrefix_; }
    // A name in the root's namespace prefix.
    QString qualified(const QString& local) const;

    void copyCurrent();
    // Writes the current start element with one attribute set to a new value (added if missing).
    void copyStartWithAttribute(const QString& name, const QString& value);
    // Drops the current element and everything inside it.
    void skipCurrentElement();

    // The rewritten part; false when the input was not well-formed XML.
    bool finish(QByteArray& output);

private:
    QXmlStreamReader reader_;
    QByteArray output_;
    QXmlStreamWriter writer_;
    int depth_ = 0;
    QString rootPrefix_;
};

// The local part of a qualified name.
QString localPart(const QString& qualifiedName);

// The prefix bound to a namespace by the "xmlns:..." attributes of an element, or "" when none
// is. A default namespace declaration does not count: it gives no prefix for attributes.
QString prefixForNamespace(const QXmlStreamAttributes& attributes, const QString& namespaceUri);

// Copies the part and writes extra children just before the root element closes. Used to
// append a relationship, a content type or a drawing anchor.
bool appendToRoot(const QByteArray& input, const std::function<void(XmlRewriter&)>& writeChildren,
                  QByteArray& output);
