// Which connector ids can name a report file.

#include "resultfilename.h"

#include <gtest/gtest.h>

#include "workbookreader.h"

TEST(ValidFileName, AcceptsOrdinaryIds) {
    for (const QString& name :
         {QString("SN1234567890"), QString("A-01_b"), QString("fiber.7"),
          QString::fromUtf8("光纤01"), QString("a..b"), QString(" lead"), QString("CONSOLE"),
          QString("COM10"), QString("LPT0"), QString("xCON"), QString(247, 'x')}) {
        EXPECT_TRUE(isValidFileName(name)) << name.toStdString();
    }
}

TEST(ValidFileName, RefusesNamesThatCannotBeAFileOnTheCard) {
    // Empty, too long once "_EN.xlsx" is added (255 at most), broken UTF-16.
    QStringList refused = {QString(), QString(248, 'x'), QString("SN") + QChar(0xD800)};
    // Path separators and climbing; a trailing dot or space; reserved device names in any
    // case and with extensions.
    for (const char* name :
         {"a/b",  "a\\b", "/SN1",    "..",         ".",         "../SN1", "SN1/..", "SN1.",
          "SN1 ", " ",    "CON",     "prn",        "Aux",       "nul",    "COM1",   "com9",
          "LPT1", "lpt9", "CON.txt", "nul.tar.gz", "Com3.xlsx", "AUX .x"}) {
        refused << name;
    }
    for (const char c : QByteArray("<>:\"|?*")) {  // what FAT refuses
        refused << QString("SN") + QChar(c) + "1";
    }
    for (const ushort code : {0x01, 0x09, 0x0A, 0x1F, 0x7F, 0x85}) {  // control characters
        refused << QString("SN") + QChar(code) + "1";
    }
    for (const QString& name : refused) {
        EXPECT_FALSE(isValidFileName(name)) << name.toUtf8().toPercentEncoding().toStdString();
    }
}
