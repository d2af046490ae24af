// The key thread read through the simulated key device, a FIFO under the platform root: which
// records become key events, records that arrive in parts, the trigger key's debounce and
// device states, and a device that fails or is not there.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <mutex>
#include <thread>

#include "evdetectthread.h"
#include "keyeventfifo.h"
#include "systemcalls.h"
#include "temproot.h"

namespace {

using Event = std::pair<int, int>;  // code, value
using Events = std::vector<Event>;
using fakekernel::keyRecords;

// Written behind the records of a case: once its event is in, the thread has handled them all.
constexpr unsigned short kMarkerKey = KEY_UNKNOWN;

input_event record(unsigned short type, unsigned short code, int value) {
    input_event event{};
    event.type = type;
    event.code = code;
    event.value = value;
    return event;
}

// The thread's events, taken in its own thread.
class Recorded {
public:
    void add(unsigned short code, unsigned short value) {
        std::lock_guard<std::mutex> lock(mutex_);
        events_.emplace_back(code, value);
        arrived_.notify_all();
    }

    // The events before the marker (which is dropped), waiting for it at most ten seconds.
    Events untilMarker() {
        std::unique_lock<std::mutex> lock(mutex_);
        const auto isMarker = [](const Event& e) { return e.first == kMarkerKey; };
        arrived_.wait_for(lock, std::chrono::seconds(10), [&] {
            return std::find_if(events_.begin(), events_.end(), isMarker) != events_.end();
        });
        const auto marker = std::find_if(events_.begin(), events_.end(), isMarker);
        EXPECT_NE(marker, events_.end()) << "the marker key never came";
        Events before(events_.begin(), marker);
        events_.erase(events_.begin(), marker == events_.end() ? marker : marker + 1);
        return before;
    }

private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    Events events_;
};

struct KeyThreadTest : ::testing::Test {
    TempRoot root;
    fakekernel::KeyEventFifo fifo;
    std::atomic<int> deviceState{6};
    std::atomic<int64_t> nowMs{0};
    Recorded recorded;
    EvDetectThread thread{deviceState, [this] { return nowMs.load(); }};

    void SetUp() override {
        ASSERT_TRUE(fifo.isOpen());
        ASSERT_TRUE(thread.isDeviceOpen());
        QObject::connect(
            &thread, &EvDetectThread::keyPressedEvent,
            [this](unsigned short code, unsigned short value) { recorded.add(code, value); });
        thread.start();
    }

    // The events for the records (written in one go), in order.
    Events eventsFor(const std::vector<input_event>& records) {
        EXPECT_TRUE(fifo.write(records));
        EXPECT_TRUE(fifo.write(keyRecords(kMarkerKey, 1)));
        return recorded.untilMarker();
    }
};

TEST_F(KeyThreadTest, RecordsBecomeKeyEventsAsTheyAreButSynchronisationAndScanCodes) {
    struct Row {
        input_event in;
        bool emitted;
    };
    const Row rows[] = {
        {record(EV_SYN, SYN_REPORT, 0), false}, {record(EV_MSC, MSC_SCAN, 0x90001), false},
        {record(EV_MSC, MSC_RAW, 7), false},    {record(EV_MSC, MSC_SERIAL, 5), true},
        {record(EV_KEY, KEY_A, 1), true},       {record(EV_KEY, KEY_A, 2), true},
        {record(EV_KEY, KEY_A, 0), true},       {record(EV_KEY, 278, 1), true},
        {record(EV_KEY, 278, 2), true},  // a held focus key repeats, it is not released
        {record(EV_KEY, 277, 2), true},         {record(EV_KEY, 278, 0), true},
        {record(EV_REL, REL_X, 5), true},
    };
    std::vector<input_event> records;
    Events expected;
    for (const Row& row : rows) {
        records.push_back(row.in);
        if (row.emitted) {
            expected.emplace_back(row.in.code, row.in.value);
        }
    }
    EXPECT_EQ(eventsFor(records), expected);
}

TEST_F(KeyThreadTest, RecordsWrittenInPartsAreReadWhole) {
    std::vector<input_event> records = keyRecords(KEY_A, 1);
    const std::vector<input_event> more = keyRecords(278, 2);
    records.insert(records.end(), more.begin(), more.end());
    const auto* bytes = reinterpret_cast<const char*>(records.data());
    const size_t size = records.size() * sizeof(input_event), record = sizeof(input_event);
    const std::vector<std::vector<size_t>> cuts = {
        {10}, {1, record - 1}, {record + 5, 2 * record + 20, size - 1}};
    for (const auto& at : cuts) {
        size_t done = 0;
        for (const size_t cut : at) {
            ASSERT_TRUE(fifo.write(bytes + done, cut - done));
            done = cut;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));  // read what is there
        }
        ASSERT_TRUE(fifo.write(bytes + done, size - done));
        EXPECT_EQ(eventsFor({}), (Events{{KEY_A, 1}, {278, 2}})) << "first cut " << at[0];
    }
}

