// The result templates: installed under /etc when missing, laid out as the writers expect.

#include "resulttemplates.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <utility>
#include <vector>

#include "cellref.h"
#include "resultlayout.h"
#include "temproot.h"
#include "testfiles.h"
#include "workbookreader.h"

using namespace resultlayout;

TEST(ResultTemplates, InstallsOnlyTheMissingOnesFromTheResources) {
    TempRoot root;
    ASSERT_TRUE(installTemplatesIfMissing());
    ASSERT_EQ(resultTemplateNames().size(), 8);
    for (const QString& name : resultTemplateNames()) {
        const QString installed = root.file("etc/" + name);
        ASSERT_TRUE(QFileInfo::exists(installed)) << name.toStdString();
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

TEST(ResultTemplates, TheDataLayoutMatchesWhatTheWriterFills) {
    TempRoot root;
    ASSERT_TRUE(installTemplatesIfMissing());
    const QJsonObject data = readWithOpenpyxl(root.file("etc/MeasureResultDataTemplate_EN.xlsx"));
    auto cellAt = [&](int row, int column) { return cellText(data, cellReference(row, column)); };
    EXPECT_EQ(cellText(data, "A1"), "Quarvelin Technology Co.,Ltd.");
    EXPECT_EQ(cellText(data, "A2"), "Lumaspecter");
    const QStringList titles = {"ID",           "Description", "Company",  "Measure task",
                                "Measure time", "Operator",    "Pass/Fail"};
    for (int column = 1; column <= titles.size(); ++column) {
        EXPECT_EQ(cellAt(kDataTitleRow, column), titles[column - 1]);
    }
    const QStringList subtitles = {"Name", "Inside", "Outside", "Defects", "Scratches"};
    for (int zone = 0; zone < kZoneSlots; ++zone) {
        const int first = kDataFirstZoneColumn + zone * kDataZoneColumns;
        EXPECT_EQ(cellAt(kDataTitleRow, first), QString("Zone %1").arg(zone + 1));
        for (int column = 0; column < kDataZoneColumns; ++column) {
            EXPECT_EQ(cellAt(kDataSubtitleRow, first + column), subtitles[column]);
        }
    }
    EXPECT_EQ(cellText(data, "H3"), "Zone 1") << "the zones start at column H";
}

// The labels beside the cells and pictures the writers fill, in every language and layout.
TEST(ResultTemplates, LabelsSitWhereTheWritersExpectThem) {
    TempRoot root;
    ASSERT_TRUE(installTemplatesIfMissing());
    const struct {
        const char* templateName;
        std::vector<std::pair<const char*, const char*>> labels;
    } templates[] = {
        {"MeasureResultReportTemplate_EN.xlsx",
         {{"A9", "Product id"},
          {"A14", "Operator"},
          {"A16", "Zone"},
          {"D16", "Defects"},
          {"F16", "Scratchs"},
          {"B17", "Inner"},
          {"E17", "P/F"},
          {"A25", "Original"},
          {"E25", "Analyse"}}},
        {"MeasureResultDataTemplate_CN.xlsx", {{"A3", "编号"}, {"H3", "区域1"}, {"L4", "划痕"}}},
        {"MeasureResultReportTemplate_CN.xlsx",
         {{"A1", "测量报告"}, {"A9", "产品编号"}, {"A25", "原始图像"}}},
        // Twelve fibers, three columns each.
        {"DataEndfaceMT12_EN.xlsx", {{"H3", "Fiber 1"}, {"AO3", "Fiber 12"}}},
        {"ReportEndfaceMT12_CN.xlsx", {{"A18", "光纤1"}, {"A29", "光纤12"}, {"A31", "原始图像"}}},
    };
    for (const auto& t : templates) {
        const QJsonObject read = readWithOpenpyxl(root.file(QString("etc/") + t.templateName));
        for (const auto& [cell, label] : t.labels) {
            EXPECT_EQ(cellText(read, cell), QString::fromUtf8(label))
                << t.templateName << " " << cell;
        }
    }
}
