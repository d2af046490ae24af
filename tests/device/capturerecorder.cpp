#include "capturerecorder.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

CaptureRecorder::CaptureRecorder(CaptureThread& t) {
    using T = CaptureThread;
    const auto queued = Qt::QueuedConnection;
    connect(
        &t, &T::captureSingleFiberFinished, this,
        [this](unsigned char* g, int w, int h, int l, int t, int x, int y, int found) {
            add("captureSingleFiberFinished", {w, h, l, t, x, y, found}, g);
        },
        queued);
    connect(
        &t, QOverload<unsigned char*, unsigned, unsigned, int, int>::of(&T::captureFinished), this,
        [this](unsigned char* g, unsigned w, unsigned h, int x, int y) {
            add("captureFinished", {long(w), long(h), x, y}, g);
        },
        queued);
    connect(
        &t, QOverload<>::of(&T::captureFinished), this, [this] { add("captureFinished", {}); },
        queued);
    connect(
        &t, &T::captureMutipleFiberFinished, this,
        [this](unsigned char* g, unsigned w, unsigned h) {
            add("captureMutipleFiberFinished", {long(w), long(h)}, g);
        },
        queued);
    connect(
        &t, &T::updateVideoFrameByMat, this,
        [this](cv::Mat m) {
            add("updateVideoFrameByMat", {m.cols, m.rows}, nullptr, m);
        },
        queued);
    connect(
        &t, &T::updateFullFrameByScaled, this,
        [this](unsigned char* g, unsigned w, unsigned h) {
            add("updateFullFrameByScaled", {long(w), long(h)}, g);
        },
        queued);
    connect(
        &t, &T::fiberChange, this, [this] { add("fiberChange", {}); }, queued);
    connect(
        &t, &T::captureThreadExit, this, [this] { add("captureThreadExit", {}); }, queued);
    connect(
        &t, &T::udpateExposureGray, this,
        [this](int exposure, int gray) {
            add("udpateExposureGray", {exposure, gray});
        },
        queued);
    connect(
        &t, &T::updateSharpnessValue, this,
        [this](int value) { add("updateSharpnessValue", {value}); }, queued);
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
    int n = 0;
    for (const Emitted& e : emitted_) {
        n += e.name == name;
    }
    return n;
}

const CaptureRecorder::Emitted* CaptureRecorder::last(const std::string& name) const {
    for (auto e = emitted_.rbegin(); e != emitted_.rend(); ++e) {
        if (e->name == name) {
            return &*e;
        }
    }
    return nullptr;
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
