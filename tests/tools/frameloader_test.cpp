#include "frameloader.h"

#include <gtest/gtest.h>

#include <QDir>
#include <opencv2/imgcodecs.hpp>

#include "temproot.h"
#include "testfiles.h"

namespace {

QByteArray rawFrameBytes(uint16_t (*sampleAt)(int index)) {
    QByteArray bytes(int(kRawFrameBytes), '\0');
    for (int i = 0; i < kSensorWidth * kSensorHeight; ++i) {
        const uint16_t sample = sampleAt(i);
        bytes[2 * i] = char(sample & 0xff);
        bytes[2 * i + 1] = char(sample >> 8);
    }
    return bytes;
}

struct Load {
    int code;
    std::vector<uint16_t> frame;
    QString error;
};

Load load(const QString& path) {
    Load result;
    result.code = loadRawFrame(path, result.frame, result.error);
    return result;
}

}  // namespace

TEST(FrameLoader, RawFramesAreLittleEndianTenBitWords) {
    TempRoot root;
    ASSERT_TRUE(
        writeFile(root.file("frame.raw"), rawFrameBytes([](int i) { return uint16_t(i % 1024); })));
    const Load raw = load(root.file("frame.raw"));
    ASSERT_EQ(raw.code, 1) << raw.error.toStdString();
    ASSERT_EQ(raw.frame.size(), size_t(kSensorWidth) * kSensorHeight);
    EXPECT_EQ((std::vector<int>{raw.frame[0], raw.frame[1023], raw.frame[1024 + 258]}),
              (std::vector<int>{0, 1023, 258}));
}

TEST(FrameLoader, GrayPicturesAreWidenedToTenBits) {
    TempRoot root;
    cv::Mat picture(kSensorHeight, kSensorWidth, CV_8UC1, cv::Scalar(0));
    picture.at<uint8_t>(0, 1) = 255;
    picture.at<uint8_t>(1199, 1599) = 77;
    for (const char* name : {"frame.png", "frame.bmp", "frame.tif"}) {
        ASSERT_TRUE(cv::imwrite(root.file(name).toStdString(), picture));
        const Load gray = load(root.file(name));
        ASSERT_EQ(gray.code, 1) << name << ": " << gray.error.toStdString();
        EXPECT_EQ((std::vector<int>{gray.frame[1], gray.frame.back()}),
                  (std::vector<int>{1020, 308}))
            << name;
    }
}

// Pictures are written as PNG bytes so that the test can see that they are left as they were.
QByteArray png(const cv::Mat& picture) {
    std::vector<uchar> bytes;
    EXPECT_TRUE(cv::imencode(".png", picture, bytes));
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), int(bytes.size()));
}

TEST(FrameLoader, BadFramesAreRefusedWithTheirReasonAndLeftAsTheyWere) {
    TempRoot root;
    struct Case {
        const char* name;
        QByteArray bytes;
        const char* reason;
    };
    QByteArray above10Bits = rawFrameBytes([](int i) { return uint16_t(i == 1605 ? 1024 : 5); });
    const Case cases[] = {
        {"empty.raw", QByteArray(), "truncated raw frame: 0 of 3840000 bytes"},
        {"short.raw", QByteArray(3839999, '\1'), "truncated raw frame: 3839999 of 3840000 bytes"},
        {"long.raw", QByteArray(3840001, '\1'),
         "not a raw frame or picture: 3840001 bytes, a raw frame has 3840000"},
        {"wide.raw", above10Bits, "not a 10-bit raw frame: sample at (5, 1) is 1024"},
        {"broken.png", QByteArray("\x89PNG\r\n\x1a\n garbage", 17), "not a readable picture"},
        {"small.png", png(cv::Mat(600, 800, CV_8UC1, cv::Scalar(9))),
         "picture is 800 x 600, expected 1600 x 1200"},
        {"color.png", png(cv::Mat(1200, 1600, CV_8UC3, cv::Scalar(1, 2, 3))),
         "not an 8-bit grayscale picture: 3 x 8-bit samples per pixel"},
        {"deep.png", png(cv::Mat(1200, 1600, CV_16UC1, cv::Scalar(1000))),
         "not an 8-bit grayscale picture: 1 x 16-bit samples per pixel"},
    };
    for (const Case& c : cases) {
        ASSERT_TRUE(writeFile(root.file(c.name), c.bytes));
        const Load bad = load(root.file(c.name));
        EXPECT_EQ(bad.code, -1) << c.name;
        EXPECT_EQ(bad.error, c.reason) << c.name << ": " << bad.error.toStdString();
        EXPECT_EQ(fileContents(root.file(c.name)), c.bytes) << c.name;
    }
    EXPECT_EQ(load(root.file("nothing.raw")).error, "no such file");
    ASSERT_TRUE(QDir().mkpath(root.file("folder")));
    EXPECT_EQ(load(root.file("folder")).code, -1);
    EXPECT_EQ(load(root.file("folder")).error, "is a folder");
}
