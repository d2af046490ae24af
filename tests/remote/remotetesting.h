#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTcpSocket>
#include <functional>

#include "remoteframing.h"
#include "remoteserver.h"
#include "standincontroller.h"
#include "temproot.h"
#include "testfiles.h"

// Runs the event loop until the condition holds or the time is up; returns the condition.
inline bool spinUntil(const std::function<bool()>& condition, int timeoutMs = 5000) {
    QElapsedTimer clock;
    clock.start();
    bool holds = condition();
    while (!holds && clock.elapsed() < timeoutMs) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        holds = condition();
    }
    return holds;
}

// A client on loopback that the test drives step by step in its own thread.
struct TestClient {
    QTcpSocket socket;
    LineBuffer lines;

    explicit TestClient(quint16 port) {
        socket.connectToHost(QHostAddress::LocalHost, port);
        spinUntil([&] { return socket.state() != QAbstractSocket::ConnectingState; });
    }
    void write(const QByteArray& bytes) {
        socket.write(bytes);
        spinUntil([&] { return socket.bytesToWrite() == 0; });
    }
    void ask(const QJsonObject& request) { write(frameMessage(request)); }
    // The next message, or an empty object when none comes in time.
    QJsonObject next(int timeoutMs = 5000) {
        QByteArray line;
        QJsonObject message;
        spinUntil([&] { return lines.append(socket.readAll()), lines.takeLine(line); }, timeoutMs);
        parseMessage(line, message);
        return message;
    }
    bool closedByServer() {
        return spinUntil([&] { return socket.state() == QAbstractSocket::UnconnectedState; });
    }
};

const char kTwoTasks[] =
    R"({"taskInfo":[{"taskId":"t1","taskName":"One"},{"taskId":"t2","taskName":"Two"}]})";

// The server on a free loopback port with the stand-in controller, on a fresh platform root.
class RemoteTest : public ::testing::Test {
protected:
    RemoteTest() {
        QDir(root.path()).mkpath("etc");
        EXPECT_TRUE(server.initNetwork(QHostAddress::LocalHost, 0));
    }

    void writeTaskFile(const char* text) {
        writeFile(root.file("etc/taskinfo.conf"), text);
        controller.list.readTaskListFromJsonFile();
    }
    // A finished run of `task` with a 64 x 48 picture and one graded zone of two.
    void finishRun(int contactorType) {
        RemoteMeasurement& run = controller.measurement;
        QImage picture(64, 48, QImage::Format_Grayscale8);
        picture.fill(90);
        run = {true, true, picture.convertToFormat(QImage::Format_RGB32), picture, {}, {}, 30, 20};
        setTaskText(run.task.taskId, "t1");
        setTaskText(run.task.sections[0].sectionName, "A");
        run.task.sectionNum = 2;
        run.task.contactorType = int16_t(contactorType);
        run.results = {TaskZoneResult{1, 1, 0, 1, 3, 1, 2, 0, 0, 1, 12.5}};
    }

    TempRoot root;
    int argc = 1;
    char* argv[1] = {const_cast<char*>("test")};
    QCoreApplication app{argc, argv};
    StandInController controller;
    RemoteServer server{controller};
};
