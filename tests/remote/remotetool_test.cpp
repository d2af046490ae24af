// lumaspecter-remote against the server and the stand-in controller.

#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>

#include "remotetesting.h"

namespace {

struct ToolRun {
    int status = -1;
    QString out, err;
};

// Runs the tool while this thread goes on serving it, once the last client has gone.
ToolRun tool(QStringList arguments, const RemoteServer& server, quint16 port = 0) {
    if (port == 0) {
        spinUntil([&] { return !server.clientConnected(); });
        port = server.serverPort();
    }
    QProcess process;
    process.start(REMOTE_TOOL, arguments << "--port" << QString::number(port));
    spinUntil([&] { return process.state() == QProcess::NotRunning; }, 20000);
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

TEST_F(RemoteTest, ToolCommandsReadAndChangeTheInstrument) {
    writeTaskFile(kTwoTasks);
    EXPECT_TRUE(tool({"info"}, server).out.contains("\"deviceName\": \"Lumaspecter\""));
    EXPECT_TRUE(tool({"tasks"}, server).out.contains("\"taskName\": \"Two\""));
    writeFile(root.file("task.json"), R"({"taskId":"t3"})");
    EXPECT_EQ(tool({"put-task", root.file("task.json")}, server).status, 0);
    EXPECT_EQ(tool({"delete-task", "t1"}, server).status, 0);
    EXPECT_EQ(tool({"brightness", "40"}, server).status, 0);
    EXPECT_EQ(controller.exposure, 40);
}

TEST_F(RemoteTest, ToolFailuresExitWithStatusTwoAndSayWhy) {
    {
        TestClient first(server.serverPort());
        ASSERT_TRUE(spinUntil([&] { return server.clientConnected(); }));
        const ToolRun refused = tool({"info"}, server, server.serverPort());
        EXPECT_TRUE(refused.status == 2 && refused.err.contains("refused"))
            << qPrintable(refused.err);
    }
    const ToolRun failure = tool({"delete-task", "t9"}, server);
    EXPECT_TRUE(failure.status == 2 && failure.err.contains("answered failure"));
    QTcpServer closed;  // a port that nobody listens on any more
    closed.listen(QHostAddress::LocalHost);
    const quint16 port = closed.serverPort();
    closed.close();
    const ToolRun unreachable = tool({"info"}, server, port);
    EXPECT_TRUE(unreachable.status == 2 && unreachable.err.contains("cannot reach"))
        << qPrintable(unreachable.err);
}

TEST_F(RemoteTest, ToolMeasureWaitsForTheResultAndWritesThePictures) {
    controller.runFinished = [&] {
        finishRun(0);
        controller.state = 3;
        server.pushMeasurementResult();
    };
    QTemporaryDir out;
    const ToolRun run = tool({"measure", "--id", "C/7", "--out", out.path()}, server);
    EXPECT_EQ(run.status, 0) << qPrintable(run.err);
    EXPECT_TRUE(run.err.contains("measuring: state 6"));
    EXPECT_TRUE(run.out.contains("\"saveName\":\"C/7\",")) << qPrintable(run.out);
    EXPECT_EQ(QImage(out.filePath("C_7_origin.jpg")).size(), QSize(64, 48));
}

}  // namespace
