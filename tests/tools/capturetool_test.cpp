// The capture tool run as a person runs it: the thread's signals against the twin as JSON
// lines, its pictures as files; one autofocus as one JSON object.

#include <gtest/gtest.h>

#include <QFileInfo>

#include "temproot.h"
#include "toolrun.h"

namespace {

TEST(CaptureTool, WritesEachSignalAndItsPicture) {
    TempRoot root;
    const ToolRun run = runProgram(CAPTURE_TOOL, {"--root", root.path(), "--mode", "1", "--scene",
                                                  "x=1200,y=800", "--out", root.file("out")});
    EXPECT_EQ(run.status, 0);
    ASSERT_EQ(run.lines.size(), 2);
    const QJsonObject crop = run.lines[0];
    EXPECT_EQ(
        pick(crop, {"signal", "left", "top", "found"}),
        QJsonObject(
            {{"signal", "captureSingleFiberFinished"}, {"left", 639}, {"top", 239}, {"found", 1}}));
    EXPECT_EQ(QFileInfo(crop["picture"].toString()).size() > 0, true);
    EXPECT_EQ(run.lines[1]["signal"].toString(), "captureThreadExit");
}

// From 42.5 units below a focus at 9000 steps (562.5 units).
TEST(CaptureTool, RunsOneAutoFocusFromTheGivenStart) {
    TempRoot root;
    const ToolRun run =
        runProgram(CAPTURE_TOOL, {"--root", root.path(), "--autofocus", "--lens-start", "520",
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
    EXPECT_EQ(runProgram(CAPTURE_TOOL, {"--autofocus", "--lens-start", "1501"}).status, 2);
}

}  // namespace
