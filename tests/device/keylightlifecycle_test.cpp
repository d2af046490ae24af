// The key and light threads end when their objects go, even while they wait for a key or for
// their next round: a controller can be destroyed at any time without a running thread left.

#include <gtest/gtest.h>

#include <QDir>

#include "boardstandins.h"
#include "deviceinfothread.h"
#include "evdetectthread.h"
#include "keyeventfifo.h"
#include "temproot.h"
#include "testfiles.h"

TEST(KeyAndLightThreads, AreStartedAndDestroyedFiftyTimes) {
    TempRoot root;
    ASSERT_TRUE(installBoardStandIns());
    ASSERT_TRUE(QDir().mkpath(root.file("sys/bus/i2c/devices/2-0039")));
    ASSERT_TRUE(writeFile(root.file("sys/bus/i2c/devices/2-0039/in_illuminance0"), "100\n"));
    fakekernel::KeyEventFifo fifo;
    std::atomic<int> deviceState{6};
    for (int round = 0; round < 50; ++round) {
        EvDetectThread keys(deviceState);
        DeviceInfoThread light;
        ASSERT_TRUE(keys.isDeviceOpen());
        keys.start();
        light.start();
    }
    // A light thread stopped before its first round sets nothing; the others set the level.
    for (const QByteArray& line : fileContents(boardCommandLogPath()).split('\n')) {
        EXPECT_TRUE(line.isEmpty() || line == "lcdbrightness 78") << line.constData();
    }
}
