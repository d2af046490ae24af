// The automatic backlight seen in the board stand-ins' log: the light sensor's file under the
// platform root in, the "lcdbrightness" commands out; the manual brightness and power-off.

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QThread>

#include "boardstandins.h"
#include "deviceinfothread.h"
#include "lcdbrightness.h"
#include "poweroff.h"
#include "temproot.h"
#include "testfiles.h"

namespace {

constexpr int kPeriodMs = 10;

struct LightSensorTest : ::testing::Test {
    TempRoot root;

    void SetUp() override {
        ASSERT_TRUE(installBoardStandIns());
        ASSERT_TRUE(QDir().mkpath(root.file("sys/bus/i2c/devices/2-0039")));
    }

    // The first board command the light thread gives within `patienceMs` ("" for none).
    QByteArray firstCommandFor(const QByteArray& reading, int patienceMs, bool paused = false) {
        QFile::remove(boardCommandLogPath());
        writeFile(root.file("sys/bus/i2c/devices/2-0039/in_illuminance0"), reading);
        DeviceInfoThread thread(kPeriodMs);
        thread.setStopFlag(paused);
        thread.start();
        for (int waited = 0; waited < patienceMs; waited += 5) {
            if (!fileContents(boardCommandLogPath()).isEmpty())
                break;
            QThread::msleep(5);
        }
        return fileContents(boardCommandLogPath()).split('\n').first();
    }
};

TEST_F(LightSensorTest, BacklightFollowsTheLightUnlessPausedOrTheReadingIsUnusable) {
    const std::pair<QByteArray, QByteArray> rows[] = {
        {"0\n", "lcdbrightness 80"},
        {"2000\n", "lcdbrightness 40"},
        {"3999\n", "lcdbrightness 1"},
        {"4000\n", "lcdbrightness 1"},
        {"10000", "lcdbrightness 1"},
        {"", ""},
        {"dark\n", ""},
        {"-5\n", ""},
    };
    for (const auto& row : rows) {
        const int patienceMs = row.second.isEmpty() ? 20 * kPeriodMs : 10000;
        EXPECT_EQ(firstCommandFor(row.first, patienceMs), row.second) << row.first.left(9).data();
    }
    EXPECT_EQ(firstCommandFor("0\n", 20 * kPeriodMs, true), "") << "paused";
}

TEST_F(LightSensorTest, ManualBrightnessAndPowerOffGoToTheBoardStandIns) {
    EXPECT_EQ(setUserBrightness(30) + setUserBrightness(150) + powerOff(), 0);
    EXPECT_EQ(fileContents(boardCommandLogPath()), "lcdbrightness 70\nlcdbrightness 0\nreboot\n");
}

}  // namespace
