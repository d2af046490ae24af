#include "uuid.h"

#include <QRandomGenerator>

void createGuuid(unsigned char bytes[16]) {
    QRandomGenerator* random = QRandomGenerator::system();
    for (int i = 0; i < 16; ++i) {
        bytes[i] = static_cast<unsigned char>(random->bounded(256));
    }
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0f) | 0x40);  // version 4
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3f) | 0x80);  // RFC 4122 variant
}

QString createUUID() {
    unsigned char bytes[16];
    createGuuid(bytes);
    QString text;
    for (int i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            text += '-';
        }
        text += QString("%1").arg(bytes[i], 2, 16, QChar('0'));
    }
    return text;
}
