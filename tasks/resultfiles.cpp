#include "resultfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMutex>
#include <QMutexLocker>

#include "atomicfile.h"
#include "platformroot.h"
#include "resulttemplates.h"
#include "shellrunner.h"

namespace {

struct LanguageFiles {
    QString dataTemplate;
    QString reportTemplate;
    QString dataFileName;  // "/MeasureData_EN.xlsx", inside the day folder
    QString reportSuffix;  // "_EN.xlsx", behind the connector id
};

LanguageFiles languageFiles(int language) {
    const QString tag = language != 0 ? QStringLiteral("_CN") : QStringLiteral("_EN");
    return {resultTemplatePath("MeasureResultDataTemplate" + tag + ".xlsx"),
            resultTemplatePath("MeasureResultReportTemplate" + tag + ".xlsx"),
            "/MeasureData" + tag + ".xlsx", tag + ".xlsx"};
}

bool isDue(int saveMode, bool passed) {
    switch (saveMode) {
        case kSaveData:
        case kSaveReport:
        case kSaveDataAndReport:
            return true;
        case kSavePassedDataAndReport:
            return passed;
        case kSaveFailedDataAndReport:
            return !passed;
        default:
            return false;
    }
}

bool writesData(int saveMode) {
    return saveMode != kSaveReport;
}

bool writesReport(int saveMode) {
    return saveMode != kSaveData;
}

// The template is copied in one step: a power cut during the copy must not leave a half-copied
// workbook under the day's name, which every later measurement of the day would fail to open.
bool copyDataTemplate(const QString& dataTemplate, const QString& dataFile) {
    QFile source(dataTemplate);
    return source.open(QIODevice::ReadOnly) && writeFileAtomically(dataFile, source.readAll());
}

bool prepareDayFolder(const QString& dayFolder, const QString& dataFile,
                      const QString& dataTemplate) {
    if (!QDir().mkpath(dayFolder + "/Report")) {
        qWarning("result folder %s cannot be created", qPrintable(dayFolder));
        return false;
    }
    return QFileInfo::exists(dataFile) || copyDataTemplate(dataTemplate, dataFile);
}

}  // namespace

SaveOutcome saveMeasureResultSF(const SingleFiberResultRecord& record) {
    if (record.saveMode == kSaveNothing) {
        return SaveOutcome::NotSaved;
    }
    if (!isSdCardExists()) {
        return SaveOutcome::NoSdCard;
    }
    if (!isValidFileName(record.connectorId)) {
        return SaveOutcome::InvalidFileName;
    }
    if (!isDue(record.saveMode, record.passed)) {
        return SaveOutcome::NotSaved;
    }
    // One save at a time: measurements saved from several threads append to the same day's
    // workbook.
    static QMutex saving;
    const QMutexLocker lock(&saving);
    const LanguageFiles files = languageFiles(record.language);
    const QString dayFolder = resultDayFolder(record.time);
    const QString dataFile = dayFolder + files.dataFileName;
    bool saved = prepareDayFolder(dayFolder, dataFile, files.dataTemplate);
    if (saved && writesData(record.saveMode)) {
        saved = saveMeasureResultDataAsXlsxSF(dataFile, record);
    }
    if (writesReport(record.saveMode)) {
        const QString reportFile = dayFolder + "/Report/" + record.connectorId + files.reportSuffix;
        saved = saveMeasureResultReportAsXlsxSF(reportFile, files.reportTemplate, record) && saved;
    }
    runShellCommand("sync");
    return saved ? SaveOutcome::Saved : SaveOutcome::NotSaved;
}
