// A save that cannot be written (full or read-only card, a name too long for the file system,
// a folder that cannot be created) fails with the system's reason, and the day's workbook
// stays as it was.

#include <gtest/gtest.h>

#include <QDir>
#include <functional>
#include <memory>

#include "readonlyfolder.h"
#include "resultfiles.h"
#include "resultsample.h"
#include "smallcard.h"
#include "temproot.h"
#include "testfiles.h"
#include "xlsxworkbook.h"

TEST(FailedSave, SaysWhyAndKeepsTheEarlierWorkbook) {
    const QString card = "mnt/sdcard/sd";
    const QString day = QString(kSampleDayFolder);
    std::unique_ptr<SmallCard> smallCard;
    std::unique_ptr<ReadOnlyFolder> readOnly;
    const struct {
        const char* name;
        std::function<bool(const TempRoot&)> spoil;  // false: cannot be done here
        SingleFiberResultRecord second;
        const char* reason;
    } cases[] = {
        {"full card",
         [&](const TempRoot&) {
             smallCard->fill();
             return true;
         },
         sampleRecord("SN2", kSaveData), "No space left on device"},
        {"read-only card",
         [&](const TempRoot& root) {
             readOnly = std::make_unique<ReadOnlyFolder>(root.file(card));
             return readOnly->active();
         },
         sampleRecord("SN2", kSaveData), "Read-only file system"},
        {"name too long", [](const TempRoot&) { return true; },
         sampleRecord(QString(200, QChar(0x6d4b)), kSaveReport), "File name too long"},
        {"folder taken by a file",
         [&](const TempRoot& root) {
             return QDir(root.file(day + "/Report")).removeRecursively() &&
                    writeFile(root.file(day + "/Report"), "x");
         },
         sampleRecord("SN2", kSaveData), "Not a directory"},
    };
    for (const auto& c : cases) {
        TempRoot root;
        ASSERT_TRUE(QDir().mkpath(root.file(card)));
        smallCard = std::make_unique<SmallCard>(root.file(card), 1024);
        if (!smallCard->active()) {
            GTEST_SKIP() << "cannot mount a small tmpfs here (needs root)";
        }
        const QString dataFile = root.file(day + "/MeasureData_EN.xlsx");
        ASSERT_EQ(saveMeasureResultSF(sampleRecord("SN1", kSaveData)), SaveOutcome::Saved);
        const QByteArray before = fileContents(dataFile);
        if (!c.spoil(root)) {
            GTEST_SKIP() << "cannot make a folder read-only here";
        }

        QString failure;
        EXPECT_EQ(saveMeasureResultSF(c.second, &failure), SaveOutcome::Failed) << c.name;
        EXPECT_TRUE(failure.contains(c.reason)) << c.name << ": " << failure.toStdString();
        EXPECT_EQ(fileContents(dataFile), before) << c.name;
        XlsxWorkbook workbook;
        ASSERT_TRUE(workbook.open(dataFile)) << c.name << workbook.errorString().toStdString();
        EXPECT_EQ(workbook.lastUsedRow(), 5) << c.name << ": the earlier row is still there";
        readOnly.reset();
        smallCard.reset();
    }
}
