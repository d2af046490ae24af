// The keys tool run as a person runs it, against a key thread reading the simulated key device.

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <atomic>
#include <mutex>

#include "evdetectthread.h"
#include "keyeventfifo.h"
#include "temproot.h"

namespace {

using Events = std::vector<std::pair<int, int>>;

struct KeysRun {
    int status;
    QByteArray errors;
};

KeysRun keys(const TempRoot& root, const QStringList& arguments) {
    QProcess tool;
    tool.start(KEYS_TOOL, QStringList{"--root", root.path()} + arguments);
    tool.waitForFinished(30000);
    return {tool.exitStatus() == QProcess::NormalExit ? tool.exitCode() : -1,
            tool.readAllStandardError()};
}

TEST(KeysTool, PressesReleasesAndClicksTheSimulatedKeys) {
    TempRoot root;
    fakekernel::KeyEventFifo fifo;
    std::atomic<int> deviceState{6};
    std::mutex mutex;
    Events events;
    EvDetectThread thread(deviceState);
    QObject::connect(&thread, &EvDetectThread::keyPressedEvent,
                     [&](unsigned short code, unsigned short value) {
                         std::lock_guard<std::mutex> lock(mutex);
                         events.emplace_back(code, value);
                     });
    QThread::msleep(550);  // past the trigger's debounce after start-up
    thread.start();
    const QStringList runs[] = {{"click", "trigger"},
                                {"press", "focus-in"},
                                {"release", "focus-in"},
                                {"click", "focus-out"},
                                {"press", "30"}};
    for (const QStringList& arguments : runs) {
        EXPECT_EQ(keys(root, arguments).status, 0) << qPrintable(arguments.join(' '));
    }
    const Events expected = {{279, 1}, {278, 1}, {278, 0}, {277, 1}, {277, 0}, {30, 1}};
    const auto received = [&] {
        std::lock_guard<std::mutex> lock(mutex);
        return events.size();
    };
    for (int waited = 0; waited < 10000 && received() < expected.size(); waited += 10) {
        QThread::msleep(10);
    }
    thread.stop();
    thread.wait();
    std::lock_guard<std::mutex> lock(mutex);
    EXPECT_EQ(events, expected);
}

TEST(KeysTool, RefusesBadWordsAndAKeyDeviceNobodyHolds) {
    TempRoot root;
    const std::pair<QStringList, int> runs[] = {
        {{"push", "trigger"}, 2}, {{"press", "menu"}, 2}, {{"press", "0"}, 2},
        {{"press", "70000"}, 2},  {{"press"}, 2},         {{"press", "trigger"}, 1},
    };
    for (const auto& run : runs) {
        EXPECT_EQ(keys(root, run.first).status, run.second) << qPrintable(run.first.join(' '));
    }
    { fakekernel::KeyEventFifo unheld; }
    EXPECT_EQ(keys(root, {"click", "trigger"}).status, 1) << "a FIFO nobody holds";
    QFile::remove(root.file("dev/event0"));
    QFile file(root.file("dev/event0"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    EXPECT_EQ(keys(root, {"click", "trigger"}).status, 1) << "a regular file";
    EXPECT_EQ(file.size(), 0);
}

}  // namespace
