// Commands are started by absolute path: a PATH set by whoever started the program cannot put
// another "sync" or "cp" in their place.

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "boardstandins.h"
#include "shellrunner.h"
#include "temproot.h"
#include "testfiles.h"

TEST(ShellPath, CommandsAreStartedByAbsolutePathWhateverPathSays) {
    TempRoot root;
    ASSERT_TRUE(installBoardStandIns());
    ASSERT_TRUE(QDir().mkpath(root.file("impostors")));
    const QByteArray previousPath = qgetenv("PATH");
    qputenv("PATH", root.file("impostors").toLocal8Bit());
    for (const QString command : {"sync", "cp", "red_led_on"}) {
        const QString impostor = root.file("impostors/" + command);
        ASSERT_TRUE(writeFile(impostor, "#!/bin/sh\necho ran > \"$0.ran\"\n"));
        QFile(impostor).setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        const QString resolved = resolveShellCommand(command);
        EXPECT_TRUE(QFileInfo(resolved).isAbsolute()) << resolved.toStdString();
        EXPECT_TRUE(QFileInfo(resolved).isExecutable()) << resolved.toStdString();
        runShellCommand(command, {root.file("a"), root.file("b")});
        EXPECT_FALSE(QFileInfo::exists(impostor + ".ran")) << command.toStdString();
    }
    qputenv("PATH", previousPath);
}
