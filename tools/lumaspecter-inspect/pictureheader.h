#pragma once

#include <QByteArray>

// What a picture file says of itself before any pixel is decoded, so that a file whose few
// bytes claim 65535 x 65535 pixels is refused before the decoder reserves memory for them.
// The tools take PNG, BMP and TIFF pictures.
struct PictureHeader {
    qint64 width = 0;
    qint64 height = 0;
    int channels = 0;       // samples per pixel; a palette picture has one (its index)
    int bitsPerSample = 0;  // of each sample
};

// Whether the bytes begin like a PNG, BMP or TIFF file.
bool hasPictureSignature(const QByteArray& bytes);

// Reads the size and sample layout from the start of a PNG, BMP or TIFF file (for TIFF, its
// first image). False when the bytes are none of these or the header is cut short.
bool readPictureHeader(const QByteArray& bytes, PictureHeader& header);
