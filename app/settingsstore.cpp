#include "settingsstore.h"

#include <QFile>
#include <QHash>

#include "atomicfile.h"
#include "platformroot.h"
#include "shellrunner.h"
#include "tasklist.h"

namespace {

// What a reader supplies when the key is missing: the factory values, except the report texts
// (empty) and the power-off time (20 minutes).
const QHash<QString, QVariant>& readerDefaults() {
    static const QHash<QString, QVariant> defaults = {
        {SettingsStore::kAutoFocus, false},
        {SettingsStore::kAutoIdInc, true},
        {SettingsStore::kDescriber, QString()},
        {SettingsStore::kExpTimeMf, 45},
        {SettingsStore::kExpTimeSf, 20},
        {SettingsStore::kGrayValueMf, 85},
        {SettingsStore::kGrayValueSf, 185},
        {SettingsStore::kLanguage, 0},
        {SettingsStore::kLastTaskUuid, QString()},
        {SettingsStore::kLcdAutoBrightness, true},
        {SettingsStore::kLcdBrightness, 50},
        {SettingsStore::kManufacturer, QString()},
        {SettingsStore::kOperator, QString()},
        {SettingsStore::kOverlay, false},
        {SettingsStore::kSaveType, 0},
        {SettingsStore::kShutdownTime, 2},
        {SettingsStore::kSnText, QStringLiteral("SN1234567890")},
    };
    return defaults;
}

bool copyResourceOver(const QString& resource, const QString& path) {
    QFile factory(resource);
    return factory.open(QIODevice::ReadOnly) && writeFileAtomically(path, factory.readAll());
}

}  // namespace

QString settingsFilePath() {
    return platformPath("/etc/toxlocal.conf");
}

SettingsStore::SettingsStore() : settings_(settingsFilePath(), QSettings::IniFormat) {
    // Operator names and ids are often Chinese: read the file as UTF-8 (as any editor writes
    // it) and write UTF-8 rather than Qt's own escapes, so that the texts reach the workbooks
    // as typed.
    settings_.setIniCodec("UTF-8");
}

QVariant SettingsStore::valueOrDefault(const char* key) const {
    return settings_.value(key, readerDefaults().value(key));
}

bool SettingsStore::boolValue(const char* key) const {
    return valueOrDefault(key).toBool();
}

int SettingsStore::intValue(const char* key) const {
    return valueOrDefault(key).toInt();
}

QString SettingsStore::textValue(const char* key) const {
    return valueOrDefault(key).toString();
}

bool SettingsStore::setValue(const char* key, const QVariant& value) {
    settings_.setValue(key, value);
    settings_.sync();  // the ini file is replaced in one step by a renamed temporary file
    runShellCommand("sync");
    return settings_.status() == QSettings::NoError;
}

bool SettingsStore::increaseConnectorId(QString& next) {
    next = idIncrease(textValue(kSnText));
    return setValue(kSnText, next);
}

bool SettingsStore::restoreFactorySettings() {
    const bool settingsRestored = copyResourceOver(":/conf/toxlocal.conf", settingsFilePath());
    const bool tasksRestored = copyResourceOver(":/conf/taskinfo.conf", taskFilePath());
    runShellCommand("sync");
    settings_.sync();  // picks up the restored file
    return settingsRestored && tasksRestored;
}

QString SettingsStore::idIncrease(const QString& id) {
    const QString trimmed = id.trimmed();
    int tailStart = trimmed.size();
    while (tailStart > 0 && trimmed[tailStart - 1].isDigit() &&
           trimmed[tailStart - 1].unicode() < 128) {
        --tailStart;
    }
    const QString tail = trimmed.mid(tailStart);
    return trimmed.left(tailStart) + (tail.isEmpty() ? QStringLiteral("1") : bigNumAddOne(tail));
}

QString SettingsStore::bigNumAddOne(const QString& digits) {
    QString sum = digits;
    for (int i = sum.size() - 1; i >= 0; --i) {
        if (sum[i] != '9') {
            sum[i] = QChar(sum[i].unicode() + 1);
            return sum;
        }
        sum[i] = '0';
    }
    return "1" + sum;
}
