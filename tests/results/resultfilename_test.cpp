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

TEST(ValidFileName, RefusesEmptyAndOverlongNames) {
    EXPECT_FALSE(isValidFileName(QString()));
    EXPECT_FALSE(isValidFileName(QString(248, 'x'))) << "with \"_EN.xlsx\" it would pass 255";
}

TEST(ValidFileName, RefusesPathSeparatorsAndClimbing) {
    for (const char* name : {"a/b", "a\\b", "/SN1", "..", ".", "../SN1", "SN1/.."}) {
        EXPECT_FALSE(isValidFileName(name)) << name;
    }
}

TEST(ValidFileName, RefusesCharactersFatRefuses) {
    for (const char c : QByteArray("<>:\"|?*")) {
        EXPECT_FALSE(isValidFileName(QString("SN") + QChar(c) + "1")) << c;
    }
}

TEST(ValidFileName, RefusesControlCharacters) {
    for (const ushort code : {0x01, 0x09, 0x0A, 0x1F, 0x7F, 0x85}) {
        EXPECT_FALSE(isValidFileName(QString("SN") + QChar(code) + "1")) << code;
    }
}

TEST(ValidFileName, RefusesATrailingDotOrSpace) {
    EXPECT_FALSE(isValidFileName("SN1."));
    EXPECT_FALSE(isValidFileName("SN1 "));
    EXPECT_FALSE(isValidFileName(" "));
}

TEST(ValidFileName, RefusesReservedDeviceNamesInAnyCaseAndWithExtensions) {
    for (const char* name : {"CON", "prn", "Aux", "nul", "COM1", "com9", "LPT1", "lpt9", "CON.txt",
                             "nul.tar.gz", "Com3.xlsx", "AUX .x"}) {
        EXPECT_FALSE(isValidFileName(name)) << name;
    }
}

TEST(ValidFileName, RefusesBrokenUnicode) {
    EXPECT_FALSE(isValidFileName(QString("SN") + QChar(0xD800)));
}
