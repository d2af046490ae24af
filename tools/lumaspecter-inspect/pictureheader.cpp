#include "pictureheader.h"

#include <QtEndian>
#include <cstdlib>

namespace {

const QByteArray kPngSignature("\x89PNG\r\n\x1a\n", 8);

// An unsigned field of `size` bytes at `offset`, in the file's byte order; false when the bytes
// end before it.
bool field(const QByteArray& bytes, qint64 offset, int size, bool bigEndian, quint32& value) {
    if (offset < 0 || offset + size > bytes.size()) {
        return false;
    }
    const uchar* at = reinterpret_cast<const uchar*>(bytes.constData()) + offset;
    if (size == 1) {
        value = at[0];
    } else if (size == 2) {
        value = bigEndian ? qFromBigEndian<quint16>(at) : qFromLittleEndian<quint16>(at);
    } else {
        value = bigEndian ? qFromBigEndian<quint32>(at) : qFromLittleEndian<quint32>(at);
    }
    return true;
}

bool readPng(const QByteArray& bytes, PictureHeader& header) {
    quint32 width = 0, height = 0, depth = 0, colorType = 0;
    if (bytes.mid(12, 4) != "IHDR" || !field(bytes, 16, 4, true, width) ||
        !field(bytes, 20, 4, true, height) || !field(bytes, 24, 1, true, depth) ||
        !field(bytes, 25, 1, true, colorType)) {
        return false;
    }
    // Colour types 0 gray, 2 RGB, 3 palette, 4 gray and alpha, 6 RGB and alpha.
    static const int channelsOfType[] = {1, 0, 3, 1, 2, 0, 4};
    header = {width, height, colorType <= 6 ? channelsOfType[colorType] : 0, int(depth)};
    return header.channels > 0;
}

bool readBmp(const QByteArray& bytes, PictureHeader& header) {
    quint32 infoSize = 0, width = 0, height = 0, bits = 0;
    if (!field(bytes, 14, 4, false, infoSize)) {
        return false;
    }
    // The oldest header holds 16-bit sizes; every later one 32-bit sizes, the height negative
    // for pictures stored top down.
    const bool core = infoSize == 12;
    const int sizeBytes = core ? 2 : 4;
    if (!field(bytes, 18, sizeBytes, false, width) ||
        !field(bytes, 18 + sizeBytes, sizeBytes, false, height) ||
        !field(bytes, core ? 24 : 28, 2, false, bits)) {
        return false;
    }
    const qint64 rows = core ? qint64(height) : std::llabs(qint64(qint32(height)));
    const qint64 columns = core ? qint64(width) : qint64(qint32(width));
    // Up to 8 bits a pixel is an index into the palette; above it, colour channels.
    header = {columns, rows, bits <= 8 ? 1 : (bits == 32 ? 4 : 3), bits <= 8 ? int(bits) : 8};
    return columns > 0 && bits > 0;
}

// The first value of a TIFF directory entry: SHORT (type 3) or LONG. Values that fit in four
// bytes sit in the entry itself (a SHORT in the first two), longer ones where it points.
bool tiffValue(const QByteArray& bytes, qint64 entry, bool bigEndian, quint32& value) {
    quint32 type = 0, count = 0, where = 0;
    if (!field(bytes, entry + 2, 2, bigEndian, type) ||
        !field(bytes, entry + 4, 4, bigEndian, count) ||
        !field(bytes, entry + 8, 4, bigEndian, where)) {
        return false;
    }
    const int size = type == 3 ? 2 : 4;
    const qint64 at = qint64(count) * size <= 4 ? entry + 8 : qint64(where);
    return field(bytes, at, size, bigEndian, value);
}

bool readTiff(const QByteArray& bytes, PictureHeader& header) {
    const bool bigEndian = bytes.startsWith("MM");
    quint32 directory = 0, entries = 0;
    if (!field(bytes, 4, 4, bigEndian, directory) ||
        !field(bytes, directory, 2, bigEndian, entries)) {
        return false;
    }
    header = {0, 0, 1, 1};  // the defaults of a TIFF without those tags
    for (quint32 entry = 0; entry < entries; ++entry) {
        const qint64 at = qint64(directory) + 2 + qint64(entry) * 12;
        quint32 tag = 0, value = 0;
        if (!field(bytes, at, 2, bigEndian, tag)) {
            return false;
        }
        const bool wanted = tag == 256 || tag == 257 || tag == 258 || tag == 277;
        if (wanted && !tiffValue(bytes, at, bigEndian, value)) {
            return false;
        }
        if (tag == 256) {
            header.width = value;
        } else if (tag == 257) {
            header.height = value;
        } else if (tag == 258) {
            header.bitsPerSample = int(value);
        } else if (tag == 277) {
            header.channels = int(value);
        }
    }
    return header.width > 0 && header.height > 0;
}

}  // namespace

bool hasPictureSignature(const QByteArray& bytes) {
    return bytes.startsWith(kPngSignature) || bytes.startsWith("BM") ||
           bytes.startsWith(QByteArray("II*\0", 4)) || bytes.startsWith(QByteArray("MM\0*", 4));
}

bool readPictureHeader(const QByteArray& bytes, PictureHeader& header) {
    if (bytes.startsWith(kPngSignature)) {
        return readPng(bytes, header);
    }
    if (bytes.startsWith("BM")) {
        return readBmp(bytes, header);
    }
    return hasPictureSignature(bytes) && readTiff(bytes, header);
}
