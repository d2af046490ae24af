// Saving a single-fiber measurement on the SD card: folders, save modes, the two workbooks.

#include "resultfiles.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>

#include "resultsample.h"
#include "temproot.h"
#include "workbookreader.h"

namespace {

constexpr const char* kDayFolder = "mnt/sdcard/sd/Measure_Result/20240517";

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class ResultFiles : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(QDir().mkpath(root.file("mnt/sdcard/sd"))); }

    QString day(const QString& relative = QString()) const {
        return root.file(QString(kDayFolder) + relative);
    }
    QString dataFile() const { return day("/MeasureData_EN.xlsx"); }
    QString reportFile(const QString& id) const { return day("/Report/" + id + "_EN.xlsx"); }
    bool resultsExist() const {
        return QFileInfo::exists(root.file("mnt/sdcard/sd/Measure_Result"));
    }

    TempRoot root;
};

}  // namespace

TEST_F(ResultFiles, ModeZeroSavesNothing) {
    EXPECT_EQ(saveMeasureResultSF(sampleRecord("SN1", kSaveNothing)), SaveOutcome::NotSaved);
    EXPECT_FALSE(resultsExist());
}

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

TEST_F(ResultFiles, PassAndFailModesWriteOnlyOnTheirVerdict) {
    EXPECT_EQ(saveMeasureResultSF(sampleRecord("SN1", kSavePassedDataAndReport, false)),
              SaveOutcome::NotSaved);
    EXPECT_EQ(saveMeasureResultSF(sampleRecord("SN1", kSaveFailedDataAndReport, true)),
              SaveOutcome::NotSaved);
    EXPECT_FALSE(resultsExist());

    EXPECT_EQ(saveMeasureResultSF(sampleRecord("SN2", kSavePassedDataAndReport, true)),
              SaveOutcome::Saved);
    EXPECT_EQ(saveMeasureResultSF(sampleRecord("SN3", kSaveFailedDataAndReport, false)),
              SaveOutcome::Saved);
    const QJsonObject data = readWithOpenpyxl(dataFile());
    EXPECT_EQ(cellText(data, "A5"), "SN2");
    EXPECT_EQ(cellText(data, "G5"), "Pass");
    EXPECT_EQ(cellText(data, "A6"), "SN3");
    EXPECT_EQ(cellText(data, "G6"), "Fail");
    EXPECT_TRUE(QFileInfo::exists(reportFile("SN2")));
    EXPECT_TRUE(QFileInfo::exists(reportFile("SN3")));
}

TEST_F(ResultFiles, DataModeWritesNoReportAndReportModeNoRow) {
    EXPECT_EQ(saveMeasureResultSF(sampleRecord("SN1", kSaveData)), SaveOutcome::Saved);
    EXPECT_EQ(saveMeasureResultSF(sampleRecord("SN2", kSaveReport)), SaveOutcome::Saved);
    EXPECT_FALSE(QFileInfo::exists(reportFile("SN1")));
    EXPECT_TRUE(QFileInfo::exists(reportFile("SN2")));
    const QJsonObject data = readWithOpenpyxl(dataFile());
    EXPECT_EQ(cellText(data, "A5"), "SN1");
    EXPECT_EQ(data["maxRow"].toInt(), 5);
}

TEST_F(ResultFiles, FirstSaveOfADayCreatesItsFoldersAndWorkbookTheNextAppends) {
    EXPECT_EQ(saveMeasureResultSF(sampleRecord("SN1", kSaveData)), SaveOutcome::Saved);
    EXPECT_TRUE(QFileInfo(day("/Report")).isDir());
    EXPECT_TRUE(QFileInfo::exists(dataFile()));
    EXPECT_TRUE(QFileInfo::exists(root.file("etc/MeasureResultDataTemplate_EN.xlsx")))
        << "missing templates are installed first";
    EXPECT_EQ(saveMeasureResultSF(sampleRecord("SN2", kSaveData)), SaveOutcome::Saved);
    EXPECT_EQ(saveMeasureResultSF(sampleRecord("SN3", kSaveData)), SaveOutcome::Saved);

    const QJsonObject data = readWithOpenpyxl(dataFile());
    EXPECT_EQ(cellText(data, "A3"), "ID") << "the template's titles";
    EXPECT_EQ(cellText(data, "A5"), "SN1");
    EXPECT_EQ(cellText(data, "A6"), "SN2");
    EXPECT_EQ(cellText(data, "A7"), "SN3");
    QList<int> order;
    for (const QJsonValue& row : data["rowOrder"].toArray()) {
        order << row.toInt();
    }
    EXPECT_EQ(order, QList<int>({1, 2, 3, 4, 5, 6, 7}));
    EXPECT_FALSE(QFileInfo::exists(dataFile() + ".part"));
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
    const QJsonObject id = data["cells"].toObject()["A5"].toObject();
    EXPECT_EQ(id["font"].toString(), "Arial");
    EXPECT_EQ(id["horizontal"].toString(), "center");
    EXPECT_EQ(id["vertical"].toString(), "center");
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
    EXPECT_EQ(pictures[0]["row"].toInt(), 26);
    EXPECT_EQ(pictures[0]["column"].toInt(), 1);
    EXPECT_EQ(pictures[1]["row"].toInt(), 26);
    EXPECT_EQ(pictures[1]["column"].toInt(), 5);
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
    EXPECT_EQ(report["pictures"].toArray().size(), 3) << "the logo and our two pictures";
}

TEST_F(ResultFiles, ADamagedDayWorkbookIsNeitherOverwrittenNorLost) {
    ASSERT_EQ(saveMeasureResultSF(sampleRecord("SN1", kSaveData)), SaveOutcome::Saved);
    QFile damaged(dataFile());
    ASSERT_TRUE(damaged.open(QIODevice::ReadWrite));
    const QByteArray whole = damaged.readAll();
    damaged.resize(whole.size() - 100);
    damaged.close();
    const QByteArray before = contents(dataFile());

    EXPECT_EQ(saveMeasureResultSF(sampleRecord("SN2", kSaveData)), SaveOutcome::NotSaved);
    EXPECT_EQ(contents(dataFile()), before) << "what is left of the day stays for rescue";
}

TEST_F(ResultFiles, AMissingPictureLeavesItOutOfTheReport) {
    SingleFiberResultRecord record = sampleRecord("SN1", kSaveReport);
    record.overlay = QImage();
    ASSERT_EQ(saveMeasureResultSF(record), SaveOutcome::Saved);
    EXPECT_EQ(readWithOpenpyxl(reportFile("SN1"))["pictures"].toArray().size(), 1);
}
