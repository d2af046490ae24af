// LibreOffice, when installed, opens what we write and prints it to PDF.

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "resultfiles.h"
#include "resultsample.h"
#include "temproot.h"

namespace {

QString libreOffice() {
    const QString soffice = QStandardPaths::findExecutable("soffice");
    return soffice.isEmpty() ? QStandardPaths::findExecutable("libreoffice") : soffice;
}

// Converts a workbook with a fresh LibreOffice profile (and home) in `work`; the PDF's bytes.
QByteArray convertToPdf(const QString& program, const QString& workbook, const QString& work) {
    QProcess office;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", work);
    office.setProcessEnvironment(environment);
    office.start(program, {"-env:UserInstallation=file://" + work + "/profile", "--headless",
                           "--norestore", "--convert-to", "pdf", "--outdir", work, workbook});
    if (!office.waitForFinished(300000) || office.exitCode() != 0) {
        ADD_FAILURE() << office.readAllStandardError().toStdString();
    }
    QFile pdf(work + "/" + QFileInfo(workbook).completeBaseName() + ".pdf");
    return pdf.open(QIODevice::ReadOnly) ? pdf.readAll() : QByteArray();
}

}  // namespace

TEST(LibreOffice, PrintsTheDataWorkbookAndTheReport) {
    const QString program = libreOffice();
    if (program.isEmpty()) {
        GTEST_SKIP() << "LibreOffice is not installed";
    }
    TempRoot root;
    ASSERT_TRUE(QDir().mkpath(root.file("mnt/sdcard/sd")));
    ASSERT_EQ(saveMeasureResultSF(sampleRecord("SN1")), SaveOutcome::Saved);
    ASSERT_EQ(saveMeasureResultSF(sampleRecord("SN2")), SaveOutcome::Saved);
    const QString day = root.file(kSampleDayFolder);
    for (const QString& workbook : {day + "/MeasureData_EN.xlsx", day + "/Report/SN2_EN.xlsx"}) {
        QTemporaryDir work;
        const QByteArray pdf = convertToPdf(program, workbook, work.path());
        EXPECT_TRUE(pdf.startsWith("%PDF")) << workbook.toStdString();
    }
}
