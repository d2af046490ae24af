#include "frameloader.h"

#include <QtEndian>
#include <algorithm>
#include <opencv2/imgcodecs.hpp>

#include "pictureheader.h"
#include "regularfile.h"

namespace {

constexpr uint16_t kMaxSample = 1023;
// Far above any frame or region file (a raw frame, or an uncompressed picture with its
// metadata), so that a huge file is refused before it is read into memory.
constexpr qint64 kMaxInputBytes = 16 * 1024 * 1024;

enum class Shape { Frame, Region };

int fail(QString& error, const QString& reason) {
    error = reason;
    return -1;
}

// Why a picture of this size and layout is not what the shape takes, or "" when it is.
QString pictureProblem(qint64 width, qint64 height, int channels, int bits, Shape shape) {
    if (channels != 1 || bits != 8) {
        return QString("not an 8-bit grayscale picture: %1 x %2-bit samples per pixel")
            .arg(channels)
            .arg(bits);
    }
    if (shape == Shape::Frame && (width != kSensorWidth || height != kSensorHeight)) {
        return QString("picture is %1 x %2, expected %3 x %4")
            .arg(width)
            .arg(height)
            .arg(kSensorWidth)
            .arg(kSensorHeight);
    }
    // Each side alone first: a header's two 32-bit sides can overflow their product.
    if (shape == Shape::Region &&
        (width > kSensorPixels || height > kSensorPixels || width * height > kSensorPixels)) {
        return QString("picture of %1 x %2 is larger than a frame").arg(width).arg(height);
    }
    return QString();
}

// The picture's header says whether decoding is worth it. A palette picture passes here with
// its one 8-bit index and is judged by what it decodes to.
QString headerProblem(const QByteArray& bytes, Shape shape) {
    PictureHeader header;
    if (!readPictureHeader(bytes, header)) {
        return "not a readable picture";
    }
    // Samples of fewer bits are widened to 8 by the decoder.
    return pictureProblem(header.width, header.height, header.channels,
                          std::max(header.bitsPerSample, 8), shape);
}

cv::Mat decode(const QByteArray& bytes) {
    try {
        const cv::Mat encoded(1, int(bytes.size()), CV_8UC1, const_cast<char*>(bytes.constData()));
        return cv::imdecode(encoded, cv::IMREAD_UNCHANGED);
    } catch (const cv::Exception&) {
        return cv::Mat();  // the decoder's own refusal: taken as an unreadable picture
    }
}

// An 8-bit grayscale picture of the shape, or an empty matrix with the reason in error.
cv::Mat readGrayPicture(const QByteArray& bytes, Shape shape, QString& error) {
    error = headerProblem(bytes, shape);
    if (!error.isEmpty()) {
        return cv::Mat();
    }
    const cv::Mat picture = decode(bytes);
    if (picture.empty()) {
        error = "not a readable picture";
        return cv::Mat();
    }
    error = pictureProblem(picture.cols, picture.rows, picture.channels(),
                           int(picture.elemSize1() * 8), shape);
    return error.isEmpty() ? picture : cv::Mat();
}

int pictureFrame(const QByteArray& bytes, std::vector<uint16_t>& frame, QString& error) {
    const cv::Mat picture = readGrayPicture(bytes, Shape::Frame, error);
    if (picture.empty()) {
        return -1;
    }
    frame.resize(size_t(kSensorWidth) * kSensorHeight);
    for (int y = 0; y < picture.rows; ++y) {
        const uint8_t* row = picture.ptr<uint8_t>(y);
        uint16_t* out = frame.data() + size_t(y) * kSensorWidth;
        for (int x = 0; x < picture.cols; ++x) {
            out[x] = uint16_t(row[x] << 2);
        }
    }
    return 1;
}

// The bits of every sample or-ed together first: one pass the compiler vectorises, and the
// sample is looked for only in a frame that has one.
int firstSampleAbove10Bits(const std::vector<uint16_t>& frame) {
    uint16_t all = 0;
    for (uint16_t sample : frame) {
        all |= sample;
    }
    if (all <= kMaxSample) {
        return -1;
    }
    return int(std::find_if(frame.begin(), frame.end(),
                            [](uint16_t sample) { return sample > kMaxSample; }) -
               frame.begin());
}

int rawFrame(const QByteArray& bytes, std::vector<uint16_t>& frame, QString& error) {
    const qint64 size = bytes.size();
    if (size < kRawFrameBytes) {
        return fail(error,
                    QString("truncated raw frame: %1 of %2 bytes").arg(size).arg(kRawFrameBytes));
    }
    if (size > kRawFrameBytes) {
        return fail(error, QString("not a raw frame or picture: %1 bytes, a raw frame has %2")
                               .arg(size)
                               .arg(kRawFrameBytes));
    }
    frame.resize(size_t(kSensorWidth) * kSensorHeight);
    qFromLittleEndian<uint16_t>(bytes.constData(), qsizetype(frame.size()), frame.data());
    const int bad = firstSampleAbove10Bits(frame);
    if (bad >= 0) {
        return fail(error, QString("not a 10-bit raw frame: sample at (%1, %2) is %3")
                               .arg(bad % kSensorWidth)
                               .arg(bad / kSensorWidth)
                               .arg(frame[size_t(bad)]));
    }
    return 1;
}

}  // namespace

int frameFromBytes(const QByteArray& bytes, std::vector<uint16_t>& frame, QString& error) {
    // Pictures are told apart by their signature, so a raw frame may have any name. No raw
    // frame begins like a picture: those first words are all above 10 bits.
    if (hasPictureSignature(bytes)) {
        return pictureFrame(bytes, frame, error);
    }
    return rawFrame(bytes, frame, error);
}

int regionFromBytes(const QByteArray& bytes, std::vector<unsigned char>& region, int& width,
                    int& height, QString& error) {
    const cv::Mat picture = readGrayPicture(bytes, Shape::Region, error);
    if (picture.empty()) {
        return -1;
    }
    width = picture.cols;
    height = picture.rows;
    region.resize(size_t(width) * height);
    for (int y = 0; y < height; ++y) {
        std::copy_n(picture.ptr<uint8_t>(y), width, region.data() + size_t(y) * width);
    }
    return 1;
}

int loadRawFrame(const QString& path, std::vector<uint16_t>& frame, QString& error) {
    QByteArray bytes;
    if (!readRegularFile(path, kMaxInputBytes, bytes, error)) {
        return -1;
    }
    return frameFromBytes(bytes, frame, error);
}

int loadGrayRegion(const QString& path, std::vector<unsigned char>& region, int& width, int& height,
                   QString& error) {
    QByteArray bytes;
    if (!readRegularFile(path, kMaxInputBytes, bytes, error)) {
        return -1;
    }
    return regionFromBytes(bytes, region, width, height, error);
}
