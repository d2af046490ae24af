// The result templates: installed under /etc when missing, laid out as the writers expect.

#include "resulttemplates.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>

#include "cellref.h"
#include "resultlayout.h"
#include "temproot.h"
#include "workbookreader.h"

using namespace resultlayout;

namespace {

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString cellAt(const QJsonObject& workbook, int row, int column) {
    return cellText(workbook, cellReference(row, column));
}

}  // namespace

TEST(ResultTemplates, InstallsTheMissingOnesFromTheResources) {
    TempRoot root;
    ASSERT_TRUE(installTemplatesIfMissing());
    ASSERT_EQ(resultTemplateNames().size(), 8);
    for (const QString& name : resultTemplateNames()) {
        const QString installed = root.file("etc/" + name);
        ASSERT_TRUE(QFileInfo::exists(installed)) << name.toStdString();
        EXPECT_EQ(contents(installed), contents(":/templates/" + name));
        EXPECT_FALSE(readWithOpenpyxl(installed).isEmpty()) << name.toStdString();
    }
}

TEST(ResultTemplates, LeavesTemplatesThatAreThereAlone) {
    TempRoot root;
    ASSERT_TRUE(installTemplatesIfMissing());
    const QString edited = root.file("etc/MeasureResultReportTemplate_EN.xlsx");
    QFile file(edited);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("the user's own");
    file.close();
    QFile::remove(root.file("etc/DataEndfaceMT12_CN.xlsx"));
    ASSERT_TRUE(installTemplatesIfMissing());
    EXPECT_EQ(contents(edited), "the user's own");
    EXPECT_TRUE(QFileInfo::exists(root.file("etc/DataEndfaceMT12_CN.xlsx")));
}

TEST(ResultTemplates, LayoutsMatchWhatTheWritersFill) {
    TempRoot root;
    ASSERT_TRUE(installTemplatesIfMissing());
    const QJsonObject data = readWithOpenpyxl(root.file("etc/MeasureResultDataTemplate_EN.xlsx"));
    EXPECT_EQ(cellText(data, "A1"), "Quarvelin Technology Co.,Ltd.");
    EXPECT_EQ(cellText(data, "A2"), "Lumaspecter");
    const QStringList titles = {"ID",           "Description", "Company",  "Measure task",
                                "Measure time", "Operator",    "Pass/Fail"};
    for (int column = 1; column <= titles.size(); ++column) {
        EXPECT_EQ(cellAt(data, kDataTitleRow, column), titles[column - 1]);
    }
    const QStringList subtitles = {"Name", "Inside", "Outside", "Defects", "Scratches"};
    for (int zone = 0; zone < kZoneSlots; ++zone) {
        const int first = kDataFirstZoneColumn + zone * kDataZoneColumns;
        EXPECT_EQ(cellAt(data, kDataTitleRow, first), QString("Zone %1").arg(zone + 1));
        for (int column = 0; column < kDataZoneColumns; ++column) {
            EXPECT_EQ(cellAt(data, kDataSubtitleRow, first + column), subtitles[column]);
        }
    }
    EXPECT_EQ(cellText(data, "H3"), "Zone 1") << "the zones start at column H";

    const QJsonObject report =
        readWithOpenpyxl(root.file("etc/MeasureResultReportTemplate_EN.xlsx"));
    EXPECT_EQ(cellText(report, "A1"), "Measure Report");
    EXPECT_EQ(cellText(report, "A9"), "Product id");
    EXPECT_EQ(cellText(report, "A14"), "Operator");
    EXPECT_EQ(cellText(report, "A16"), "Zone");
    EXPECT_EQ(cellText(report, "D16"), "Defects");
    EXPECT_EQ(cellText(report, "F16"), "Scratchs");
    EXPECT_EQ(cellText(report, "B17"), "Inner");
    EXPECT_EQ(cellText(report, "E17"), "P/F");
    EXPECT_EQ(cellText(report, "A25"), "Original");
    EXPECT_EQ(cellText(report, "E25"), "Analyse");
    EXPECT_EQ(cellText(report, "A38"), "Signature");
    EXPECT_EQ(cellText(report, "E38"), "Date");
}

TEST(ResultTemplates, ChineseTemplatesHaveTheSameLayoutInChinese) {
    TempRoot root;
    ASSERT_TRUE(installTemplatesIfMissing());
    const QJsonObject data = readWithOpenpyxl(root.file("etc/MeasureResultDataTemplate_CN.xlsx"));
    EXPECT_EQ(cellText(data, "A3"), QString::fromUtf8("编号"));
    EXPECT_EQ(cellText(data, "H3"), QString::fromUtf8("区域1"));
    EXPECT_EQ(cellText(data, "L4"), QString::fromUtf8("划痕"));
    const QJsonObject report =
        readWithOpenpyxl(root.file("etc/MeasureResultReportTemplate_CN.xlsx"));
    EXPECT_EQ(cellText(report, "A1"), QString::fromUtf8("测量报告"));
    EXPECT_EQ(cellText(report, "A9"), QString::fromUtf8("产品编号"));
    EXPECT_EQ(cellText(report, "A25"), QString::fromUtf8("原始图像"));
}

TEST(ResultTemplates, MultiFiberTemplatesHaveTwelveFibers) {
    TempRoot root;
    ASSERT_TRUE(installTemplatesIfMissing());
    const QJsonObject data = readWithOpenpyxl(root.file("etc/DataEndfaceMT12_EN.xlsx"));
    EXPECT_EQ(cellText(data, "H3"), "Fiber 1");
    EXPECT_EQ(cellText(data, "AO3"), "Fiber 12") << "three columns per fiber";
    const QJsonObject report = readWithOpenpyxl(root.file("etc/ReportEndfaceMT12_CN.xlsx"));
    EXPECT_EQ(cellText(report, "A18"), QString::fromUtf8("光纤1"));
    EXPECT_EQ(cellText(report, "A29"), QString::fromUtf8("光纤12"));
    EXPECT_EQ(cellText(report, "A31"), QString::fromUtf8("原始图像"));
}
