#include "resultfiles.h"

#include <QFile>
#include <QFileInfo>

#include "atomicfile.h"
#include "filelock.h"
#include "folderpath.h"
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
bool copyDataTemplate(const QString& dataTemplate, const QString& dataFile, QString& error) {
    QFile source(dataTemplate);
    if (!source.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("cannot read %1: %2").arg(dataTemplate, source.errorString());
        return false;
    }
    return writeFileAtomically(dataFile, source.readAll(), &error);
}

// Writes what the mode asks for into the day folder; false with the first problem in error.
bool saveDueFiles(const SingleFiberResultRecord& record, const QString& dayFolder, QString& error) {
    if (!makeFolderPath(dayFolder + "/Report", &error)) {
        return false;
    }
    // The day's workbook is read, changed and replaced by whoever holds this lock. A lock
    // within this program would not do: the batch tool and the instrument may share a card,
    // and two read-modify-writes at once lose one of the rows.
    const FileLock lock(dayFolder + "/.MeasureData.lock");
    if (!lock.locked()) {
        error = lock.error();
        return false;
    }
    const LanguageFiles files = languageFiles(record.language);
    const QString dataFile = dayFolder + files.dataFileName;
    bool saved =
        QFileInfo::exists(dataFile) || copyDataTemplate(files.dataTemplate, dataFile, error);
    if (saved && writesData(record.saveMode)) {
        saved = saveMeasureResultDataAsXlsxSF(dataFile, record, &error);
    }
    if (writesReport(record.saveMode)) {
        const QString reportFile = dayFolder + "/Report/" + record.connectorId + files.reportSuffix;
        QString reportError;
        if (!saveMeasureResultReportAsXlsxSF(reportFile, files.reportTemplate, record,
                                             &reportError)) {
            error = saved ? reportError : error;
            saved = false;
        }
    }
    return saved;
}

}  // namespace

SaveOutcome saveMeasureResultSF(const SingleFiberResultRecord& record, QString* failure) {
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
    QString error;
    const bool saved = saveDueFiles(record, resultDayFolder(record.time), error);
    runShellCommand("sync");
    if (!saved && failure != nullptr) {
        *failure = error;
    }
    return saved ? SaveOutcome::Saved : SaveOutcome::Failed;
}
