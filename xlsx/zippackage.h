#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QVector>

class QuaZipNewInfo;

// The parts (entries) of a zip file, kept in archive order. A part that is not replaced is
// written back with its compressed bytes exactly as they were read, so everything we do not
// edit in a workbook survives untouched, whichever program wrote it.
class ZipPackage {
public:
    enum class Compression { Deflate, Store };

    // Reads every part; false when the bytes are not a readable zip (a part fails its checksum).
    bool read(const QByteArray& zipBytes);

    bool contains(const QString& name) const { return indexOf(name) >= 0; }
    // The uncompressed bytes of a part; empty when there is no such part.
    QByteArray part(const QString& name) const;
    // Replaces a part or appends a new one at the end of the archive.
    void setPart(const QString& name, const QByteArray& bytes,
                 Compression compression = Compression::Deflate);

    // The whole archive; false when the zip library reports an error.
    bool write(QByteArray& zipBytes) const;

private:
    // An entry as the archive describes it, so that it can be written back the same.
    struct Part {
        QString name;
        QDateTime dateTime;
        quint32 crc = 0;
        quint64 uncompressedSize = 0;
        quint16 internalAttributes = 0;
        quint32 externalAttributes = 0;
        QByteArray extra;
        QString comment;
        QByteArray compressed;  // as read, for parts written back unchanged
        int method = 0;
        int level = 0;
        QByteArray content;
        bool replaced = false;
    };

    int indexOf(const QString& name) const;
    static QuaZipNewInfo unchangedEntryInfo(const Part& part);

    QVector<Part> parts_;
};
