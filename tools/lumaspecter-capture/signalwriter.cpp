#include "signalwriter.h"

#include <QDir>
#include <QImage>
#include <QJsonDocument>
#include <cstdio>

#include "capturethread.h"

SignalWriter::SignalWriter(CaptureThread& t, const QString& pictureFolder)
    : folder_(pictureFolder) {
    clock_.start();
    using T = CaptureThread;
    const auto direct = Qt::DirectConnection;
    connect(
        &t, &T::captureSingleFiberFinished, this,
        [this](unsigned char* g, int w, int h, int left, int top, int x, int y, int found) {
            writeGray(
                "captureSingleFiberFinished",
                {{"left", left}, {"top", top}, {"fiberX", x}, {"fiberY", y}, {"found", found}}, g,
                w, h);
        },
        direct);
    connect(
        &t, QOverload<unsigned char*, unsigned, unsigned, int, int>::of(&T::captureFinished), this,
        [this](unsigned char* g, unsigned w, unsigned h, int x, int y) {
            writeGray("captureFinished", {{"fiberX", x}, {"fiberY", y}}, g, int(w), int(h));
        },
        direct);
    connect(
        &t, QOverload<>::of(&T::captureFinished), this,
        [this] {
            write({{"signal", "captureFinished"}});
        },
        direct);
    connect(
        &t, &T::captureMutipleFiberFinished, this,
        [this](unsigned char* g, unsigned w, unsigned h) {
            writeGray("captureMutipleFiberFinished", {}, g, int(w), int(h));
        },
        direct);
    connect(
        &t, &T::updateVideoFrameByMat, this,
        [this](cv::Mat m) {
            writePicture({{"signal", "updateVideoFrameByMat"}}, m.data, m.cols, m.rows,
                         int(m.step));
        },
        direct);
    connect(
        &t, &T::updateFullFrameByScaled, this,
        [this](unsigned char* g, unsigned w, unsigned h) {
            writeGray("updateFullFrameByScaled", {}, g, int(w), int(h));
        },
        direct);
    connect(
        &t, &T::fiberChange, this,
        [this] {
            write({{"signal", "fiberChange"}});
        },
        direct);
    connect(
        &t, &T::captureThreadExit, this,
        [this] {
            write({{"signal", "captureThreadExit"}});
        },
        direct);
    connect(
        &t, &T::udpateExposureGray, this,
        [this](int exposure, int gray) {
            write({{"signal", "udpateExposureGray"}, {"exposure", exposure}, {"gray", gray}});
        },
        direct);
    connect(
        &t, &T::updateSharpnessValue, this,
        [this](int value) {
            write({{"signal", "updateSharpnessValue"}, {"sharpness", value}});
        },
        direct);
}

void SignalWriter::write(QJsonObject line) {
    line.insert("ms", double(clock_.elapsed()));
    const QByteArray text = QJsonDocument(line).toJson(QJsonDocument::Compact);
    std::printf("%s\n", text.constData());
    std::fflush(stdout);
}

void SignalWriter::writeGray(const QString& signal, QJsonObject line, const unsigned char* gray,
                             int width, int height) {
    line.insert("signal", signal);
    writePicture(line, gray, width, height, width);
}

void SignalWriter::writePicture(QJsonObject line, const unsigned char* gray, int width, int height,
                                int stride) {
    line.insert("width", width);
    line.insert("height", height);
    if (!folder_.isEmpty()) {
        const QString name = QString("%1-%2.png")
                                 .arg(++pictures_, 6, 10, QChar('0'))
                                 .arg(line.value("signal").toString("video1"));
        const QString path = QDir(folder_).filePath(name);
        const QImage picture(gray, width, height, stride, QImage::Format_Grayscale8);
        line.insert("picture", picture.save(path) ? path : QString("(not written)"));
    }
    write(line);
}
