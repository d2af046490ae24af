#pragma once

// Where the single-fiber result workbooks keep their values. The template generator lays the
// templates out by these numbers and the result writers fill the cells they name, so the two
// cannot drift apart. Rows and columns count from 1 ("C9" is row 9, column 3).
namespace resultlayout {

constexpr int kZoneSlots = 6;  // zone groups in both workbooks: as many as a task can have

// Data workbook: maker and product in rows 1 and 2, titles in rows 3 and 4 (the zone titles
// span five columns each), then one measurement per row.
constexpr int kDataTitleRow = 3;
constexpr int kDataSubtitleRow = 4;
constexpr int kDataFirstRow = 5;
constexpr int kDataFixedColumns = 7;  // ID, Description, Company, task, time, Operator, verdict
constexpr int kDataFirstZoneColumn = kDataFixedColumns + 1;  // column H
constexpr int kDataZoneColumns = 5;  // name, inner and outer diameter, defects, scratches

// Report workbook: title and maker on top, the labels of the values in column A from row 9
// (product id, description, company, task, time, operator, verdict), the zone table with its
// titles in rows 16 and 17, the two pictures under their captions.
constexpr int kReportColumns = 7;  // A to G
constexpr int kReportFirstValueRow = 9;
constexpr int kReportValueRows = 7;
constexpr int kReportValueColumn = 3;  // column C, beside the labels in A and B
constexpr int kReportTableTitleRow = 16;
constexpr int kReportTableSubtitleRow = 17;
constexpr int kReportFirstZoneRow = 18;
constexpr int kReportCaptionRow = 25;
constexpr int kReportPictureRow = 26;
constexpr int kReportPictureRows = 12;         // rows 26 to 37 are kept for the pictures
constexpr int kReportPictureRowHeightPt = 18;  // 12 rows of 18 pt: 288 pixels
constexpr int kReportOriginalColumn = 1;       // the measured image, under the caption in A
constexpr int kReportAnalyseColumn = 5;        // the overlay, under the caption in E
constexpr int kReportPictureColumns = 3;       // each caption and picture spans three columns
constexpr int kReportColumnWidthChars = 13;    // 96 pixels: three columns hold 288 pixels
constexpr int kReportPictureSidePx = 280;      // the larger side of a picture as shown
// The signature and date fields follow in the row under the pictures (row 38).

}  // namespace resultlayout
