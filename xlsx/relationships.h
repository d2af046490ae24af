#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// Relationship parts ("_rels/x.xml.rels"): how one part of a workbook names the parts it uses.

namespace relationshipType {
constexpr const char* kOfficeDocument =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument";
constexpr const char* kStyles =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles";
constexpr const char* kDrawing =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships/drawing";
constexpr const char* kImage =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships/image";
}  // namespace relationshipType

// The namespace of "r:id" and "r:embed" attributes inside the parts.
constexpr const char* kRelationshipsNamespace =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships";

struct Relationship {
    QString id;
    QString type;
    QString target;  // as written: relative to the source part's folder, or absolute ("/xl/...")
};

QList<Relationship> readRelationships(const QByteArray& xml);

// Adds a relationship to a relationship part (an empty part starts a new one). Returns the new
// id: "rId" and a number no other id of the part uses. "" when the part is not well-formed.
QString addRelationship(QByteArray& xml, const QString& type, const QString& target);

// "xl/worksheets/_rels/sheet1.xml.rels" for "xl/worksheets/sheet1.xml"; "_rels/.rels" for "".
QString relationshipsPartOf(const QString& partName);

// The zip name a target points to, seen from the source part ("xl/worksheets/sheet1.xml" and
// "../drawings/drawing1.xml" give "xl/drawings/drawing1.xml").
QString resolveTarget(const QString& sourcePart, const QString& target);

// The target to write in the source part's relationships for a part ("../media/image1.png").
QString relativeTarget(const QString& sourcePart, const QString& targetPart);

// The zip name of the first relationship of a type from a part, "" when there is none.
QString relatedPart(const QString& sourcePart, const QByteArray& relationshipsXml,
                    const QString& type);

// The zip name of the relationship with this id, "" when there is none.
QString relatedPartWithId(const QString& sourcePart, const QByteArray& relationshipsXml,
                          const QString& id);
