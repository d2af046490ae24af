#include "zippackage.h"

#include <quazip.h>
#include <quazipfile.h>
#include <quazipfileinfo.h>
#include <quazipnewinfo.h>
#include <QBuffer>
#include <QDateTime>

namespace {

// Reads the zip's current entry twice: once as stored, to copy it back unchanged, and once
// uncompressed, which also verifies its checksum.
bool readCurrentEntry(QuaZip& zip, QByteArray& compressed, int& method, int& level,
                      QByteArray& content) {
    QuaZipFile raw(&zip);
    if (!raw.open(QIODevice::ReadOnly, &method, &level, true)) {
        return false;
    }
    compressed = raw.readAll();
    raw.close();
    QuaZipFile plain(&zip);
    if (!plain.open(QIODevice::ReadOnly)) {
        return false;
    }
    content = plain.readAll();
    plain.close();
    return raw.getZipError() == UNZ_OK && plain.getZipError() == UNZ_OK;
}

}  // namespace

QuaZipNewInfo ZipPackage::unchangedEntryInfo(const Part& part) {
    QuaZipNewInfo info(part.name);
    info.dateTime = part.dateTime;
    info.internalAttr = part.internalAttributes;
    info.externalAttr = part.externalAttributes;
    info.extraLocal = part.extra;
    info.extraGlobal = part.extra;
    info.comment = part.comment;
    info.uncompressedSize = part.uncompressedSize;
    return info;
}

bool ZipPackage::read(const QByteArray& zipBytes) {
    parts_.clear();
    QBuffer buffer;
    buffer.setData(zipBytes);
    QuaZip zip(&buffer);
    if (!zip.open(QuaZip::mdUnzip)) {
        return false;
    }
    for (bool more = zip.goToFirstFile(); more; more = zip.goToNextFile()) {
        Part part;
        QuaZipFileInfo64 info;
        if (!zip.getCurrentFileInfo(&info) ||
            !readCurrentEntry(zip, part.compressed, part.method, part.level, part.content)) {
            parts_.clear();
            return false;
        }
        part.name = info.name;
        part.dateTime = info.dateTime;
        part.crc = info.crc;
        part.uncompressedSize = info.uncompressedSize;
        part.internalAttributes = info.internalAttr;
        part.externalAttributes = info.externalAttr;
        part.extra = info.extra;
        part.comment = info.comment;
        parts_.append(part);
    }
    const bool ok = zip.getZipError() == UNZ_OK && !parts_.isEmpty();
    if (!ok) {
        parts_.clear();
    }
    return ok;
}

QByteArray ZipPackage::part(const QString& name) const {
    const int index = indexOf(name);
    return index < 0 ? QByteArray() : parts_[index].content;
}

void ZipPackage::setPart(const QString& name, const QByteArray& bytes, Compression compression) {
    int index = indexOf(name);
    if (index < 0) {
        Part fresh;
        fresh.name = name;
        parts_.append(fresh);
        index = parts_.size() - 1;
    }
    Part& part = parts_[index];
    part.content = bytes;
    part.compressed.clear();
    part.method = compression == Compression::Deflate ? Z_DEFLATED : 0;
    part.level = Z_DEFAULT_COMPRESSION;
    part.replaced = true;
}

bool ZipPackage::write(QByteArray& zipBytes) const {
    zipBytes.clear();
    QBuffer buffer(&zipBytes);
    QuaZip zip(&buffer);
    if (!zip.open(QuaZip::mdCreate)) {
        return false;
    }
    for (const Part& part : parts_) {
        QuaZipFile file(&zip);
        bool opened = false;
        if (part.replaced) {
            QuaZipNewInfo info(part.name);
            info.dateTime = QDateTime::currentDateTime();
            opened = file.open(QIODevice::WriteOnly, info, nullptr, 0, part.method, part.level);
        } else {
            opened = file.open(QIODevice::WriteOnly, unchangedEntryInfo(part), nullptr, part.crc,
                               part.method, part.level, true);
        }
        const QByteArray& bytes = part.replaced ? part.content : part.compressed;
        if (!opened || file.write(bytes) != bytes.size()) {
            return false;
        }
        file.close();
        if (file.getZipError() != ZIP_OK) {
            return false;
        }
    }
    zip.close();
    return zip.getZipError() == ZIP_OK;
}

int ZipPackage::indexOf(const QString& name) const {
    for (int i = 0; i < parts_.size(); ++i) {
        if (parts_[i].name == name) {
            return i;
        }
    }
    return -1;
}
