// Saving a single-fiber measurement on the SD card: folders, save modes, the two workbooks.

#include "resultfiles.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>

#include "resultsample.h"
#include "temproot.h"
#include "testfiles.h"
#include "workbookreader.h"

namespace {

class ResultFiles : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(QDir().mkpath(root.file("mnt/sdcard/sd"))); }

    QString day(const QString& relative = QString()) const {
        return root.file(kSampleDayFolder + relative);
    }
    QString dataFile() const { return day("/MeasureData_EN.xlsx"); }
    QString reportFile(const QString& id) const { return day("/Report/" + id + "_EN.xlsx"); }
    bool resultsExist() const {
        return QFileInfo::exists(root.file("mnt/sdcard/sd/Measure_Result"));
    }

    TempRoot root;
};

}  // namespace

TEST_F(ResultFiles, WithoutSdCardNothingIsWritten) {
    ASSERT_TRUE(QDir(root.file("mnt/sdcard/sd")).removeRecursively());
    EXPECT_FALSE(isSdCardExists());
    EXPECT_EQ(saveMeasureResultSF(sampleRecord("SN1")), SaveOutcome::NoSdCard);
    EXPECT_FALSE(QFileInfo::exists(root.file("mnt/sdcard/sd")));
}

TEST_F(ResultFiles, AnInvalidIdWritesNothing) {
    for (const char* id : {"", "../SN1", "SN/1", "CON", "SN1."}) {
        EXPECT_EQ(saveMeasureResultSF(sampleRecord(id)), SaveOutcome::InvalidFileName) << id;
    }
    EXPECT_FALSE(resultsExist());
}

TEST_F(ResultFiles, EachSaveModeWritesOnlyWhatItNamesAndTheDayGrowsRowByRow) {
    const struct {
        const char* id;
        int mode;
        bool passed, row, report;
    } saves[] = {
        // The ones that save nothing come first: no folder may appear for them.
        {"SN0", kSaveNothing, true, false, false},
        {"SN1", kSavePassedDataAndReport, false, false, false},
        {"SN2", kSaveFailedDataAndReport, true, false, false},
        // The day's first save, a data row only, still makes the day's report folder.
        {"SN3", kSaveData, true, true, false},
        {"SN4", kSavePassedDataAndReport, true, true, true},
        {"SN5", kSaveFailedDataAndReport, false, true, true},
        {"SN6", kSaveReport, true, false, true},
    };
    for (const auto& save : saves) {
        const bool writes = save.row || save.report;
        EXPECT_EQ(saveMeasureResultSF(sampleRecord(save.id, save.mode, save.passed)),
                  writes ? SaveOutcome::Saved : SaveOutcome::NotSaved)
            << save.id;
        EXPECT_EQ(QFileInfo::exists(reportFile(save.id)), save.report) << save.id;
        EXPECT_EQ(QFileInfo(day("/Report")).isDir(), writes) << save.id;
        if (!writes) {
            EXPECT_FALSE(resultsExist()) << save.id;
        }
    }
    EXPECT_FALSE(QFileInfo::exists(root.file("etc"))) << "a save reads the factory templates, "
                                                         "it installs nothing";
    const QJsonObject data = readWithOpenpyxl(dataFile());
    EXPECT_EQ(cellText(data, "A3"), "ID") << "the template's titles";
    EXPECT_EQ(rowOrder(data), QList<int>({1, 2, 3, 4, 5, 6, 7}))
        << "one row each for SN3, SN4 and SN5, after the titles";
    EXPECT_EQ(cellText(data, "A5"), "SN3");
    EXPECT_EQ(cellText(data, "A6"), "SN4");
    EXPECT_EQ(cellText(data, "G6"), "Pass");
    EXPECT_EQ(cellText(data, "A7"), "SN5");
    EXPECT_EQ(cellText(data, "G7"), "Fail");
}

TEST_F(ResultFiles, ADataRowHoldsTheMeasurementAndEachZone) {
    const SingleFiberResultRecord record = sampleRecord("SN1", kSaveData);
    ASSERT_EQ(saveMeasureResultSF(record), SaveOutcome::Saved);
    const QJsonObject data = readWithOpenpyxl(dataFile());
    EXPECT_EQ(cellText(data, "B5"), "Patch cord");
    EXPECT_EQ(cellText(data, "C5"), "Fiber Works");
    EXPECT_EQ(cellText(data, "D5"), QString::fromUtf8(record.task.taskName));
    EXPECT_EQ(cellText(data, "E5"), "2024-05-17 14:03:09");
    EXPECT_EQ(cellText(data, "F5"), "Lin");
    ASSERT_GE(record.task.sectionNum, 2);
    // Zone 2 (columns M to Q): 2 small + 1 middle defects, 1 scratch.
    EXPECT_EQ(cellText(data, "M5"), QString::fromUtf8(record.task.sections[1].sectionName));
    EXPECT_EQ(cellText(data, "N5"), QString::number(record.task.sections[1].diameterMin));
    EXPECT_EQ(cellText(data, "O5"), QString::number(record.task.sections[1].diameterMax));
    EXPECT_EQ(cellText(data, "P5"), "3");
    EXPECT_EQ(cellText(data, "Q5"), "1");
}

