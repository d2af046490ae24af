// The capture tool run as a person runs it: the thread's signals against the twin as JSON
// lines, its pictures as files; one autofocus as one JSON object.

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

// From 42.5 units below a focus at 9000 steps (562.5 units).
TEST(CaptureTool, RunsOneAutoFocusFromTheGivenStart) {
    TempRoot root;
    const CaptureRun run = capture({"--root", root.path(), "--autofocus", "--lens-start", "520",
                                    "--scene", "focus=9000,fps=200"});
    EXPECT_EQ(run.status, 0);
    ASSERT_EQ(run.lines.size(), 1);
    const QJsonObject result = run.lines[0];
    EXPECT_TRUE(result["focused"].toBool());
    EXPECT_EQ(result["lensStart"].toDouble(), 520.0);
    EXPECT_EQ(result["lensBest"].toDouble(), 562.5);
    EXPECT_NEAR(result["lensEnd"].toDouble(), 562.5, 13.0);  // the depth of field
    EXPECT_GT(result["samples"].toInt(), result["moves"].toInt());
    EXPECT_GT(result["ms"].toDouble(), 0.0);
    EXPECT_EQ(capture({"--autofocus", "--lens-start", "1501"}).status, 2);
}

}  // namespace
