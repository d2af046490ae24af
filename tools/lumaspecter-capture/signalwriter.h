#pragma once

#include <QElapsedTimer>
#include <QJsonObject>
#include <QObject>
#include <QString>
#include <opencv2/core/mat.hpp>

class CaptureThread;

// Writes every signal of a capture thread as one JSON line on stdout, and the pictures it hands
// out as PNG files in a folder (when one is given). It is connected directly, so it runs in the
// capture thread while the signal's buffer is still the one handed out.
class SignalWriter : public QObject {
    Q_OBJECT

public:
    SignalWriter(CaptureThread& thread, const QString& pictureFolder);

    // A line for something that is not a signal (the video output's last picture), with its
    // 8-bit picture of width x height pixels, `stride` bytes a row.
    void writePicture(QJsonObject line, const unsigned char* gray, int width, int height,
                      int stride);

private:
    void write(QJsonObject line);
    void writeGray(const QString& signal, QJsonObject line, const unsigned char* gray, int width,
                   int height);

    QString folder_;
    QElapsedTimer clock_;
    int pictures_ = 0;
};
