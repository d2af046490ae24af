#include "settingsstore.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "tasklist.h"
#include "temproot.h"

namespace {

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

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

TEST_F(SettingsFile, AMissingFileGivesTheReadersDefaults) {
    SettingsStore store;
    EXPECT_EQ(store.intValue(SettingsStore::kExpTimeSf), 20);
    EXPECT_EQ(store.intValue(SettingsStore::kExpTimeMf), 45);
    EXPECT_EQ(store.textValue(SettingsStore::kDescriber), QString());
    EXPECT_EQ(store.textValue(SettingsStore::kOperator), QString());
    EXPECT_EQ(store.textValue(SettingsStore::kManufacturer), QString());
    EXPECT_EQ(store.intValue(SettingsStore::kShutdownTime), 2);
    EXPECT_TRUE(store.boolValue(SettingsStore::kAutoIdInc));
    EXPECT_FALSE(store.boolValue(SettingsStore::kAutoFocus));
    EXPECT_EQ(store.textValue(SettingsStore::kLastTaskUuid), QString());
}

TEST_F(SettingsFile, FactoryRestorePutsBothFactoryFilesBack) {
    SettingsStore store;
    ASSERT_TRUE(store.setValue(SettingsStore::kOperator, "Night shift"));
    ASSERT_TRUE(store.setValue(SettingsStore::kShutdownTime, 0));
    QFile tasks(taskFilePath());
    ASSERT_TRUE(tasks.open(QIODevice::WriteOnly));
    tasks.write("{}");
    tasks.close();

    ASSERT_TRUE(store.restoreFactorySettings());
    EXPECT_EQ(store.textValue(SettingsStore::kOperator), "Admin");
    EXPECT_EQ(store.intValue(SettingsStore::kShutdownTime), 3);
    QFile factoryTasks(":/conf/taskinfo.conf");
    ASSERT_TRUE(factoryTasks.open(QIODevice::ReadOnly));
    EXPECT_EQ(readAll(taskFilePath()), factoryTasks.readAll());

    const SettingsStore fresh;
    const struct {
        const char* key;
        QVariant value;
    } factory[] = {
        {SettingsStore::kAutoFocus, false},
        {SettingsStore::kAutoIdInc, true},
        {SettingsStore::kDescriber, "Fiber endface inspection"},
        {SettingsStore::kExpTimeMf, 45},
        {SettingsStore::kExpTimeSf, 20},
        {SettingsStore::kGrayValueMf, 85},
        {SettingsStore::kGrayValueSf, 185},
        {SettingsStore::kLanguage, 0},
        {SettingsStore::kLastTaskUuid, "a338e868-f599-4d2a-854a-2932e885187f"},
        {SettingsStore::kLcdAutoBrightness, true},
        {SettingsStore::kLcdBrightness, 50},
        {SettingsStore::kManufacturer, "Quarvelin"},
        {SettingsStore::kOperator, "Admin"},
        {SettingsStore::kOverlay, false},
        {SettingsStore::kSaveType, 0},
        {SettingsStore::kShutdownTime, 3},
        {SettingsStore::kSnText, "SN1234567890"},
    };
    for (const auto& entry : factory) {
        EXPECT_EQ(fresh.textValue(entry.key), entry.value.toString()) << entry.key;
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
    EXPECT_TRUE(readAll(settingsFilePath()).startsWith("[General]"));
}

TEST_F(SettingsFile, TheConnectorIdAdvancesInTheFile) {
    SettingsStore store;
    EXPECT_EQ(store.increaseConnectorId(), "SN1234567891");
    EXPECT_EQ(SettingsStore().textValue(SettingsStore::kSnText), "SN1234567891");
}

TEST(ConnectorId, TheTrailingNumberCountsUpAndTheHeadStays) {
    EXPECT_EQ(SettingsStore::idIncrease("SN1234567890"), "SN1234567891");
    EXPECT_EQ(SettingsStore::idIncrease("  SN0009 "), "SN0010");
    EXPECT_EQ(SettingsStore::idIncrease("A99"), "A100");
    EXPECT_EQ(SettingsStore::idIncrease("99"), "100");
    EXPECT_EQ(SettingsStore::idIncrease("PORT7-B12"), "PORT7-B13");
    EXPECT_EQ(SettingsStore::idIncrease("ABC"), "ABC1");
    EXPECT_EQ(SettingsStore::idIncrease("12A"), "12A1");
    EXPECT_EQ(SettingsStore::idIncrease(""), "1");
    EXPECT_EQ(SettingsStore::idIncrease("SN98765432109876543210"), "SN98765432109876543211");
}

TEST(ConnectorId, LongNumbersCarryDigitByDigit) {
    EXPECT_EQ(SettingsStore::bigNumAddOne("0"), "1");
    EXPECT_EQ(SettingsStore::bigNumAddOne("0099"), "0100");
    EXPECT_EQ(SettingsStore::bigNumAddOne("999"), "1000");
    EXPECT_EQ(SettingsStore::bigNumAddOne("12345678901234567899"), "12345678901234567900");
}
