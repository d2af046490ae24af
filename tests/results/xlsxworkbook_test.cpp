// The workbook layer on the program's own templates, read back with openpyxl.

#include "xlsxworkbook.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

#include "resultsample.h"
#include "temproot.h"
#include "testfiles.h"
#include "workbookreader.h"

namespace {

// A copy of a template resource in the test's root.
QString copyOfTemplate(const TempRoot& root, const QString& name) {
    const QString path = root.file(name);
    QFile::remove(path);
    EXPECT_TRUE(QFile::copy(":/templates/" + name, path));
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
    return path;
}

QJsonObject cell(const QJsonObject& workbook, const QString& reference) {
    return workbook["cells"].toObject()[reference].toObject();
}

QStringList names(const QJsonValue& list) {
    QStringList result;
    for (const QJsonValue& value : list.toArray()) {
        result << value.toString();
    }
    return result;
}

// The templates come from the program's resources, which the tests link.
class Workbook : public ::testing::Test {
protected:
    TempRoot root;
};

}  // namespace

TEST_F(Workbook, RefusesWhatIsNotAWorkbookAndLeavesItAlone) {
    const QString text = root.file("notes.xlsx");
    ASSERT_TRUE(writeFile(text, "not a zip"));
    const QString truncated = copyOfTemplate(root, "MeasureResultDataTemplate_EN.xlsx");
    ASSERT_TRUE(QFile(truncated).resize(QFileInfo(truncated).size() / 2));

    for (const QString& path : QStringList{root.file("missing.xlsx"), text, truncated}) {
        const QByteArray before = fileContents(path);
        XlsxWorkbook workbook;
        EXPECT_FALSE(workbook.open(path)) << path.toStdString();
        EXPECT_FALSE(workbook.errorString().isEmpty());
        EXPECT_EQ(fileContents(path), before) << "nothing is written on a failed open";
    }
}

TEST_F(Workbook, WritesTextsAndNumbersInCentredArial) {
    const QString path = copyOfTemplate(root, "MeasureResultDataTemplate_EN.xlsx");
    XlsxWorkbook workbook;
    ASSERT_TRUE(workbook.open(path));
    workbook.setText(5, 1, "SN<1>&\"2\"");
    workbook.setText(5, 2, QString::fromUtf8("光纤 跳线"));
    workbook.setText(5, 3, " leading space");
    workbook.setText(5, 4, QString("bell") + QChar(7) + "less");
    workbook.setNumber(5, 9, 25);
    workbook.setNumber(5, 10, 12.5);
    ASSERT_TRUE(workbook.saveAs(path)) << workbook.errorString().toStdString();

    const QJsonObject read = readWithOpenpyxl(path);
    EXPECT_EQ(cellText(read, "A5"), "SN<1>&\"2\"");
    EXPECT_EQ(cellText(read, "B5"), QString::fromUtf8("光纤 跳线"));
    EXPECT_EQ(cellText(read, "C5"), " leading space");
    EXPECT_EQ(cellText(read, "D5"), "bellless") << "a control character cannot be stored";
    EXPECT_EQ(cell(read, "I5")["value"].toDouble(), 25.0);
    EXPECT_EQ(cell(read, "J5")["value"].toDouble(), 12.5);
    for (const char* reference : {"A5", "I5"}) {
        EXPECT_EQ(cell(read, reference)["font"].toString(), "Arial");
        EXPECT_EQ(cell(read, reference)["horizontal"].toString(), "center");
        EXPECT_EQ(cell(read, reference)["vertical"].toString(), "center");
    }
}

TEST_F(Workbook, KeepsEveryPartAndCellItDoesNotTouch) {
    const QString original = copyOfTemplate(root, "MeasureResultDataTemplate_EN.xlsx");
    const QString edited = root.file("edited.xlsx");
    XlsxWorkbook workbook;
    ASSERT_TRUE(workbook.open(original));
    workbook.setText(5, 1, "SN1");
    ASSERT_TRUE(workbook.saveAs(edited));

    const QJsonObject parts = compareParts(original, edited);
    EXPECT_EQ(names(parts["changed"]), QStringList({"xl/styles.xml", "xl/worksheets/sheet1.xml"}));
    EXPECT_TRUE(parts["removed"].toArray().isEmpty());
    EXPECT_TRUE(parts["added"].toArray().isEmpty());

    const QJsonObject before = readWithOpenpyxl(original);
    QJsonObject after = readWithOpenpyxl(edited);
    QJsonObject afterCells = after["cells"].toObject();
    afterCells.remove("A5");
    EXPECT_EQ(afterCells, before["cells"].toObject()) << "titles keep their values and styles";
    EXPECT_EQ(after["merged"], before["merged"]);
    EXPECT_EQ(after["widths"], before["widths"]);
}

