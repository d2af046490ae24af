#pragma once

#include <QObject>
#include <functional>
#include <string>
#include <vector>

#include "capturethread.h"
#include "devicetesting.h"

// The capture thread's signals as the user-interface thread receives them (queued), one record
// each, for the tests to read as a table.
class CaptureRecorder : public QObject {
    Q_OBJECT

public:
    struct Emitted {
        std::string name;
        std::vector<long> numbers;  // the arguments after the buffer, in order
        const unsigned char* buffer = nullptr;
        cv::Mat picture;
    };

    explicit CaptureRecorder(CaptureThread& thread);

    const std::vector<Emitted>& emitted() const { return emitted_; }
    std::vector<std::string> names() const;
    int count(const std::string& name) const;
    // A copy of the last signal named `name` (an empty record when none came): later signals
    // may move the records.
    Emitted last(const std::string& name) const;
    // The first number of every signal named `name`.
    std::vector<long> firstNumbers(const std::string& name) const;
    void clear() { emitted_.clear(); }

    // Delivers the thread's signals until `done` holds; false after `timeoutMs` without.
    static bool waitFor(const std::function<bool()>& done, int timeoutMs = 20000);
    // Until `n` more signals named `name` have arrived.
    bool waitForMore(const std::string& name, int n, int timeoutMs = 20000);

private:
    void add(const std::string& name, std::vector<long> numbers,
             const unsigned char* buffer = nullptr, const cv::Mat& picture = cv::Mat());

    std::vector<Emitted> emitted_;
};

// The application object queued signals need, made once for the test program.
void ensureApplication();

// The twin giving a frame every 5 ms to a capture thread whose signals are recorded; the thread
// is stopped at the end of the test.
struct CaptureTwinTest : TwinTest {
    CaptureThread thread;
    CaptureRecorder recorder{thread};

    CaptureTwinTest() {
        ensureApplication();
        world.setFramePeriod(std::chrono::milliseconds(5));
    }
    ~CaptureTwinTest() override { thread.stopCapture(); }
};
