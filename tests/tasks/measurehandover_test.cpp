// Handing a run to the measurement thread and its results back: a second start while a run is
// in progress is refused and leaves the first run's inputs and results alone, and the finished
// signal connects by the short type names the controller's string-based connections use.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <vector>

#include "endfacerenderer.h"
#include "factorytasks.h"
#include "measuresinglefiberthread.h"

namespace {

class FinishedReceiver : public QObject {
    Q_OBJECT

public:
    int calls = 0;
    bool pass = true;
    int zones = -1;

public slots:
    void onMeasureSingleFiberFinished(bool passed, QImage*, QImage*, QList<ZoneResult>* results) {
        ++calls;
        pass = passed;
        zones = results->size();
    }
};

// A 960 x 960 region around a rendered fiber, with a dark 8 um spot in zone B when `dirty`.
std::vector<unsigned char> renderedRegion(bool dirty) {
    sim::EndFaceScene scene;
    scene.centerX = 800.0;
    scene.centerY = 600.0;
    if (dirty) {
        scene.spots.push_back(sim::spotAtRadius(scene, 30.0, 40.0, 8.0, 50.0));
    }
    std::vector<unsigned char> gray(size_t(kMeasureWindowSide) * kMeasureWindowSide);
    sim::renderGray(scene, 320, 120, kMeasureWindowSide, kMeasureWindowSide, gray.data());
    return gray;
}

bool start(MeasureSingleFiberThread& thread, std::vector<unsigned char>& region) {
    return thread.startMeasureSingleFiber(factoryTasks().value(0), region.data(), nullptr,
                                          kMeasureWindowSide, kMeasureWindowSide, 320, 120, 480,
                                          480, 1, 0, "SN1", 0);
}

}  // namespace

TEST(MeasureHandOver, ASecondStartDuringARunIsRefusedAndTheFirstResultsStand) {
    int argc = 0;
    QCoreApplication app(argc, nullptr);
    MeasureSingleFiberThread thread;
    FinishedReceiver receiver;
    ASSERT_TRUE(QObject::connect(
        &thread, SIGNAL(measureSingleFiberFinished(bool, QImage*, QImage*, QList<ZoneResult>*)),
        &receiver, SLOT(onMeasureSingleFiberFinished(bool, QImage*, QImage*, QList<ZoneResult>*)),
        Qt::QueuedConnection));

    std::vector<unsigned char> dirty = renderedRegion(true), clean = renderedRegion(false);
    ASSERT_TRUE(start(thread, dirty));
    EXPECT_FALSE(start(thread, clean)) << "the first run is still in progress";
    thread.wait();
    QCoreApplication::sendPostedEvents();

    EXPECT_EQ(receiver.calls, 1) << "the refused start emits nothing";
    EXPECT_FALSE(receiver.pass) << "the dirty region was measured, not the clean one";
    EXPECT_EQ(receiver.zones, 3);
    EXPECT_FALSE(thread.passed());
    EXPECT_GT(thread.defectCount(), 0);

    ASSERT_TRUE(start(thread, clean)) << "once the run has ended, the next one starts";
    thread.wait();
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(receiver.calls, 2);
    EXPECT_TRUE(receiver.pass);
}

#include "measurehandover_test.moc"