TEST_F(Workbook, AddsItsCellFormatOnceAcrossSaves) {
    const QString path = copyOfTemplate(root, "MeasureResultDataTemplate_EN.xlsx");
    const int templateFormats = readWithOpenpyxl(path)["cellFormats"].toInt();
    for (int row = 5; row <= 7; ++row) {
        XlsxWorkbook workbook;
        ASSERT_TRUE(workbook.open(path));
        EXPECT_EQ(workbook.lastUsedRow(), row - 1);
        workbook.setText(workbook.lastUsedRow() + 1, 1, QString("SN%1").arg(row));
        ASSERT_TRUE(workbook.saveAs(path));
    }
    const QJsonObject read = readWithOpenpyxl(path);
    EXPECT_EQ(read["cellFormats"].toInt(), templateFormats + 1);
    EXPECT_EQ(cellText(read, "A7"), "SN7");
}

TEST_F(Workbook, MergesCellsIntoExistingRowsInOrder) {
    const QString path = copyOfTemplate(root, "MeasureResultDataTemplate_EN.xlsx");
    XlsxWorkbook workbook;
    ASSERT_TRUE(workbook.open(path));
    workbook.setText(7, 2, "seven");
    workbook.setText(5, 2, "five");
    workbook.setText(3, 1, "Connector");   // replaces a title inside an existing row
    workbook.setText(3, 40, "far right");  // after the row's last cell
    ASSERT_TRUE(workbook.saveAs(path));

    const QJsonObject read = readWithOpenpyxl(path);
    EXPECT_EQ(rowOrder(read), QList<int>({1, 2, 3, 4, 5, 7}));
    EXPECT_EQ(cellText(read, "A3"), "Connector");
    EXPECT_EQ(cellText(read, "B3"), "Description") << "its neighbours stay";
    EXPECT_EQ(cellText(read, "AN3"), "far right");
    EXPECT_EQ(cellText(read, "B5"), "five");
    EXPECT_EQ(cellText(read, "B7"), "seven");
}

TEST_F(Workbook, PlacesPicturesWithTheirParts) {
    const QString original = copyOfTemplate(root, "MeasureResultReportTemplate_EN.xlsx");
    const QString edited = root.file("report.xlsx");
    XlsxWorkbook workbook;
    ASSERT_TRUE(workbook.open(original));
    ASSERT_TRUE(workbook.addPicture(samplePicture(QImage::Format_Grayscale8), {26, 1, {280, 280}},
                                    "Original"));
    ASSERT_TRUE(workbook.addPicture(samplePicture(QImage::Format_RGB888, 200), {26, 5, {280, 140}},
                                    "Analyse"));
    ASSERT_TRUE(workbook.saveAs(edited));

    const QJsonArray pictures = readWithOpenpyxl(edited)["pictures"].toArray();
    ASSERT_EQ(pictures.size(), 2);
    EXPECT_EQ(pictures[0]["row"].toInt(), 26);
    EXPECT_EQ(pictures[0]["column"].toInt(), 1);
    EXPECT_EQ(pictures[1]["column"].toInt(), 5);
    EXPECT_EQ(pictures[1]["format"].toString(), "png");
    const QJsonObject parts = compareParts(original, edited);
    EXPECT_EQ(names(parts["added"]),
              QStringList({"xl/drawings/_rels/drawing1.xml.rels", "xl/drawings/drawing1.xml",
                           "xl/media/image1.png", "xl/media/image2.png",
                           "xl/worksheets/_rels/sheet1.xml.rels"}));
    EXPECT_EQ(names(parts["changed"]),
              QStringList({"[Content_Types].xml", "xl/worksheets/sheet1.xml"}));
}

TEST_F(Workbook, AFailedSaveChangesNothing) {
    const QString path = copyOfTemplate(root, "MeasureResultDataTemplate_EN.xlsx");
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
