#include "shellrunner.h"

#include <gtest/gtest.h>

#include <QFileInfo>

#include "boardstandins.h"
#include "temproot.h"
#include "testfiles.h"

TEST(ShellRunner, BoardCommandsWithoutStandInsAndUnknownCommandsAreRefused) {
    TempRoot root;
    EXPECT_EQ(resolveShellCommand("reboot"), QString());
    EXPECT_EQ(runShellCommand("reboot"), -1);
    EXPECT_EQ(runShellCommand("/usr/local/bin/red_led_on"), -1);
    ASSERT_TRUE(installBoardStandIns());
    // Anything unknown is taken for a board command, which has no stand-in.
    EXPECT_EQ(runShellCommand("halt"), -1);
    EXPECT_EQ(runShellCommand("rm", {"-rf", root.path()}), -1);
    EXPECT_TRUE(QFileInfo(root.path()).isDir());
}

TEST(ShellRunner, BoardCommandsRunTheirStandInsWhichRecordTheCall) {
    TempRoot root;
    ASSERT_TRUE(installBoardStandIns());
    ASSERT_TRUE(installBoardStandIns()) << "installing twice must work too";
    EXPECT_EQ(resolveShellCommand("reboot"), root.path() + "/usr/local/bin/reboot");
    EXPECT_EQ(runShellCommand("red_led_on"), 0);
    EXPECT_EQ(runShellCommand("lcdbrightness", {"40"}), 0);
    EXPECT_EQ(runShellCommand("reboot"), 0);
    EXPECT_EQ(fileContents(boardCommandLogPath()), "red_led_on\nlcdbrightness 40\nreboot\n");
}

TEST(ShellRunner, HarmlessCommandsRunOnTheHostAndReportTheirStatus) {
    TempRoot root;
    EXPECT_EQ(runShellCommand("sync"), 0);
    ASSERT_TRUE(writeFile(root.file("a.txt"), "data"));
    EXPECT_EQ(runShellCommand("cp", {root.file("a.txt"), root.file("b.txt")}), 0);
    EXPECT_EQ(fileContents(root.file("b.txt")), "data");
    EXPECT_NE(runShellCommand("cp", {root.file("missing.txt"), root.file("c.txt")}), 0);
}
