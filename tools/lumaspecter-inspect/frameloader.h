#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <vector>

#include "instrumentoptics.h"

// Frame files as the tools take them: a raw frame (1600 x 1200 little-endian 16-bit words with
// 10-bit values, 3,840,000 bytes), or an 8-bit grayscale picture of 1600 x 1200 (PNG, BMP,
// TIFF) whose values are widened by << 2 so that the 10-to-8-bit conversions give them back.
// Only regular files are read, and a picture's header is checked before it is decoded: a
// picture larger than a frame, or of deeper samples, is refused without decoding it.

constexpr qint64 kRawFrameBytes = qint64(kSensorPixels) * 2;

// Reads the file into frame (resized to 1600 x 1200 samples). Returns 1, or -1 with a one-line
// reason in error (the file itself is never changed).
int loadRawFrame(const QString& path, std::vector<uint16_t>& frame, QString& error);

// Reads an 8-bit grayscale picture of up to a frame's pixels (a measurement region) into
// region. Returns 1, or -1 with a one-line reason in error.
int loadGrayRegion(const QString& path, std::vector<unsigned char>& region, int& width, int& height,
                   QString& error);

// The same from the file's bytes.
int frameFromBytes(const QByteArray& bytes, std::vector<uint16_t>& frame, QString& error);
int regionFromBytes(const QByteArray& bytes, std::vector<unsigned char>& region, int& width,
                    int& height, QString& error);
