#include "atomicfile.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>
#include <QDir>
#include <QFile>
#include <csignal>

#include "temproot.h"
#include "testfiles.h"

TEST(AtomicFile, ReplacesTheContentsAndLeavesNoTemporaryFile) {
    TempRoot root;
    const QString path = root.file("data.json");
    ASSERT_TRUE(writeFileAtomically(path, "first"));
    ASSERT_TRUE(writeFileAtomically(path, "second, longer"));
    EXPECT_EQ(fileContents(path), "second, longer");
    EXPECT_EQ(QDir(root.path()).entryList(QDir::Files), QStringList({"data.json"}));
}

TEST(AtomicFile, AFailedWriteChangesNothing) {
    TempRoot root;
    EXPECT_FALSE(writeFileAtomically(root.file("missing-folder/data.json"), "x"));
    EXPECT_FALSE(QFile::exists(root.file("missing-folder")));
    ASSERT_TRUE(QDir().mkpath(root.file("folder/inner")));
    EXPECT_FALSE(writeFileAtomically(root.file("folder"), "x"));
    EXPECT_TRUE(QDir(root.file("folder/inner")).exists());
}

TEST(AtomicFile, AWriterKilledMidWriteLeavesAWholeFile) {
    TempRoot root;
    const QString path = root.file("day.xlsx");
    const QByteArray a(4 << 20, 'a'), b(3 << 20, 'b');
    ASSERT_TRUE(writeFileAtomically(path, a));
    for (int attempt = 0; attempt < 5; ++attempt) {
        const pid_t writer = fork();
        ASSERT_GE(writer, 0);
        if (writer == 0) {
            for (;;) {
                writeFileAtomically(path, b);
                writeFileAtomically(path, a);
            }
        }
        usleep(20000 + 7000 * attempt);
        kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
        const QByteArray found = fileContents(path);
        EXPECT_TRUE(found == a || found == b) << "attempt " << attempt << ": " << found.size();
    }
}
