// Never lose a day's data: a crash or power cut in the middle of a save leaves the day's
// workbook and the reports readable, with every row saved before it.

#include <gtest/gtest.h>

#include <QDir>
#include <QJsonArray>
#include <QProcess>
#include <QThread>

#include "resultfiles.h"
#include "resultsample.h"
#include "temproot.h"
#include "testfiles.h"
#include "workbookreader.h"
#include "xlsxworkbook.h"

namespace {

// Waits until the saver has reported at least one completed save; returns the count so far.
int waitForFirstSave(QProcess& saver, QByteArray& output) {
    while (!output.contains("saved") && saver.waitForReadyRead(60000)) {
        output += saver.readAllStandardOutput();
    }
    return output.count("saved");
}

}  // namespace

TEST(NeverLoseADaysData, KillingTheProgramMidSaveKeepsEveryConfirmedRow) {
    TempRoot root;
    ASSERT_TRUE(QDir().mkpath(root.file("mnt/sdcard/sd")));
    const QString dataFile = root.file(QString(kSampleDayFolder) + "/MeasureData_EN.xlsx");
    const QString reportFile = root.file(QString(kSampleDayFolder) + "/Report/SN-CRASH_EN.xlsx");
    // The pauses spread the kills over the phases of a save: encoding, packing, writing.
    const int pausesMs[] = {0, 7, 19, 33, 48, 64, 81, 99, 118, 140};
    int confirmed = 0;
    int kills = 0;
    for (const int pause : pausesMs) {
        QProcess saver;
        saver.start(RESULTS_SAVER, {root.path(), "1000"});
        ASSERT_TRUE(saver.waitForStarted());
        QByteArray output;
        ASSERT_GE(waitForFirstSave(saver, output), 1) << saver.readAllStandardError().toStdString();
        QThread::msleep(pause);
        saver.kill();
        saver.waitForFinished();
        confirmed += (output + saver.readAllStandardOutput()).count("saved");
        ++kills;

        XlsxWorkbook data, report;
        ASSERT_TRUE(data.open(dataFile))
            << "after kill " << kills << ": " << data.errorString().toStdString();
        ASSERT_TRUE(report.open(reportFile)) << report.errorString().toStdString();
        const int rows = data.lastUsedRow() - 4;
        EXPECT_GE(rows, confirmed) << "a confirmed row was lost";
        EXPECT_LE(rows, confirmed + kills) << "at most the killed save itself may have landed";
    }
    const QJsonObject read = readWithOpenpyxl(dataFile);
    const QList<int> order = rowOrder(read);
    for (int index = 0; index < order.size(); ++index) {
        EXPECT_EQ(order[index], index + 1) << "rows stay consecutive";
    }
    EXPECT_EQ(cellText(read, QString("A%1").arg(order.size())), "SN-CRASH");
    EXPECT_EQ(readWithOpenpyxl(reportFile)["pictures"].toArray().size(), 2);
}

TEST(NeverLoseADaysData, AHalfCopiedTemplateFromAPowerCutIsNotUsed) {
    TempRoot root;
    const QString day = root.file(kSampleDayFolder);
    ASSERT_TRUE(QDir().mkpath(day));
    ASSERT_TRUE(writeFile(day + "/MeasureData_EN.xlsx.part", "PK\x03\x04 cut short"));

    ASSERT_EQ(saveMeasureResultSF(sampleRecord("SN1", kSaveData)), SaveOutcome::Saved);
    EXPECT_EQ(cellText(readWithOpenpyxl(day + "/MeasureData_EN.xlsx"), "A5"), "SN1");
}
