#include "commands.h"

#include <QFile>
#include <QJsonDocument>
#include <cstdio>

namespace {

void print(const QJsonObject& object, QJsonDocument::JsonFormat format) {
    std::fputs(QJsonDocument(object).toJson(format).constData(), stdout);
    if (format == QJsonDocument::Compact) {
        std::fputc('\n', stdout);
    }
    std::fflush(stdout);
}

int ask(RemoteClient& client, int method, const QJsonObject& request, QJsonObject& data) {
    return client.ask(method, request, data, kAnswerTimeoutMs) ? 0 : failed(client.error());
}

}  // namespace

int failed(const QString& message) {
    std::fprintf(stderr, "lumaspecter-remote: %s\n", qPrintable(message));
    return 2;
}

int showDeviceInfo(RemoteClient& client) {
    QJsonObject data;
    const int status = ask(client, 3, {}, data);
    if (status == 0) {
        print(data.value("DeviceInfo").toObject(), QJsonDocument::Indented);
    }
    return status;
}

int showState(RemoteClient& client) {
    QJsonObject data;
    const int status = ask(client, 7, {}, data);
    if (status == 0) {
        std::printf("%s\n", qPrintable(data.value("state").toString()));
    }
    return status;
}

int showTasks(RemoteClient& client) {
    QJsonObject data;
    const int status = ask(client, 2, {}, data);
    if (status == 0) {
        data.remove("result");
        data.remove("desc");
        print(data, QJsonDocument::Indented);
    }
    return status;
}

int putTask(RemoteClient& client, const QString& file) {
    QFile input(file);
    if (!input.open(QIODevice::ReadOnly)) {
        return failed(file + ": " + input.errorString());
    }
    const QJsonDocument document = QJsonDocument::fromJson(input.readAll());
    if (!document.isObject() || document.object().isEmpty()) {
        return failed(file + ": not a task object in JSON");
    }
    QJsonObject data;
    return ask(client, 1, document.object(), data);
}

int deleteTask(RemoteClient& client, const QString& taskId) {
    QJsonObject data;
    return ask(client, 10, {{"taskId", taskId}}, data);
}

int setBrightness(RemoteClient& client, int value) {
    if (value < 11 || value > 199) {
        std::fprintf(stderr,
                     "lumaspecter-remote: the instrument ignores values outside 11 to "
                     "199\n");
    }
    QJsonObject data;
    return ask(client, 6, {{"type", "Brightness"}, {"value", value}}, data);
}

int watchMessages(RemoteClient& client) {
    QJsonObject message;
    for (;;) {
        if (client.next(message, 60000)) {
            print(message, QJsonDocument::Compact);
        } else if (!client.connected()) {
            return failed(client.error());
        }
    }
}
