#pragma once

#include <QSettings>
#include <QString>
#include <QVariant>

// The user settings of the instrument, "/etc/toxlocal.conf" in ini format, every key in the
// [General] group, in UTF-8. A missing key reads as its default; every write reaches the file at
// once (replacing it in one step) and is followed by "sync".
class SettingsStore {
public:
    // The keys, spelled as in the file.
    static constexpr const char* kAutoFocus = "AUTO_FOCUS";
    static constexpr const char* kAutoIdInc = "AUTO_ID_INC";
    static constexpr const char* kDescriber = "DESCRIBER";
    static constexpr const char* kExpTimeMf = "EXP_TIME_MF";
    static constexpr const char* kExpTimeSf = "EXP_TIME_SF";
    static constexpr const char* kGrayValueMf = "GRAY_VALUE_MF";
    static constexpr const char* kGrayValueSf = "GRAY_VALUE_SF";
    static constexpr const char* kLanguage = "LANGUAGE";
    static constexpr const char* kLastTaskUuid = "LAST_TASK_UUID";
    static constexpr const char* kLcdAutoBrightness = "LCD_AUTO_BRIGHTNESS";
    static constexpr const char* kLcdBrightness = "LCD_BRIGHTNESS";
    static constexpr const char* kManufacturer = "MANUFACTURER";
    static constexpr const char* kOperator = "OPERATOR";
    static constexpr const char* kOverlay = "OVERLAY";
    static constexpr const char* kSaveType = "SAVE_TYPE";
    static constexpr const char* kShutdownTime = "SHUTDOWN_TIME";
    static constexpr const char* kSnText = "SN_TEXT";

    SettingsStore();

    bool boolValue(const char* key) const;
    int intValue(const char* key) const;
    QString textValue(const char* key) const;

    // Stores the value; returns false when the file could not be written.
    bool setValue(const char* key, const QVariant& value);

    // Advances "SN_TEXT" to the next connector id (idIncrease), given in `next`. Returns false
    // when the settings file could not be written; the file then keeps the old id.
    bool increaseConnectorId(QString& next);

    // Puts the factory settings and the factory task file back over their files in /etc and
    // runs "sync". Returns false when either could not be written.
    bool restoreFactorySettings();

    // The next connector id: the trailing number of the trimmed id plus one, the head kept
    // ("SN1234567890" -> "SN1234567891", "A99" -> "A100", "0099" -> "0100"). An id without
    // trailing digits gets a "1" appended ("ABC" -> "ABC1", "" -> "1").
    static QString idIncrease(const QString& id);

    // A decimal number of any length plus one, digit by digit; a carry out of the leftmost
    // digit lengthens it ("999" -> "1000"). Leading zeros are kept.
    static QString bigNumAddOne(const QString& digits);

private:
    QVariant valueOrDefault(const char* key) const;

    mutable QSettings settings_;
};

// The path of the settings file under the platform root.
QString settingsFilePath();
