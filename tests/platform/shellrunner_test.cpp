#include "shellrunner.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>

#include "boardstandins.h"
#include "temproot.h"

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
    QFile log(boardCommandLogPath());
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    EXPECT_EQ(log.readAll(), "red_led_on\nlcdbrightness 40\nreboot\n");
}

TEST(ShellRunner, HarmlessCommandsRunOnTheHostAndReportTheirStatus) {
    TempRoot root;
    EXPECT_EQ(runShellCommand("sync"), 0);
    QFile source(root.file("a.txt"));
    ASSERT_TRUE(source.open(QIODevice::WriteOnly));
    source.write("data");
    source.close();
    EXPECT_EQ(runShellCommand("cp", {root.file("a.txt"), root.file("b.txt")}), 0);
    EXPECT_TRUE(QFileInfo(root.file("b.txt")).isFile());
    EXPECT_NE(runShellCommand("cp", {root.file("missing.txt"), root.file("c.txt")}), 0);
}
