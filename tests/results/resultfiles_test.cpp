// Saving a single-fiber measurement on the SD card, read back by openpyxl: folders, save
// modes, the day's data workbook and the reports, written into copies of the templates that
// keep everything they do not fill.

#include "resultfiles.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QRegularExpression>

#include "resultsample.h"
#include "temproot.h"
#include "testfiles.h"
#include "workbookreader.h"
#include "xlsxworkbook.h"

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
    // A copy of the program's own template, to compare with.
    QString templateCopy(const QString& name) const {
        EXPECT_TRUE(writeFile(root.file(name), fileContents(":/templates/" + name)));
        return root.file(name);
    }

    TempRoot root;
};

}  // namespace

TEST_F(ResultFiles, MissingTemplatesAreInstalledFromTheResourcesAndEditedOnesKept) {
    ASSERT_TRUE(installTemplatesIfMissing());
    ASSERT_EQ(resultTemplateNames().size(), 8);
    for (const QString& name : resultTemplateNames()) {
        const QString installed = root.file("etc/" + name);
        EXPECT_EQ(fileContents(installed), fileContents(":/templates/" + name));
        EXPECT_FALSE(readWithOpenpyxl(installed).isEmpty()) << name.toStdString();
    }
    const QString edited = root.file("etc/MeasureResultReportTemplate_EN.xlsx");
    ASSERT_TRUE(writeFile(edited, "the user's own"));
    QFile::remove(root.file("etc/DataEndfaceMT12_CN.xlsx"));
    ASSERT_TRUE(installTemplatesIfMissing());
    EXPECT_EQ(fileContents(edited), "the user's own");
    EXPECT_TRUE(QFileInfo::exists(root.file("etc/DataEndfaceMT12_CN.xlsx")));
}

TEST_F(ResultFiles, AnInvalidIdOrNoSdCardWritesNothing) {
    for (const char* id : {"", "../SN1", "SN/1", "CON", "SN1."}) {
        EXPECT_EQ(saveMeasureResultSF(sampleRecord(id)), SaveOutcome::InvalidFileName) << id;
    }
    EXPECT_FALSE(resultsExist());
    ASSERT_TRUE(QDir(root.file("mnt/sdcard/sd")).removeRecursively());
    EXPECT_FALSE(isSdCardExists());
    EXPECT_EQ(saveMeasureResultSF(sampleRecord("SN1")), SaveOutcome::NoSdCard);
    EXPECT_FALSE(QFileInfo::exists(root.file("mnt/sdcard/sd")));
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
    EXPECT_EQ(rowOrder(data), QList<int>({1, 2, 3, 4, 5, 6, 7}))
        << "one row each for SN3, SN4 and SN5, after the titles";
    EXPECT_EQ(cellTexts(data, {"A5", "A6", "G6", "A7", "G7"}),
              QStringList({"SN3", "SN4", "Pass", "SN5", "Fail"}));

    // Of the template only the sheet and the styles changed, once for all rows: its titles keep
    // their values and styles, its merged cells and column widths stay.
    const QJsonObject before = readWithOpenpyxl(templateCopy("MeasureResultDataTemplate_EN.xlsx"));
    const QJsonObject partsBefore = before["parts"].toObject(), parts = data["parts"].toObject();
    EXPECT_EQ(parts.keys(), partsBefore.keys()) << "no part added or removed";
    QStringList changed;
    for (const QString& part : parts.keys()) {
        if (parts[part] != partsBefore[part]) {
            changed << part;
        }
    }
    EXPECT_EQ(changed, QStringList({"xl/styles.xml", "xl/worksheets/sheet1.xml"}));
    QJsonObject titles = data["cells"].toObject();
    for (const QString& reference : titles.keys()) {
        if (QString(reference).remove(QRegularExpression("^[A-Z]+")).toInt() >= 5) {
            titles.remove(reference);
        }
    }
    EXPECT_EQ(titles, before["cells"].toObject());
    EXPECT_EQ(data["merged"], before["merged"]);
    EXPECT_EQ(data["widths"], before["widths"]);
    EXPECT_EQ(data["cellFormats"].toInt(), before["cellFormats"].toInt() + 1);
}

