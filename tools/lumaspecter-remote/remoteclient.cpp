#include "remoteclient.h"

#include <QElapsedTimer>

bool RemoteClient::open(const QString& host, quint16 port, int timeoutMs) {
    where_ = QString("%1:%2").arg(host).arg(port);
    socket_.connectToHost(host, port);
    if (!socket_.waitForConnected(timeoutMs)) {
        return fail(QString("cannot reach the instrument at %1: %2")
                        .arg(where_, socket_.state() == QAbstractSocket::UnconnectedState
                                         ? socket_.errorString()
                                         : "no answer in time"));
    }
    return true;
}

bool RemoteClient::send(int method, QJsonObject request) {
    request["RequestMethodId"] = method;
    socket_.write(frameMessage(request));
    if (!socket_.waitForBytesWritten(5000)) {
        return socket_.state() == QAbstractSocket::ConnectedState
                   ? fail(QString("cannot send to the instrument at %1").arg(where_))
                   : lost();
    }
    return true;
}

bool RemoteClient::next(QJsonObject& message, int timeoutMs) {
    QElapsedTimer clock;
    clock.start();
    QByteArray line;
    for (;;) {
        while (received_.takeLine(line)) {
            if (parseMessage(line, message)) {
                answered_ = true;
                return true;
            }
        }
        const qint64 left = timeoutMs - clock.elapsed();
        if (socket_.bytesAvailable() == 0 && (left <= 0 || !socket_.waitForReadyRead(int(left)))) {
            break;
        }
        received_.append(socket_.readAll());
    }
    if (socket_.state() == QAbstractSocket::ConnectedState) {
        return fail(QString("no answer from the instrument at %1 in time").arg(where_));
    }
    return lost();
}

bool RemoteClient::ask(int method, const QJsonObject& request, QJsonObject& data, int timeoutMs) {
    if (!send(method, request)) {
        return false;
    }
    QJsonObject message;
    do {
        if (!next(message, timeoutMs)) {
            return false;
        }
    } while (message.value("method").toInt(-1) != method);
    data = message.value("data").toObject();
    if (data.value("result").toString() != "success") {
        const QString desc = data.value("desc").toString();
        return fail(
            QString("the instrument answered failure%1").arg(desc.isEmpty() ? "" : ": " + desc));
    }
    return true;
}

bool RemoteClient::lost() {
    // The instrument takes one client at a time and closes any other at once.
    return fail(answered_ ? QString("the instrument at %1 closed the connection").arg(where_)
                          : QString("the instrument at %1 refused the connection (is another "
                                    "client connected?)")
                                .arg(where_));
}

bool RemoteClient::fail(const QString& error) {
    error_ = error;
    return false;
}
