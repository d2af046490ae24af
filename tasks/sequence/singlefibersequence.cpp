#include "singlefibersequence.h"

#include "instrumentoptics.h"
#include "libcapture.h"
#include "platformroot.h"
#include "singlefibersearch.h"

SingleFiberInspection::SingleFiberInspection()
    : searchBuffer_(singleFiberSearchBufferSize(kSensorWidth, kSensorHeight)),
      window_(size_t(kMeasureWindowSide) * kMeasureWindowSide) {}

FiberPlace SingleFiberInspection::searchFrame(const uint16_t* frame10) {
    FiberPlace place;
    place.found = searchSingleFiber(frame10, kSensorWidth, kSensorHeight, searchBuffer_.data(),
                                    place.x, place.y, place.rawX, place.rawY, kMeasureWindowSide,
                                    kMeasureWindowSide, true) != 0;
    return place;
}

MeasureRegion SingleFiberInspection::cutWindow(const uint16_t* frame10, const FiberPlace& place) {
    const int left = int(place.x) - kMeasureWindowSide / 2;
    const int top = int(place.y) - kMeasureWindowSide / 2;
    convert_y10bit_to_y8bit(frame10, window_.data(), kSensorWidth, kSensorHeight, left, top,
                            kMeasureWindowSide, kMeasureWindowSide);
    return {window_.data(),         kMeasureWindowSide,   kMeasureWindowSide, left, top,
            int(place.rawX) - left, int(place.rawY) - top};
}

bool SingleFiberInspection::measure(const TaskInfoSetting& task, const MeasureRegion& region,
                                    const unsigned char* mask, const MeasureOutputs& outputs,
                                    QString& saveProblem) {
    const QMetaObject::Connection noCard = QObject::connect(
        &run_, &MeasureSingleFiberThread::noSDCard,
        [&] { saveProblem = "not saved: no SD card at " + platformPath("/mnt/sdcard/sd"); });
    const QMetaObject::Connection badName =
        QObject::connect(&run_, &MeasureSingleFiberThread::invalidFileName, [&] {
            saveProblem = QString("not saved: \"%1\" cannot name a file").arg(outputs.connectorId);
        });
    const QMetaObject::Connection notSaved =
        QObject::connect(&run_, &MeasureSingleFiberThread::resultFilesNotSaved,
                         [&](const QString& reason) { saveProblem = "not saved: " + reason; });
    const bool started = run_.startMeasureSingleFiber(
        task, const_cast<unsigned char*>(region.pixels), const_cast<unsigned char*>(mask),
        region.width, region.height, region.left, region.top, region.centerX, region.centerY, 1,
        outputs.saveType, outputs.connectorId, outputs.language);
    run_.wait();
    QObject::disconnect(noCard);
    QObject::disconnect(badName);
    QObject::disconnect(notSaved);
    return started;
}
