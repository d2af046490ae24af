// The connection itself: framing, one client at a time, and the bounds that keep a client that
// misbehaves from taking the instrument's memory.

#include <QRandomGenerator>

#include "remotetesting.h"

namespace {

QByteArray request(int method) {
    return frameMessage({{"RequestMethodId", method}});
}

int methodOf(const QJsonObject& answer) {
    return answer.value("method").toInt(-1);
}

TEST_F(RemoteTest, LinesEndOnlyAtCrLfAndWhatIsNotAnObjectIsDropped) {
    int traffic = 0;
    QObject::connect(&server, &RemoteServer::updateHaltSystemTimer, [&] { ++traffic; });
    TestClient client(server.serverPort());
    client.write(request(3) + request(7));  // two in one segment
    EXPECT_EQ(methodOf(client.next()), 3);
    EXPECT_EQ(methodOf(client.next()), 7);
    const QByteArray split = request(8);  // indented: bare LF inside
    for (int at = 0; at < split.size(); at += 7) {
        client.write(split.mid(at, 7));
    }
    EXPECT_EQ(methodOf(client.next()), 8);
    client.write("hello\r\n[1]\r\n{}\r\n{\"RequestMethodId\": 3\r\n\r\n" + request(10));
    EXPECT_EQ(methodOf(client.next()), 10);
    EXPECT_EQ(client.next(200), QJsonObject());
    EXPECT_GT(traffic, 4);  // the power-off timer hears of the traffic
}

TEST_F(RemoteTest, OneClientAtATimeAndANewOneAfterADropMidMessage) {
    auto dropped = std::make_unique<TestClient>(server.serverPort());
    TestClient second(server.serverPort());
    EXPECT_TRUE(second.closedByServer());
    dropped->write(request(3).left(12));
    dropped.reset();
    ASSERT_TRUE(spinUntil([&] { return !server.clientConnected(); }));
    TestClient again(server.serverPort());
    again.ask({{"RequestMethodId", 7}});
    EXPECT_EQ(methodOf(again.next()), 7);
}

TEST_F(RemoteTest, AnEndlessLineClosesTheClient) {
    TestClient endless(server.serverPort());
    endless.write(QByteArray(RemoteServer::kMaxLineBytes - 1, '{'));
    EXPECT_TRUE(endless.socket.state() == QAbstractSocket::ConnectedState);
    endless.write(QByteArray(64 * 1024, ' '));
    EXPECT_TRUE(endless.closedByServer());
}

TEST_F(RemoteTest, AClientThatNeverReadsIsDropped) {
    TestClient lazy(server.serverPort());
    lazy.socket.setReadBufferSize(1);  // it takes one byte and then nothing more
    finishRun(0);
    QImage& noise = controller.measurement.image = QImage(960, 960, QImage::Format_Grayscale8);
    for (int y = 0; y < noise.height(); ++y) {  // noise does not compress: about 1 MB a picture
        QRandomGenerator(y).fillRange(reinterpret_cast<quint32*>(noise.scanLine(y)), 240);
    }
    for (int i = 0; i < 40 && server.clientConnected(); ++i) {
        server.pushMeasurementResult();
        spinUntil([] { return false; }, 20);  // the socket hands the kernel what it takes
    }
    EXPECT_FALSE(server.clientConnected());
}

TEST_F(RemoteTest, AThousandConnectionsLeaveNoSocketBehind) {
    for (int i = 0; i < 500; ++i) {
        TestClient client(server.serverPort());
        TestClient refused(server.serverPort());
        refused.closedByServer();
        client.socket.abort();
        spinUntil([&] { return !server.clientConnected(); });
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(server.findChildren<QTcpSocket*>().isEmpty());
}

}  // namespace
