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

// Runs the tool while this thread goes on serving it.
ToolRun tool(QStringList arguments, quint16 port) {
    QProcess process;
    process.start(REMOTE_TOOL, arguments << "--port" << QString::number(port));
    spinUntil([&] { return process.state() == QProcess::NotRunning; }, 20000);
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

TEST_F(RemoteTest, ToolCommandsReadAndChangeTheInstrument) {
    writeTaskFile(kTwoTasks);
    const quint16 port = server.serverPort();
    EXPECT_TRUE(tool({"info"}, port).out.contains("\"deviceName\": \"Lumaspecter\""));
    EXPECT_TRUE(tool({"tasks"}, port).out.contains("\"taskName\": \"Two\""));
    writeFile(root.file("task.json"), R"({"taskId":"t3"})");
    EXPECT_EQ(tool({"put-task", root.file("task.json")}, port).status, 0);
    EXPECT_EQ(tool({"delete-task", "t1"}, port).status, 0);
    EXPECT_EQ(tool({"brightness", "40"}, port).status, 0);
    EXPECT_EQ(controller.exposure, 40);
}

TEST_F(RemoteTest, ToolFailuresExitWithStatusTwoAndSayWhy) {
    const ToolRun failure = tool({"delete-task", "t9"}, server.serverPort());
    EXPECT_EQ(failure.status, 2);
    EXPECT_TRUE(failure.err.contains("answered failure")) << qPrintable(failure.err);
    TestClient first(server.serverPort());
    const ToolRun refused = tool({"info"}, server.serverPort());
    EXPECT_TRUE(refused.status == 2 && refused.err.contains("refused")) << qPrintable(refused.err);
    QTcpServer closed;  // a port that nobody listens on any more
    closed.listen(QHostAddress::LocalHost);
    const quint16 port = closed.serverPort();
    closed.close();
    const ToolRun unreachable = tool({"info"}, port);
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
    const ToolRun run = tool({"measure", "--id", "C/7", "--out", out.path()}, server.serverPort());
    EXPECT_EQ(run.status, 0) << qPrintable(run.err);
    EXPECT_TRUE(run.err.contains("measuring: state 6"));
    EXPECT_TRUE(run.out.contains("\"saveName\":\"C/7\",")) << qPrintable(run.out);
    EXPECT_EQ(QImage(out.filePath("C_7_origin.jpg")).size(), QSize(64, 48));
}

}  // namespace
