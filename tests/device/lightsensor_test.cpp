// The automatic backlight read through the board stand-ins' log: the light sensor's file under
// the platform root in, the "lcdbrightness" commands out. Also the manual brightness and the
// power-off command.

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <chrono>
#include <thread>

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

    void SetUp() override { ASSERT_TRUE(installBoardStandIns()); }

    void setReading(const QByteArray& reading) {
        QDir().mkpath(root.file("sys/bus/i2c/devices/2-0039"));
        ASSERT_TRUE(writeFile(root.file("sys/bus/i2c/devices/2-0039/in_illuminance0"), reading));
    }

    // The board commands so far, once there is one or after `patienceMs`.
    QByteArray commandsWithin(int patienceMs) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(patienceMs);
        while (fileContents(boardCommandLogPath()).isEmpty() &&
               std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return fileContents(boardCommandLogPath());
    }

    // The first command the light thread gives for a reading ("" for none in `patienceMs`).
    QByteArray firstCommandFor(const QByteArray& reading, int patienceMs = 10000) {
        QFile::remove(boardCommandLogPath());
        setReading(reading);
        DeviceInfoThread thread(kPeriodMs);
        thread.start();
        return commandsWithin(patienceMs).split('\n').first();
    }
};

TEST_F(LightSensorTest, IlluminanceSetsTheBacklightLevel) {
    const std::pair<QByteArray, QByteArray> rows[] = {
        {"0\n", "lcdbrightness 80"},    {"49\n", "lcdbrightness 80"},
        {"50\n", "lcdbrightness 79"},   {"2000\n", "lcdbrightness 40"},
        {"3999\n", "lcdbrightness 1"},  {"4000\n", "lcdbrightness 1"},
        {"10000\n", "lcdbrightness 1"}, {"120", "lcdbrightness 78"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(firstCommandFor(row.first), row.second) << row.first.constData();
    }
}

TEST_F(LightSensorTest, UnusableReadingsAreSkipped) {
    for (const QByteArray& reading : {QByteArray(), QByteArray("\n"), QByteArray("dark\n"),
                                      QByteArray("-5\n"), QByteArray(100000, '9')}) {
        EXPECT_EQ(firstCommandFor(reading, 20 * kPeriodMs), "") << reading.left(20).constData();
    }
}

TEST_F(LightSensorTest, PausedThreadLeavesTheBacklightAlone) {
    setReading("0\n");
    DeviceInfoThread thread(kPeriodMs);
    thread.setStopFlag(true);
    thread.start();
    EXPECT_EQ(commandsWithin(20 * kPeriodMs), "");
    thread.setStopFlag(false);
    EXPECT_TRUE(commandsWithin(10000).startsWith("lcdbrightness 80\n"));
}

TEST_F(LightSensorTest, ManualBrightnessAndPowerOffGoToTheBoardStandIns) {
    EXPECT_EQ(setUserBrightness(30), 0);
    EXPECT_EQ(setUserBrightness(100), 0);
    EXPECT_EQ(setUserBrightness(150), 0);
    EXPECT_EQ(powerOff(), 0);
    EXPECT_EQ(fileContents(boardCommandLogPath()),
              "lcdbrightness 70\nlcdbrightness 0\nlcdbrightness 0\nreboot\n");
}

}  // namespace
