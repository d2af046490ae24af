#include "settingsstore.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <QDir>

#include "readonlyfolder.h"
#include "taskjson.h"
#include "tasklist.h"
#include "temproot.h"
#include "testfiles.h"

namespace {

ino_t inodeOf(const QString& path) {
    struct stat info {};
    return ::stat(path.toLocal8Bit().constData(), &info) == 0 ? info.st_ino : 0;
}

class SettingsFile : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(QDir().mkpath(root_.file("etc"))); }
    TempRoot root_;
};

}  // namespace

TEST_F(SettingsFile, FactoryRestorePutsBothFactoryFilesBack) {
    SettingsStore store;
    ASSERT_TRUE(store.setValue(SettingsStore::kOperator, "Night shift"));
    ASSERT_TRUE(store.setValue(SettingsStore::kShutdownTime, 0));
    ASSERT_TRUE(writeFile(taskFilePath(), "{}"));

    ASSERT_TRUE(store.restoreFactorySettings());
    EXPECT_EQ(fileContents(taskFilePath()), fileContents(":/conf/taskinfo.conf"));
    TaskList restored;
    ASSERT_EQ(restored.readTaskListFromJsonFile(), 0);
    ASSERT_FALSE(restored.tasks().isEmpty());
    // The store in use and a fresh reader of the file agree; the last task is the first built-in.
    const SettingsStore fresh;
    for (const SettingsStore* reader : {static_cast<const SettingsStore*>(&store), &fresh}) {
        EXPECT_EQ(reader->textValue(SettingsStore::kOperator), "Admin");
        EXPECT_EQ(reader->intValue(SettingsStore::kShutdownTime), 3);
        EXPECT_EQ(reader->textValue(SettingsStore::kLastTaskUuid),
                  taskText(restored.tasks()[0].taskId));
    }
}

TEST_F(SettingsFile, AWriteReachesTheFileAtOnceAndReplacesItWhole) {
    SettingsStore store;
    ASSERT_TRUE(store.setValue(SettingsStore::kLcdBrightness, 70));
    const ino_t first = inodeOf(settingsFilePath());
    ASSERT_NE(first, 0u);
    ASSERT_TRUE(store.setValue(SettingsStore::kSnText, "X-17"));
    EXPECT_NE(inodeOf(settingsFilePath()), first) << "a new file is renamed over the old one";
    EXPECT_EQ(QDir(root_.file("etc")).entryList(QDir::Files), QStringList({"toxlocal.conf"}));

    const SettingsStore reread;
    EXPECT_EQ(reread.intValue(SettingsStore::kLcdBrightness), 70);
    EXPECT_EQ(reread.textValue(SettingsStore::kSnText), "X-17");
    EXPECT_TRUE(fileContents(settingsFilePath()).startsWith("[General]"));
}

TEST_F(SettingsFile, TheConnectorIdAdvancesInTheFile) {
    SettingsStore store;
    QString next;
    EXPECT_TRUE(store.increaseConnectorId(next));
    EXPECT_EQ(next, "SN1234567891");
    EXPECT_EQ(SettingsStore().textValue(SettingsStore::kSnText), "SN1234567891");
}

TEST_F(SettingsFile, AReadOnlyCardRefusesEveryWriteAndKeepsBothFiles) {
    SettingsStore store;
    ASSERT_TRUE(store.setValue(SettingsStore::kSnText, "SN7"));
    ASSERT_TRUE(writeFile(taskFilePath(), "{\"taskInfo\": []}"));
    const QByteArray settingsBefore = fileContents(settingsFilePath());
    ReadOnlyFolder readOnly(root_.file("etc"));
    if (!readOnly.active()) {
        GTEST_SKIP() << "cannot make a folder read-only here";
    }
    QString next;
    EXPECT_FALSE(store.increaseConnectorId(next));
    EXPECT_FALSE(store.setValue(SettingsStore::kOperator, "Night shift"));
    EXPECT_FALSE(store.restoreFactorySettings());
    EXPECT_EQ(fileContents(settingsFilePath()), settingsBefore);
    EXPECT_EQ(fileContents(taskFilePath()), "{\"taskInfo\": []}");
}

TEST(ConnectorId, TheTrailingNumberCountsUpDigitByDigitAndTheHeadStays) {
    const std::pair<const char*, const char*> ids[] = {
        {"SN1234567890", "SN1234567891"},
        {"  SN0009 ", "SN0010"},
        {"A99", "A100"},
        {"99", "100"},
        {"PORT7-B12", "PORT7-B13"},
        {"ABC", "ABC1"},
        {"12A", "12A1"},
        {"", "1"},
        {"SN98765432109876543210", "SN98765432109876543211"},
        {"SN12345678901234567899", "SN12345678901234567900"},
    };
    for (const auto& [id, next] : ids) {
        EXPECT_EQ(SettingsStore::idIncrease(id), next) << id;
    }
    EXPECT_EQ(SettingsStore::bigNumAddOne("0099"), "0100");
    EXPECT_EQ(SettingsStore::bigNumAddOne("999"), "1000");
}
