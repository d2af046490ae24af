// Handing a run to the measurement thread and its results back: a second start while a run is
// in progress is refused and leaves the first run's inputs and results alone, and the finished
// signal connects by the short type names the controller's string-based connections use.

#include <gtest/gtest.h>

#include <QCoreApplication>

#include "measuretesting.h"

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

    RenderedRegion dirty({spotAt(30.0, 40.0, 8.0, 50.0)}), clean;  // a dark 8 um spot in zone B
    ASSERT_TRUE(startOn(thread, dirty));
    EXPECT_FALSE(startOn(thread, clean)) << "the first run is still in progress";
    thread.wait();
    QCoreApplication::sendPostedEvents();

    EXPECT_EQ(receiver.calls, 1) << "the refused start emits nothing";
    EXPECT_FALSE(receiver.pass) << "the dirty region was measured, not the clean one";
    EXPECT_EQ(receiver.zones, 3);
    EXPECT_FALSE(thread.passed());
    EXPECT_GT(thread.defectCount(), 0);

    ASSERT_TRUE(startOn(thread, clean)) << "once the run has ended, the next one starts";
    thread.wait();
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(receiver.calls, 2);
    EXPECT_TRUE(receiver.pass);
}

#include "measurehandover_test.moc"