TEST_F(ResultFiles, ADataRowHoldsTheMeasurementAndEachZoneInCentredArial) {
    SingleFiberResultRecord record = sampleRecord("SN1", kSaveData);
    record.describer = " Patch <cord> & \"2\"";
    record.manufacturer = QString::fromUtf8("光纤 跳线");
    record.operatorName = QString("Li") + QChar(7) + "n";
    ASSERT_EQ(saveMeasureResultSF(record), SaveOutcome::Saved);
    const QJsonObject data = readWithOpenpyxl(dataFile());
    ASSERT_GE(record.task.sectionNum, 2);
    const auto& zone2 = record.task.sections[1];
    // F5: a control character cannot be stored. Zone 2 (columns M to Q): 2 small + 1 middle
    // defects, 1 scratch.
    EXPECT_EQ(cellTexts(data, {"A5", "B5", "C5", "D5", "E5", "F5", "M5", "N5", "O5", "P5", "Q5"}),
              QStringList({"SN1", " Patch <cord> & \"2\"", QString::fromUtf8("光纤 跳线"),
                           QString::fromUtf8(record.task.taskName), "2024-05-17 14:03:09", "Lin",
                           QString::fromUtf8(zone2.sectionName), QString::number(zone2.diameterMin),
                           QString::number(zone2.diameterMax), "3", "1"}));
    for (const char* reference : {"A5", "P5"}) {
        const QJsonObject cell = data["cells"].toObject()[reference].toObject();
        EXPECT_EQ(cell["font"].toString(), "Arial") << reference;
        EXPECT_EQ(cell["horizontal"].toString(), "center") << reference;
        EXPECT_EQ(cell["vertical"].toString(), "center") << reference;
    }
    EXPECT_TRUE(data["cells"].toObject()["P5"].toObject()["value"].isDouble()) << "a number";
}

// A second report of the same id replaces the first; a missing picture is left out.
TEST_F(ResultFiles, AReportHoldsValuesZonesAndPicturesAndASecondOneReplacesIt) {
    SingleFiberResultRecord record = sampleRecord("SN1", kSaveReport, false);
    ASSERT_EQ(saveMeasureResultSF(record), SaveOutcome::Saved);
    QJsonObject report = readWithOpenpyxl(reportFile("SN1"));
    // G19: zone 2's scratches failed; A9: the labels stay.
    EXPECT_EQ(cellTexts(report, {"C9", "C13", "C15", "A18", "D19", "E19", "F19", "G19", "A9"}),
              QStringList({"SN1", "2024-05-17 14:03:09", "Fail",
                           QString::fromUtf8(record.task.sections[0].sectionName), "3", "Pass", "1",
                           "Fail", "Product id"}));
    const QJsonArray pictures = report["pictures"].toArray();
    ASSERT_EQ(pictures.size(), 2);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(pictures[i]["row"].toInt(), 26);
        EXPECT_EQ(pictures[i]["column"].toInt(), i == 0 ? 1 : 5);
        EXPECT_EQ(pictures[i]["format"].toString(), "png");
    }

    record.passed = true;
    record.operatorName = "Wen";
    record.overlay = QImage();
    ASSERT_EQ(saveMeasureResultSF(record), SaveOutcome::Saved);
    EXPECT_EQ(QDir(day("/Report")).entryList(QDir::Files), QStringList({"SN1_EN.xlsx"}));
    report = readWithOpenpyxl(reportFile("SN1"));
    EXPECT_EQ(cellTexts(report, {"C14", "C15"}), QStringList({"Wen", "Pass"}));
    EXPECT_EQ(report["pictures"].toArray().size(), 1);
}

