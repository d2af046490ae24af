#include "remoteserver.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <cstdio>

RemoteServer::RemoteServer(RemoteController& controller, QObject* parent)
    : QObject(parent), server_(new QTcpServer(this)), methods_(controller) {
    connect(server_, &QTcpServer::newConnection, this, &RemoteServer::onNewConnection);
    connect(this, &RemoteServer::networkMessage, this, &RemoteServer::onNetworkMessage,
            Qt::QueuedConnection);
}

bool RemoteServer::initNetwork(const QHostAddress& address, quint16 port) {
    server_->setMaxPendingConnections(1);
    return server_->listen(address, port);
}

quint16 RemoteServer::serverPort() const {
    return server_->serverPort();
}

bool RemoteServer::clientConnected() const {
    return client_ && client_->state() == QAbstractSocket::ConnectedState;
}

void RemoteServer::onNewConnection() {
    emit updateHaltSystemTimer();
    while (QTcpSocket* socket = server_->nextPendingConnection()) {
        if (client_) {
            // One client at a time: a second one is closed on arrival. It is deleted too, or
            // every refused connection would leave a socket behind.
            socket->abort();
            socket->deleteLater();
            continue;
        }
        client_ = socket;
        connect(socket, &QTcpSocket::readyRead, this, &RemoteServer::onReceiveData);
        connect(socket, &QTcpSocket::stateChanged, this, &RemoteServer::onTcpSockStateChange);
    }
}

void RemoteServer::onTcpSockStateChange(QAbstractSocket::SocketState state) {
    emit updateHaltSystemTimer();
    if (state != QAbstractSocket::UnconnectedState || !client_ || sender() != client_) {
        return;
    }
    QTcpSocket* socket = client_;
    client_ = nullptr;
    received_.clear();
    socket->disconnect(this);
    socket->close();
    // Forgetting the socket is not enough: it is the server's child and would live, with its
    // buffers, as long as the program does.
    socket->deleteLater();
}

void RemoteServer::onReceiveData() {
    emit updateHaltSystemTimer();
    if (!client_) {
        return;
    }
    received_.append(client_->readAll());
    QByteArray line;
    while (received_.takeLine(line)) {
        QJsonObject request;
        if (parseMessage(line, request)) {
            emit networkMessage(request, kFromClient);
        }
    }
    // Without a bound, a client that never ends its line would take the instrument's memory.
    if (received_.size() > kMaxLineBytes) {
        dropClient("sent 4 MiB without a line end");
    }
}

int RemoteServer::sendData(const QJsonObject& message) {
    if (!clientConnected()) {
        return -1;
    }
    const QByteArray bytes = frameMessage(message);
    const qint64 written = client_->write(bytes);
    // The socket keeps what the network has not taken yet; a client that never reads would
    // make that grow without end, so such a client is let go.
    if (client_ && client_->bytesToWrite() > kMaxUnsentBytes) {
        dropClient("left 16 MiB of answers unread");
        return -1;
    }
    return written == bytes.size() ? 0 : -1;
}

void RemoteServer::onNetworkMessage(QJsonObject request, int origin) {
    emit updateHaltSystemTimer();
    if (!clientConnected()) {
        return;
    }
    const int method = requestMethodId(request);
    const QJsonObject data = methods_.run(method, request, origin);
    sendData({{"method", method}, {"data", data}});
}

void RemoteServer::pushMeasurementResult() {
    push(7);
    push(4);
}

void RemoteServer::pushLiveViewRestarted() {
    push(7);
    push(9);
}

void RemoteServer::push(int method) {
    onNetworkMessage({{"RequestMethodId", method}}, kRaisedLocally);
}

void RemoteServer::dropClient(const char* reason) {
    const QString peer = client_->peerAddress().toString();
    std::fprintf(stderr, "remote: client %s %s: connection closed\n", qPrintable(peer), reason);
    client_->abort();
}