TEST_F(ResultFiles, AReportHoldsValuesZonesAndBothPictures) {
    const SingleFiberResultRecord record = sampleRecord("SN1", kSaveReport, false);
    ASSERT_EQ(saveMeasureResultSF(record), SaveOutcome::Saved);
    const QJsonObject report = readWithOpenpyxl(reportFile("SN1"));
    EXPECT_EQ(cellText(report, "C9"), "SN1");
    EXPECT_EQ(cellText(report, "C13"), "2024-05-17 14:03:09");
    EXPECT_EQ(cellText(report, "C15"), "Fail");
    EXPECT_EQ(cellText(report, "A18"), QString::fromUtf8(record.task.sections[0].sectionName));
    EXPECT_EQ(cellText(report, "D19"), "3");
    EXPECT_EQ(cellText(report, "E19"), "Pass");
    EXPECT_EQ(cellText(report, "F19"), "1");
    EXPECT_EQ(cellText(report, "G19"), "Fail") << "zone 2's scratches failed";
    EXPECT_EQ(cellText(report, "A9"), "Product id") << "the labels stay";
    const QJsonArray pictures = report["pictures"].toArray();
    ASSERT_EQ(pictures.size(), 2);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(pictures[i]["row"].toInt(), 26);
        EXPECT_EQ(pictures[i]["column"].toInt(), i == 0 ? 1 : 5);
    }
}

TEST_F(ResultFiles, ASecondReportOfTheSameIdReplacesTheFirst) {
    SingleFiberResultRecord record = sampleRecord("SN1", kSaveReport, true);
    ASSERT_EQ(saveMeasureResultSF(record), SaveOutcome::Saved);
    record.passed = false;
    record.operatorName = "Wen";
    ASSERT_EQ(saveMeasureResultSF(record), SaveOutcome::Saved);
    EXPECT_EQ(QDir(day("/Report")).entryList(QDir::Files), QStringList({"SN1_EN.xlsx"}));
    const QJsonObject report = readWithOpenpyxl(reportFile("SN1"));
    EXPECT_EQ(cellText(report, "C14"), "Wen");
    EXPECT_EQ(cellText(report, "C15"), "Fail");
    EXPECT_EQ(report["pictures"].toArray().size(), 2);
}

TEST_F(ResultFiles, ChineseUsesTheChineseTemplatesAndNames) {
    SingleFiberResultRecord record = sampleRecord("SN1");
    record.language = 1;
    ASSERT_EQ(saveMeasureResultSF(record), SaveOutcome::Saved);
    const QJsonObject data = readWithOpenpyxl(day("/MeasureData_CN.xlsx"));
    EXPECT_EQ(cellText(data, "A3"), QString::fromUtf8("编号"));
    EXPECT_EQ(cellText(data, "G5"), QString::fromUtf8("合格"));
    const QJsonObject report = readWithOpenpyxl(day("/Report/SN1_CN.xlsx"));
    EXPECT_EQ(cellText(report, "A1"), QString::fromUtf8("测量报告"));
    EXPECT_EQ(cellText(report, "C9"), "SN1");
}

TEST_F(ResultFiles, ATemplateTheUserEditedKeepsItsEdits) {
    ASSERT_TRUE(installTemplatesIfMissing());
    const QString logo = root.file("logo.png");
    ASSERT_TRUE(samplePicture(QImage::Format_RGB888, 64).save(logo));
    ASSERT_TRUE(editLikeAUser(root.file("etc/MeasureResultDataTemplate_EN.xlsx"), "AM1"));
    ASSERT_TRUE(editLikeAUser(root.file("etc/MeasureResultReportTemplate_EN.xlsx"), "I1", logo));
    ASSERT_EQ(saveMeasureResultSF(sampleRecord("SN1")), SaveOutcome::Saved);
    ASSERT_EQ(saveMeasureResultSF(sampleRecord("SN2")), SaveOutcome::Saved);

    for (const QString& path : {dataFile(), reportFile("SN2")}) {
        const QJsonObject read = readWithOpenpyxl(path);
        EXPECT_EQ(read["cells"].toObject()["A1"].toObject()["fill"].toString(), "FFFFC000")
            << path.toStdString();
        EXPECT_EQ(read["widths"].toObject()["B"].toDouble(), 33.0) << path.toStdString();
    }
    const QJsonObject data = readWithOpenpyxl(dataFile());
    EXPECT_EQ(cellText(data, "AM1"), "User note");
    EXPECT_EQ(cellText(data, "A5"), "SN1");
    EXPECT_EQ(cellText(data, "A6"), "SN2");
    const QJsonObject report = readWithOpenpyxl(reportFile("SN2"));
    EXPECT_EQ(cellText(report, "I1"), "User note");
    const QJsonArray pictures = report["pictures"].toArray();
    ASSERT_EQ(pictures.size(), 3) << "the logo and our two pictures";
    EXPECT_EQ(pictures[0]["row"].toInt(), 4) << "the logo stays first, where it was";
}

TEST_F(ResultFiles, ADamagedDayWorkbookIsNeitherOverwrittenNorLost) {
    ASSERT_EQ(saveMeasureResultSF(sampleRecord("SN1", kSaveData)), SaveOutcome::Saved);
    QFile damaged(dataFile());
    ASSERT_TRUE(damaged.open(QIODevice::ReadWrite));
    const QByteArray whole = damaged.readAll();
    damaged.resize(whole.size() - 100);
    damaged.close();
    const QByteArray before = fileContents(dataFile());

    EXPECT_EQ(saveMeasureResultSF(sampleRecord("SN2", kSaveData)), SaveOutcome::Failed);
    EXPECT_EQ(fileContents(dataFile()), before) << "what is left of the day stays for rescue";
}

TEST_F(ResultFiles, AMissingPictureLeavesItOutOfTheReport) {
    SingleFiberResultRecord record = sampleRecord("SN1", kSaveReport);
    record.overlay = QImage();
    ASSERT_EQ(saveMeasureResultSF(record), SaveOutcome::Saved);
    EXPECT_EQ(readWithOpenpyxl(reportFile("SN1"))["pictures"].toArray().size(), 1);
}
