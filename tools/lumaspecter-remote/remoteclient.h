#pragma once

#include <QJsonObject>
#include <QString>
#include <QTcpSocket>

#include "remoteframing.h"

// One connection to the instrument's remote control, used in turn: send a request, read the
// messages that come back. Every failure leaves a message for the user in error().
class RemoteClient {
public:
    // Connects; false when the instrument cannot be reached within the time.
    bool open(const QString& host, quint16 port, int timeoutMs);
    // Sends {"RequestMethodId": method} with the request's keys.
    bool send(int method, QJsonObject request = {});
    // The next message from the instrument, waiting at most timeoutMs; false when none came
    // or the instrument closed the connection.
    bool next(QJsonObject& message, int timeoutMs);
    // Sends a request and reads up to its answer's "data" (pushed messages before it are
    // passed over); false on a failed exchange or when the answer says "failure".
    bool ask(int method, const QJsonObject& request, QJsonObject& data, int timeoutMs);

    bool connected() const { return socket_.state() == QAbstractSocket::ConnectedState; }
    const QString& error() const { return error_; }

private:
    bool lost();
    bool fail(const QString& error);

    QTcpSocket socket_;
    LineBuffer received_;
    QString where_;
    QString error_;
    bool answered_ = false;  // the instrument has answered at least once on this connection
};
