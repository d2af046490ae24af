// Text settings are UTF-8 both ways: a file written by hand or by another program in UTF-8
// reads as written, and what the instrument stores is UTF-8 that any editor shows.

#include <gtest/gtest.h>

#include <QDir>

#include "settingsstore.h"
#include "temproot.h"
#include "testfiles.h"

TEST(SettingsText, ChineseOperatorNamesAndIdsSurviveAsUtf8) {
    TempRoot root;
    ASSERT_TRUE(QDir().mkpath(root.file("etc")));
    const struct {
        const char* key;
        QString text;
    } cases[] = {
        {SettingsStore::kOperator, QStringLiteral("张伟")},
        {SettingsStore::kSnText, QStringLiteral("跳线-0042")},
        {SettingsStore::kManufacturer, QStringLiteral("光纤 Works 有限公司")},
    };
    for (const auto& c : cases) {
        ASSERT_TRUE(writeFile(settingsFilePath(),
                              "[General]\n" + QByteArray(c.key) + "=" + c.text.toUtf8() + "\n"));
        EXPECT_EQ(SettingsStore().textValue(c.key), c.text) << c.key;

        ASSERT_TRUE(SettingsStore().setValue(c.key, c.text + "1"));
        EXPECT_TRUE(fileContents(settingsFilePath()).contains((c.text + "1").toUtf8())) << c.key;
        EXPECT_EQ(SettingsStore().textValue(c.key), c.text + "1") << c.key;
    }
}
