// The capture tool run as a person runs it: the thread's signals against the twin as JSON
// lines, its pictures as files.

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

}  // namespace
