#pragma once

#include <QAbstractSocket>
#include <QHostAddress>
#include <QJsonObject>
#include <QObject>
#include <QPointer>

#include "remotecontroller.h"
#include "remoteframing.h"
#include "remotemethods.h"

class QTcpServer;
class QTcpSocket;

// The remote control server: one client at a time on TCP port 6667, JSON objects ending in
// CR LF in both directions. Requests from the client and the controller's own reports go
// through one handler, onNetworkMessage, and are answered {"method", "data"}.
class RemoteServer : public QObject {
    Q_OBJECT

public:
    static constexpr quint16 kPort = 6667;
    // A client that sends this much without a line end is not speaking the protocol.
    static constexpr int kMaxLineBytes = 4 * 1024 * 1024;
    // A client that leaves this much of our answers unread has stopped reading.
    static constexpr qint64 kMaxUnsentBytes = 16 * 1024 * 1024;

    explicit RemoteServer(RemoteController& controller, QObject* parent = nullptr);

    // Starts listening; false when the address or port cannot be taken.
    bool initNetwork(const QHostAddress& address = QHostAddress::Any, quint16 port = kPort);
    quint16 serverPort() const;
    bool clientConnected() const;

    // Writes one message to the client: 0 when all of it was taken, -1 without a client.
    int sendData(const QJsonObject& message);

    // The reports the controller raises itself: after a measurement (the state, then the
    // result), and when live view was restarted (the state, then what is being saved).
    void pushMeasurementResult();
    void pushLiveViewRestarted();

public slots:
    void onNetworkMessage(QJsonObject request, int origin);

signals:
    void networkMessage(QJsonObject request, int origin);
    // Traffic keeps the instrument awake: the controller restarts its power-off timer.
    void updateHaltSystemTimer();

private slots:
    void onNewConnection();
    void onTcpSockStateChange(QAbstractSocket::SocketState state);
    void onReceiveData();

private:
    void push(int method);
    void dropClient(const char* reason);

    QTcpServer* server_;
    QPointer<QTcpSocket> client_;
    LineBuffer received_;
    RemoteMethods methods_;
};