TEST_F(KeyThreadTest, TriggerOnlyPressedOutsideTheDebounceAndInStatesThatTakeIt) {
    struct Row {
        int64_t atMs;
        int state;
        int value;
        bool emitted;
    };
    // The thread was made at 0 ms: that counts as the last accepted press.
    const Row rows[] = {
        {400, 6, 1, false},  {600, 6, 1, true},   {1000, 6, 1, false}, {1200, 6, 1, true},
        {1900, 6, 0, false}, {2500, 1, 1, false}, {2500, 2, 1, false}, {2500, 7, 1, false},
        {2500, 3, 1, true},  {3100, 8, 1, true},  {3700, 9, 1, true},  {4300, 6, 2, false},
    };
    for (const Row& row : rows) {
        nowMs = row.atMs;
        deviceState = row.state;
        const Events expected = row.emitted ? Events{{279, 1}} : Events{};
        EXPECT_EQ(eventsFor(keyRecords(279, row.value)), expected)
            << row.atMs << " ms, state " << row.state << ", value " << row.value;
    }
}

TEST_F(KeyThreadTest, GarbageRecordsDoNotStopTheKeys) {
    std::vector<input_event> garbage(40);
    std::srand(7);
    for (input_event& event : garbage) {
        for (size_t i = 0; i < sizeof event; ++i) {
            reinterpret_cast<unsigned char*>(&event)[i] = static_cast<unsigned char>(std::rand());
        }
        event.code = event.code == kMarkerKey ? 0 : event.code;
    }
    eventsFor(garbage);
    EXPECT_EQ(eventsFor(keyRecords(KEY_B, 1)), (Events{{KEY_B, 1}}));
}

// Counts the key thread's reads; every other call goes to the C library.
std::atomic<int> reads{0};
const SystemCalls kCountingCalls = {linuxSystemCalls().open,
                                    linuxSystemCalls().close,
                                    linuxSystemCalls().ioctl,
                                    linuxSystemCalls().mmap,
                                    linuxSystemCalls().munmap,
                                    [](int fd, void* buffer, size_t count) {
                                        ++reads;
                                        return ::read(fd, buffer, count);
                                    },
                                    linuxSystemCalls().write,
                                    linuxSystemCalls().poll};

// Without the simulation holding it, the FIFO ends when its writer goes: the thread waits
// between reads of the end instead of spinning, forgets the half record the writer left, and
// reads the next writer's records from their start.
TEST(KeyThread, WriterThatClosesLeavesNoSpinAndNoHalfRecord) {
    TempRoot root;
    { fakekernel::KeyEventFifo made; }
    installSystemCalls(&kCountingCalls);
    std::atomic<int> state{6};
    Recorded recorded;
    EvDetectThread thread(state);
    QObject::connect(
        &thread, &EvDetectThread::keyPressedEvent,
        [&recorded](unsigned short code, unsigned short value) { recorded.add(code, value); });
    thread.start();
    const QByteArray path = QFile::encodeName(root.file("dev/event0"));
    const std::vector<input_event> key = keyRecords(KEY_C, 1);
    int writer = ::open(path, O_WRONLY);
    ASSERT_EQ(::write(writer, key.data(), 10), 10);
    ::close(writer);
    reads = 0;
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_LT(reads.load(), 20);
    std::vector<input_event> next = keyRecords(KEY_C, 1);
    next.push_back(keyRecords(kMarkerKey, 1)[0]);
    writer = ::open(path, O_WRONLY);
    const ssize_t size = ssize_t(next.size() * sizeof(input_event));
    ASSERT_EQ(::write(writer, next.data(), size_t(size)), size);
    EXPECT_EQ(recorded.untilMarker(), (Events{{KEY_C, 1}}));
    ::close(writer);
    thread.stop();
    thread.wait();
    installSystemCalls(nullptr);
}

TEST(KeyThread, WithoutAKeyDeviceTheThreadEndsAtOnce) {
    const std::vector<std::function<void(const TempRoot&)>> setUps = {
        [](const TempRoot&) {},
        [](const TempRoot& root) {
            QDir().mkpath(root.file("dev"));
            QFile file(root.file("dev/event0"));
            file.open(QIODevice::WriteOnly);
            file.write(QByteArray(48, '\1'));
        },
        [](const TempRoot& root) { QDir().mkpath(root.file("dev/event0")); },
    };
    for (const auto& setUp : setUps) {
        TempRoot root;
        setUp(root);
        std::atomic<int> state{6};
        EvDetectThread thread(state);
        EXPECT_FALSE(thread.isDeviceOpen());
        thread.start();
        EXPECT_TRUE(thread.wait(5000));
    }
}

}  // namespace
