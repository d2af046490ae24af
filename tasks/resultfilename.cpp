#include "resultfilename.h"

#include <QRegularExpression>

namespace {

constexpr int kLongestFileName = 255;   // UTF-16 units, FAT's long names
constexpr int kReportSuffixLength = 8;  // "_EN.xlsx" or "_CN.xlsx"

bool hasForbiddenCharacter(const QString& name) {
    static const QString forbidden = QStringLiteral("<>:\"/\\|?*");
    for (const QChar c : name) {
        if (c.category() == QChar::Other_Control || forbidden.contains(c)) {
            return true;
        }
    }
    return false;
}

bool endsWithDotOrSpace(const QString& name) {
    return name.endsWith('.') || name.endsWith(' ');
}

// The device names are reserved whatever follows their first dot, and spaces before that dot
// do not help.
bool isReservedDeviceName(const QString& name) {
    static const QRegularExpression reserved(
        QStringLiteral("^(CON|PRN|AUX|NUL|COM[1-9]|LPT[1-9]) *(\\..*)?$"),
        QRegularExpression::CaseInsensitiveOption);
    return reserved.match(name).hasMatch();
}

}  // namespace

bool isValidFileName(const QString& name) {
    return !name.isEmpty() && name.size() + kReportSuffixLength <= kLongestFileName &&
           name.isValidUtf16() && !hasForbiddenCharacter(name) && !endsWithDotOrSpace(name) &&
           !isReservedDeviceName(name);
}
