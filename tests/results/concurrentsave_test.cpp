// The instrument, the batch tool and a second batch may save to the same card at once: every
// row of every one of them reaches the day's workbook.

#include <gtest/gtest.h>

#include <QDir>
#include <QProcess>
#include <memory>
#include <vector>

#include "resultsample.h"
#include "temproot.h"
#include "xlsxworkbook.h"

TEST(ConcurrentSaves, FourProgramsSavingTenRowsEachGiveFortyRows) {
    TempRoot root;
    ASSERT_TRUE(QDir().mkpath(root.file("mnt/sdcard/sd")));
    std::vector<std::unique_ptr<QProcess>> savers;
    for (int program = 0; program < 4; ++program) {
        savers.push_back(std::make_unique<QProcess>());
        savers.back()->start(RESULTS_SAVER, {root.path(), "10", QString::number(kSaveData)});
    }
    for (const auto& saver : savers) {
        ASSERT_TRUE(saver->waitForFinished(120000));
        EXPECT_EQ(saver->exitCode(), 0) << saver->readAllStandardError().toStdString();
    }
    XlsxWorkbook data;
    ASSERT_TRUE(data.open(root.file(QString(kSampleDayFolder) + "/MeasureData_EN.xlsx")));
    EXPECT_EQ(data.lastUsedRow() - 4, 40);
}
