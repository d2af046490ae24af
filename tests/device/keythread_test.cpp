// The key thread read through the simulated key device, a FIFO under the platform root, with
// the keys tool and bare records as writers; and the key and light threads' ends.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <ctime>
#include <mutex>
#include <optional>

#include "deviceinfothread.h"
#include "evdetectthread.h"
#include "keyeventfifo.h"
#include "temproot.h"

namespace {

using Events = std::vector<std::pair<int, int>>;  // code, value
using fakekernel::keyRecords;

// Written behind a case's records: once its event is in, the thread has handled them all.
constexpr unsigned short kMarker = KEY_UNKNOWN;

int keysTool(const TempRoot& root, const QStringList& words) {
    return QProcess::execute(KEYS_TOOL, QStringList{"--root", root.path()} + words);
}

struct KeyThreadTest : ::testing::Test {
    TempRoot root;
    std::optional<fakekernel::KeyEventFifo> fifo{std::in_place};
    std::atomic<int> state{6};
    std::atomic<int64_t> nowMs{0};
    std::mutex mutex;
    Events events;
    EvDetectThread thread{state, [this] { return nowMs.load(); }};

    void SetUp() override {
        QObject::connect(&thread, &EvDetectThread::keyPressedEvent,
                         [this](unsigned short code, unsigned short value) {
                             std::lock_guard<std::mutex> lock(mutex);
                             events.emplace_back(code, value);
                         });
        thread.start();
    }

    // The events up to the marker, waiting for it at most ten seconds.
    Events eventsUntilMarker() {
        for (int waited = 0; waited < 10000; waited += 5) {
            {
                std::lock_guard<std::mutex> lock(mutex);
                if (!events.empty() && events.back().first == kMarker) {
                    const Events seen(events.begin(), events.end() - 1);
                    events.clear();
                    return seen;
                }
            }
            QThread::msleep(5);
        }
        return {{-1, -1}};
    }

