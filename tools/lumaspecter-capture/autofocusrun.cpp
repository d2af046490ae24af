#include "autofocusrun.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>
#include <cstdio>

#include "autofocusthread.h"
#include "capturethread.h"
#include "fakekernel.h"
#include "motorthread.h"
#include "twinworld.h"

namespace {

constexpr double kStepsPerUnit = 16.0;

double units(int steps) {
    return steps / kStepsPerUnit;
}

}  // namespace

int runAutoFocusOnTwin(const TwinSetting& twin, int lensStart) {
    sim::TwinWorld world;
    applyTwinSetting(twin, world);
    world.setLensPosition(lensStart);
    fakekernel::FakeKernel kernel(world);
    CaptureThread capture;
    MotorThread motor;
    AutoFocusThread autofocus(&capture, &motor);
    bool focused = false;
    QObject::connect(
        &autofocus, &AutoFocusThread::autoFocusFinished, &autofocus,
        [&focused](bool result) { focused = result; }, Qt::DirectConnection);
    // The autofocus starts from live view, as on the instrument: a sample returns to the live
    // mode the capture thread was in, so live view must have shown a frame first.
    capture.startCapture(CAPTURE_SINGLE_FIBER_LIVE);
    while (capture.isRunning() && kernel.capture().takenBuffers() < 2) {
        QThread::msleep(5);
    }
    QElapsedTimer clock;
    clock.start();
    autofocus.start();
    autofocus.wait();
    const qint64 ms = clock.elapsed();
    capture.stopCapture();
    const QJsonObject result{
        {"focused", focused},
        {"moves", autofocus.movesMade()},
        {"samples", autofocus.samplesTaken()},
        {"lensStart", units(lensStart)},
        {"lensEnd", units(world.lensPosition())},
        {"lensBest", units(world.focusPosition())},
        {"ms", double(ms)},
    };
    std::printf("%s\n", QJsonDocument(result).toJson(QJsonDocument::Compact).constData());
    return 0;
}