TEST_F(ResultFiles, ChineseUsesTheChineseTemplatesAndNames) {
    SingleFiberResultRecord record = sampleRecord("SN1");
    record.language = 1;
    ASSERT_EQ(saveMeasureResultSF(record), SaveOutcome::Saved);
    const QJsonObject data = readWithOpenpyxl(day("/MeasureData_CN.xlsx"));
    EXPECT_EQ(cellTexts(data, {"A3", "G5"}), QStringList({"编号", "合格"}));
    const QJsonObject report = readWithOpenpyxl(day("/Report/SN1_CN.xlsx"));
    EXPECT_EQ(cellTexts(report, {"A1", "C9"}), QStringList({"测量报告", "SN1"}));
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
    EXPECT_EQ(cellTexts(data, {"AM1", "A5", "A6"}), QStringList({"User note", "SN1", "SN2"}));
    const QJsonObject report = readWithOpenpyxl(reportFile("SN2"));
    EXPECT_EQ(cellText(report, "I1"), "User note");
    const QJsonArray pictures = report["pictures"].toArray();
    ASSERT_EQ(pictures.size(), 3) << "the logo and our two pictures";
    EXPECT_EQ(pictures[0]["row"].toInt(), 4) << "the logo stays first, where it was";
}

TEST_F(ResultFiles, ADamagedDayWorkbookIsNeitherOverwrittenNorLost) {
    ASSERT_EQ(saveMeasureResultSF(sampleRecord("SN1", kSaveData)), SaveOutcome::Saved);
    const QByteArray whole = fileContents(dataFile());
    for (const QByteArray& damaged : {whole.left(whole.size() - 100), QByteArray("not a zip")}) {
        ASSERT_TRUE(writeFile(dataFile(), damaged));
        EXPECT_EQ(saveMeasureResultSF(sampleRecord("SN2", kSaveData)), SaveOutcome::Failed);
        EXPECT_EQ(fileContents(dataFile()), damaged) << "what is left of the day stays for rescue";
    }
}

// The workbook layer itself, where the result files do not reach: rows written out of order
// and into the template's rows, and saves that fail.
TEST_F(ResultFiles, TheWorkbookMergesCellsIntoExistingRowsInOrder) {
    const QString path = templateCopy("MeasureResultDataTemplate_EN.xlsx");
    XlsxWorkbook workbook;
    ASSERT_TRUE(workbook.open(path));
    workbook.setText(7, 2, "seven");
    workbook.setText(5, 2, "five");
    workbook.setText(3, 1, "Connector");   // replaces a title inside an existing row
    workbook.setText(3, 40, "far right");  // after the row's last cell
    ASSERT_TRUE(workbook.saveAs(path));

    const QJsonObject read = readWithOpenpyxl(path);
    EXPECT_EQ(rowOrder(read), QList<int>({1, 2, 3, 4, 5, 7}));
    // B3: its neighbours stay.
    EXPECT_EQ(cellTexts(read, {"A3", "B3", "AN3", "B5", "B7"}),
              QStringList({"Connector", "Description", "far right", "five", "seven"}));
}

TEST_F(ResultFiles, AFailedWorkbookOpenOrSaveChangesNothing) {
    XlsxWorkbook missing;
    EXPECT_FALSE(missing.open(root.file("missing.xlsx")));
    EXPECT_FALSE(missing.errorString().isEmpty());
    const QString path = templateCopy("MeasureResultDataTemplate_EN.xlsx");
    const QByteArray before = fileContents(path);
    XlsxWorkbook workbook;
    ASSERT_TRUE(workbook.open(path));
    workbook.setText(5, 1, "SN1");
    EXPECT_FALSE(workbook.saveAs(root.file("no/such/folder/data.xlsx")));
    EXPECT_FALSE(workbook.errorString().isEmpty());
    ASSERT_TRUE(QDir().mkpath(root.file("folder.xlsx")));
    EXPECT_FALSE(workbook.saveAs(root.file("folder.xlsx"))) << "a folder is not replaced";
    EXPECT_TRUE(QFileInfo(root.file("folder.xlsx")).isDir());
    EXPECT_EQ(fileContents(path), before);
    EXPECT_TRUE(workbook.saveAs(path)) << "the workbook is still whole after failed saves";
    EXPECT_EQ(cellText(readWithOpenpyxl(path), "A5"), "SN1");
}
