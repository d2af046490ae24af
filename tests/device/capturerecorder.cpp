#include "capturerecorder.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>
#include <algorithm>

// Each signal is recorded with its name, its numbers, and its buffer or picture.
CaptureRecorder::CaptureRecorder(CaptureThread& t) {
    using T = CaptureThread;
    const auto numbers = [this](const char* name) {
        return [this, name](auto... n) { add(name, {long(n)...}); };
    };
    const auto buffer = [this](const char* name) {
        return [this, name](unsigned char* g, auto... n) { add(name, {long(n)...}, g); };
    };
    const auto queued = Qt::QueuedConnection;
    connect(&t, &T::captureSingleFiberFinished, this, buffer("captureSingleFiberFinished"), queued);
    connect(&t, QOverload<unsigned char*, unsigned, unsigned, int, int>::of(&T::captureFinished),
            this, buffer("captureFinished"), queued);
    connect(&t, QOverload<>::of(&T::captureFinished), this, numbers("captureFinished"), queued);
    connect(&t, &T::captureMutipleFiberFinished, this, buffer("captureMutipleFiberFinished"),
            queued);
    connect(&t, &T::updateFullFrameByScaled, this, buffer("updateFullFrameByScaled"), queued);
    connect(&t, &T::fiberChange, this, numbers("fiberChange"), queued);
    connect(&t, &T::captureThreadExit, this, numbers("captureThreadExit"), queued);
    connect(&t, &T::udpateExposureGray, this, numbers("udpateExposureGray"), queued);
    connect(&t, &T::updateSharpnessValue, this, numbers("updateSharpnessValue"), queued);
    connect(
        &t, &T::updateVideoFrameByMat, this,
        [this](cv::Mat m) {
            add("updateVideoFrameByMat", {m.cols, m.rows}, nullptr, m);
        },
        queued);
}

void CaptureRecorder::add(const std::string& name, std::vector<long> numbers,
                          const unsigned char* buffer, const cv::Mat& picture) {
    emitted_.push_back({name, std::move(numbers), buffer, picture});
}

std::vector<std::string> CaptureRecorder::names() const {
    std::vector<std::string> names;
    for (const Emitted& e : emitted_) {
        names.push_back(e.name);
    }
    return names;
}

int CaptureRecorder::count(const std::string& name) const {
    return int(std::count_if(emitted_.begin(), emitted_.end(),
                             [&](const Emitted& e) { return e.name == name; }));
}

CaptureRecorder::Emitted CaptureRecorder::last(const std::string& name) const {
    for (auto e = emitted_.rbegin(); e != emitted_.rend(); ++e) {
        if (e->name == name) {
            return *e;
        }
    }
    return {};
}

std::vector<long> CaptureRecorder::firstNumbers(const std::string& name) const {
    std::vector<long> values;
    for (const Emitted& e : emitted_) {
        if (e.name == name) {
            values.push_back(e.numbers[0]);
        }
    }
    return values;
}

bool CaptureRecorder::waitFor(const std::function<bool()>& done, int timeoutMs) {
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > timeoutMs) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(1);
    }
    return true;
}

bool CaptureRecorder::waitForMore(const std::string& name, int n, int timeoutMs) {
    const int target = count(name) + n;
    return waitFor([&] { return count(name) >= target; }, timeoutMs);
}

void ensureApplication() {
    static int argc = 1;
    static char name[] = "tests_device";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* application = new QCoreApplication(argc, argv);
    (void)application;
}