    Events eventsFor(const void* bytes, size_t size) {
        EXPECT_TRUE(fifo->write(bytes, size) && fifo->write(keyRecords(kMarker, 1)));
        return eventsUntilMarker();
    }
    Events eventsFor(const std::vector<input_event>& records) {
        return eventsFor(records.data(), records.size() * sizeof(input_event));
    }
};

TEST_F(KeyThreadTest, RecordsBecomeKeyEventsAsTheyAreButSynchronisationAndScanCodes) {
    const std::vector<input_event> records = {
        {{}, EV_SYN, SYN_REPORT, 0}, {{}, EV_MSC, MSC_SCAN, 0x90001},
        {{}, EV_MSC, MSC_RAW, 7},    {{}, EV_MSC, MSC_SERIAL, 5},
        {{}, EV_KEY, KEY_A, 1},      {{}, EV_KEY, KEY_A, 2},
        {{}, EV_KEY, KEY_A, 0},      {{}, EV_KEY, 278, 1},
        {{}, EV_KEY, 278, 2},  // a held focus key repeats: not a release
        {{}, EV_KEY, 278, 0},        {{}, EV_REL, REL_X, 5},
    };
    const Events expected = {{MSC_SERIAL, 5}, {KEY_A, 1}, {KEY_A, 2}, {KEY_A, 0},
                             {278, 1},        {278, 2},   {278, 0},   {REL_X, 5}};
    EXPECT_EQ(eventsFor(records), expected);
}

TEST_F(KeyThreadTest, RecordsWrittenInPartsAreReadWhole) {
    const std::vector<input_event> records = {{{}, EV_KEY, KEY_A, 1}, {{}, EV_KEY, 278, 2}};
    const auto* bytes = reinterpret_cast<const char*>(records.data());
    const size_t size = sizeof(input_event);
    for (const size_t cut : {size_t(1), size - 1, size + 5, 2 * size - 1}) {
        ASSERT_TRUE(fifo->write(bytes, cut));
        QThread::msleep(20);  // the thread reads the first part alone
        EXPECT_EQ(eventsFor(bytes + cut, 2 * size - cut), (Events{{KEY_A, 1}, {278, 2}})) << cut;
    }
}

TEST_F(KeyThreadTest, TriggerOnlyPressedOutsideTheDebounceAndInStatesThatTakeIt) {
    // {ms, device state, value, emitted}; the thread was made at 0 ms, its first "press".
    const int rows[][4] = {
        {400, 6, 1, 0},  {600, 6, 1, 1},  {1000, 6, 1, 0}, {1200, 6, 1, 1}, {1700, 6, 1, 0},
        {1900, 6, 0, 0}, {2500, 1, 1, 0}, {2500, 2, 1, 0}, {2500, 7, 1, 0}, {2500, 3, 1, 1},
        {3100, 8, 1, 1}, {3700, 9, 1, 1}, {4300, 6, 2, 0},
    };
    for (const auto& row : rows) {
        nowMs = row[0];
        state = row[1];
        const Events expected = row[3] ? Events{{279, 1}} : Events{};
        EXPECT_EQ(eventsFor(keyRecords(279, row[2])), expected)
            << row[0] << " ms, state " << row[1] << ", value " << row[2];
    }
}

TEST_F(KeyThreadTest, KeysToolWritesWholeKeysAndRefusesBadWords) {
    nowMs = 1000;
    const std::pair<QStringList, int> runs[] = {
        {{"click", "trigger"}, 0},   {{"press", "focus-in"}, 0},
        {{"click", "focus-out"}, 0}, {{"release", "30"}, 0},
        {{"push", "trigger"}, 2},    {{"press", "0"}, 2},
        {{"press", "70000"}, 2},     {{"press"}, 2},
    };
    for (const auto& run : runs) {
        EXPECT_EQ(keysTool(root, run.first), run.second) << qPrintable(run.first.join(' '));
    }
    EXPECT_EQ(eventsFor({}), (Events{{279, 1}, {278, 1}, {277, 1}, {277, 0}, {30, 0}}));
}

// Garbage first, then the simulation gone: the last writer's close ends the FIFO, the thread
// backs off between reads of the end instead of spinning, forgets the half record left and
// reads the next writer's records from their start.
TEST_F(KeyThreadTest, GarbageAndAWriterThatClosesLeaveTheKeysWorking) {
    std::vector<unsigned char> garbage(40 * sizeof(input_event));
    for (size_t i = 0; i < garbage.size(); ++i)
        garbage[i] = (i * 89 + 7) % 251;
    eventsFor(garbage.data(), garbage.size());
    fifo.reset();
    EXPECT_EQ(keysTool(root, {"press", "31"}), 0);  // a writer that comes and goes
    const int writer = ::open(QFile::encodeName(root.file("dev/event0")), O_WRONLY);
    EXPECT_EQ(::write(writer, keyRecords(KEY_C, 1).data(), 10), 10);
    ::close(writer);
    const std::clock_t before = std::clock();  // processor time
    QThread::msleep(500);
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 10) << "the thread spins on the end";
    fifo.emplace();
    EXPECT_EQ(eventsFor(keyRecords(KEY_B, 1)), (Events{{31, 1}, {KEY_B, 1}}));
}

TEST(KeyThread, WithoutAKeyDeviceTheThreadEndsAtOnce) {
    for (const char* there : {"", "file", "folder"}) {
        TempRoot root;
        QDir().mkpath(root.file(QString(there) == "folder" ? "dev/event0" : "dev"));
        QFile file(root.file("dev/event0"));
        EXPECT_TRUE(QString(there) != "file" || file.open(QIODevice::WriteOnly));
        std::atomic<int> state{6};
        EvDetectThread thread(state);
        EXPECT_FALSE(thread.isDeviceOpen());
        thread.start();
        EXPECT_TRUE(thread.wait(5000));
    }
}

TEST(KeyAndLightThreads, AreStartedAndDestroyedFiftyTimes) {
    TempRoot root;
    fakekernel::KeyEventFifo fifo;
    std::atomic<int> state{6};
    for (int round = 0; round < 50; ++round) {
        EvDetectThread keys(state);
        DeviceInfoThread light;
        ASSERT_TRUE(keys.isDeviceOpen());
        keys.start();
        light.start();
    }
}

}  // namespace
