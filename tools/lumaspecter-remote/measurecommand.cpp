// measure: starts a measurement as the trigger key would, waits for the result the instrument
// pushes when the run has finished, writes its two pictures and prints the rest.

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <cstdio>

#include "commands.h"

namespace {

constexpr int kMeasureTimeoutMs = 120000;

// The states in which the instrument takes a start: a result on the screen or live view.
bool startAccepted(int state) {
    return state == 3 || state == 6 || state == 8 || state == 9;
}

void showProgress(const QString& state, qint64 ms) {
    std::fprintf(stderr, "\rmeasuring: state %s, %lld s ", qPrintable(state), ms / 1000);
    std::fflush(stderr);
}

// Decodes one picture of the result into the folder; the key is replaced by the file's path.
bool writePicture(QJsonObject& result, const QString& key, const QString& path, QString& error) {
    QFile file(path);
    const QByteArray jpeg = QByteArray::fromBase64(result.value(key).toString().toLatin1());
    if (!file.open(QIODevice::WriteOnly) || file.write(jpeg) != jpeg.size()) {
        error = path + ": " + file.errorString();
        return false;
    }
    result.remove(key);
    result[QString(key).replace("Data", "File")] = path;
    return true;
}

// The pictures are named after the connector, kept to characters every file system takes.
QString pictureBase(const QJsonObject& result) {
    QString name = result.value("saveName").toString();
    name.replace(QRegularExpression("[^A-Za-z0-9._-]"), "_");
    return name.isEmpty() || name.startsWith('.') ? "measure" : name;
}

int printResult(QJsonObject result, const QString& folder) {
    if (!QDir().mkpath(folder)) {
        return failed(folder + ": cannot create the folder");
    }
    const QString base = QDir(folder).filePath(pictureBase(result));
    QString error;
    if (!writePicture(result, "overlayImageData", base + "_overlay.jpg", error) ||
        !writePicture(result, "originImageData", base + "_origin.jpg", error)) {
        return failed(error);
    }
    std::printf("%s\n", QJsonDocument(result).toJson(QJsonDocument::Compact).constData());
    return 0;
}

QJsonObject startRequest(const MeasureOptions& options) {
    QJsonObject request{{"taskId", options.taskId}};
    if (!options.connectorId.isEmpty()) {
        request["connectorId"] = options.connectorId;
    }
    return request;
}

}  // namespace

int measure(RemoteClient& client, const MeasureOptions& options) {
    QJsonObject data;
    if (!client.ask(7, {}, data, kAnswerTimeoutMs)) {
        return failed(client.error());
    }
    QString state = data.value("state").toString();
    if (!startAccepted(state.toInt())) {
        return failed("the instrument cannot start a measurement now (state " + state + ")");
    }
    if (!client.ask(5, startRequest(options), data, kAnswerTimeoutMs)) {
        return failed(client.error());
    }
    QElapsedTimer clock;
    clock.start();
    QJsonObject message;
    while (clock.elapsed() < kMeasureTimeoutMs) {
        showProgress(state, clock.elapsed());
        if (client.next(message, 1000)) {
            const QJsonObject pushed = message.value("data").toObject();
            if (message.value("method").toInt() == 4) {
                std::fputc('\n', stderr);
                return printResult(pushed.value("Measure").toObject(), options.folder);
            }
            state = message.value("method").toInt() == 7 ? pushed.value("state").toString() : state;
        } else if (!client.connected()) {
            std::fputc('\n', stderr);
            return failed(client.error());
        }
    }
    std::fputc('\n', stderr);
    return failed("no result within 120 s");
}
