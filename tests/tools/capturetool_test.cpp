// The capture tool run as a person runs it: the thread's signals against the twin as JSON
// lines, its pictures as files.

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include "temproot.h"

namespace {

struct CaptureRun {
    int status;
    QList<QJsonObject> lines;
};

CaptureRun capture(const QStringList& arguments) {
    QProcess tool;
    tool.start(CAPTURE_TOOL, arguments);
    tool.waitForFinished(60000);
    CaptureRun run{tool.exitStatus() == QProcess::NormalExit ? tool.exitCode() : -1, {}};
    for (const QByteArray& line : tool.readAllStandardOutput().split('\n')) {
        if (!line.isEmpty()) {
            run.lines.append(QJsonDocument::fromJson(line).object());
        }
    }
    return run;
}

TEST(CaptureTool, WritesEachSignalAndItsPicture) {
    TempRoot root;
    const CaptureRun run = capture({"--root", root.path(), "--mode", "1", "--scene", "x=1200,y=800",
                                    "--out", root.file("out")});
    EXPECT_EQ(run.status, 0);
    ASSERT_EQ(run.lines.size(), 2);
    const QJsonObject crop = run.lines[0];
    EXPECT_EQ(crop["signal"].toString(), "captureSingleFiberFinished");
    EXPECT_EQ(crop["left"].toInt(), 639);
    EXPECT_EQ(crop["top"].toInt(), 239);
    EXPECT_EQ(crop["found"].toInt(), 1);
    EXPECT_EQ(QFileInfo(crop["picture"].toString()).size() > 0, true);
    EXPECT_EQ(run.lines[1]["signal"].toString(), "captureThreadExit");
}

}  // namespace
