#include "frameloader.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>
#include <algorithm>
#include <opencv2/imgcodecs.hpp>

namespace {

constexpr uint16_t kMaxSample = 1023;

int fail(QString& error, const QString& reason) {
    error = reason;
    return -1;
}

// An 8-bit grayscale picture, or an empty matrix with the reason in error.
cv::Mat readGrayPicture(const QString& path, QString& error) {
    const cv::Mat picture = cv::imread(path.toStdString(), cv::IMREAD_UNCHANGED);
    if (picture.empty()) {
        error = "not a readable picture";
        return cv::Mat();
    }
    if (picture.depth() != CV_8U || picture.channels() != 1) {
        error = QString("not an 8-bit grayscale picture: %1 x %2-bit samples per pixel")
                    .arg(picture.channels())
                    .arg(picture.elemSize1() * 8);
        return cv::Mat();
    }
    return picture;
}

int loadPicture(const QString& path, std::vector<uint16_t>& frame, QString& error) {
    const cv::Mat picture = readGrayPicture(path, error);
    if (picture.empty()) {
        return -1;
    }
    if (picture.cols != kSensorWidth || picture.rows != kSensorHeight) {
        return fail(error, QString("picture is %1 x %2, expected %3 x %4")
                               .arg(picture.cols)
                               .arg(picture.rows)
                               .arg(kSensorWidth)
                               .arg(kSensorHeight));
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

int loadRaw(const QString& path, std::vector<uint16_t>& frame, QString& error) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return fail(error, "cannot open: " + file.errorString());
    }
    const qint64 size = file.size();
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
    if (file.read(reinterpret_cast<char*>(frame.data()), kRawFrameBytes) != kRawFrameBytes) {
        return fail(error, "read failed: " + file.errorString());
    }
    // In place: nothing to do on a little-endian host.
    qFromLittleEndian<uint16_t>(frame.data(), qsizetype(frame.size()), frame.data());
    const int bad = firstSampleAbove10Bits(frame);
    if (bad >= 0) {
        return fail(error, QString("not a 10-bit raw frame: sample at (%1, %2) is %3")
                               .arg(bad % kSensorWidth)
                               .arg(bad / kSensorWidth)
                               .arg(frame[size_t(bad)]));
    }
    return 1;
}

// Whether the path names a file that can be read, with the reason in error if not.
bool isReadableFile(const QString& path, QString& error) {
    const QFileInfo info(path);
    if (!info.exists()) {
        error = "no such file";
        return false;
    }
    if (info.isDir()) {
        error = "is a folder";
        return false;
    }
    return true;
}

}  // namespace

int loadGrayRegion(const QString& path, std::vector<unsigned char>& region, int& width, int& height,
                   QString& error) {
    if (!isReadableFile(path, error)) {
        return -1;
    }
    const cv::Mat picture = readGrayPicture(path, error);
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
    if (!isReadableFile(path, error)) {
        return -1;
    }
    // Pictures are told apart by their signature, so a raw frame may have any name.
    if (cv::haveImageReader(path.toStdString())) {
        return loadPicture(path, frame, error);
    }
    return loadRaw(path, frame, error);
}
