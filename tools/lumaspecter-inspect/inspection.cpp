#include "inspection.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QJsonArray>

#include "capturethread.h"
#include "frameloader.h"
#include "libcapture.h"
#include "measuresinglefiberthread.h"
#include "platformroot.h"
#include "taskjson.h"

namespace {

struct Region {
    const unsigned char* pixels;
    int width, height, left, top, centerX, centerY;
};

double elapsedMs(const QElapsedTimer& timer) {
    return timer.nsecsElapsed() / 1e6;
}

QJsonObject zoneJson(const TaskZoneSetting& zone, const TaskZoneResult& r) {
    return {{"zoneName", taskText(zone.sectionName)},
            {"innerDiameter", zone.diameterMin},
            {"outerDiameter", zone.diameterMax},
            {"sNoBiggerNum", r.sNoBiggerNum},
            {"sNoBiggerResult", r.sNoBiggerResult},
            {"sBiggerNum", r.sBiggerNum},
            {"sBiggerResult", r.sBiggerResult},
            {"dNoBiggerNum", r.dNoBiggerNum},
            {"dNoBiggerResult", r.dNoBiggerResult},
            {"dMidNum", r.dMidNum},
            {"dMidReuslt", r.dMidResult},
            {"dBiggerNum", r.dBiggerNum},
            {"dBiggerResult", r.dBiggerResult},
            {"dArea", r.dArea}};
}

QJsonArray defectsJson(const MeasureSingleFiberThread& run) {
    QJsonArray defects;
    for (int i = 0; i < run.defectCount(); ++i) {
        const defect_info_struct& d = run.defects()[i];
        defects.append(QJsonObject{{"top", d.top},
                                   {"bottom", d.bottom},
                                   {"left", d.left},
                                   {"right", d.right},
                                   {"zone", d.zone},
                                   {"sizeClass", d.sizeClass}});
    }
    return defects;
}

QJsonArray scratchesJson(const MeasureSingleFiberThread& run) {
    QJsonArray scratches;
    for (int i = 0; i < run.scratchCount(); ++i) {
        const ScratchRecord& s = run.scratches()[i];
        scratches.append(QJsonObject{{"x1", s.x1},
                                     {"y1", s.y1},
                                     {"x2", s.x2},
                                     {"y2", s.y2},
                                     {"width", s.width},
                                     {"direction", s.direction},
                                     {"significance", s.significance},
                                     {"zone", run.scratchZones()[i]}});
    }
    return scratches;
}

void addMeasurement(QJsonObject& result, const MeasureSingleFiberThread& run,
                    const Region& region) {
    QJsonArray zones;
    for (int z = 0; z < run.results().size(); ++z) {
        zones.append(zoneJson(run.task().sections[z], run.results()[z]));
    }
    result.insert("left", region.left);
    result.insert("top", region.top);
    result.insert("centerX", region.centerX);
    result.insert("centerY", region.centerY);
    result.insert("pass", run.passed());
    result.insert("defectCount", run.defectCount());
    result.insert("scratchCount", run.scratchCount());
    result.insert("zoneResults", zones);
    result.insert("defects", defectsJson(run));
    result.insert("scratches", scratchesJson(run));
}

void writeOverlays(const QString& folder, const QString& input,
                   const MeasureSingleFiberThread& run) {
    const QString base = QDir(folder).filePath(QFileInfo(input).completeBaseName());
    run.overlay().save(base + "-overlay.png");
    run.measuredImage().save(base + "-measured.png");
}

// Runs the measurement and waits for it, noting why the result files were not written if they
// were asked for and could not be.
bool measure(MeasureSingleFiberThread& run, const TaskInfoSetting& task, const Region& region,
             const unsigned char* mask, const InspectionOutputs& outputs, QString& saveProblem) {
    const QMetaObject::Connection noCard = QObject::connect(
        &run, &MeasureSingleFiberThread::noSDCard,
        [&] { saveProblem = "not saved: no SD card at " + platformPath("/mnt/sdcard/sd"); });
    const QMetaObject::Connection badName =
        QObject::connect(&run, &MeasureSingleFiberThread::invalidFileName, [&] {
            saveProblem = QString("not saved: \"%1\" cannot name a file").arg(outputs.connectorId);
        });
    const bool started = run.startMeasureSingleFiber(
        task, const_cast<unsigned char*>(region.pixels), const_cast<unsigned char*>(mask),
        region.width, region.height, region.left, region.top, region.centerX, region.centerY, 1,
        outputs.saveType, outputs.connectorId, outputs.language);
    run.wait();
    QObject::disconnect(noCard);
    QObject::disconnect(badName);
    return started;
}

}  // namespace

QJsonObject inspect(const InspectionInput& input, const TaskInfoSetting& task,
                    const unsigned char* mask, const InspectionOutputs& outputs,
                    InspectionWorkers workers, QString& error, QString& saveProblem) {
    QElapsedTimer total, stage;
    total.start();
    QJsonObject result{{"image", input.path}};
    Region region{input.region.data(), input.regionWidth, input.regionHeight, 0, 0,
                  input.centerX,       input.centerY};
    double searchMs = 0.0;
    if (!input.frame.empty()) {
        unsigned x, y, rawX, rawY;
        stage.start();
        const bool found = workers.capture.searchSingleFiber(
                               input.frame.data(), kSensorWidth, kSensorHeight, x, y, rawX, rawY,
                               kMeasureWindowSide, kMeasureWindowSide, true) != 0;
        searchMs = elapsedMs(stage);
        result.insert("found", found);
        result.insert("x", int(x));
        result.insert("y", int(y));
        result.insert("rawX", int(rawX));
        result.insert("rawY", int(rawY));
        if (!found) {
            return result;
        }
        // The window as the capture cuts it, with the fiber's place in it.
        std::vector<unsigned char>& window = workers.window;
        window.resize(size_t(kMeasureWindowSide) * kMeasureWindowSide);
        convert_y10bit_to_y8bit(input.frame.data(), window.data(), kSensorWidth, kSensorHeight,
                                x - kMeasureWindowSide / 2, y - kMeasureWindowSide / 2,
                                kMeasureWindowSide, kMeasureWindowSide);
        const int left = int(x) - kMeasureWindowSide / 2, top = int(y) - kMeasureWindowSide / 2;
        region = {window.data(), kMeasureWindowSide, kMeasureWindowSide, left,
                  top,           int(rawX) - left,   int(rawY) - top};
    } else {
        result.insert("found", true);
        result.insert("x", input.centerX);
        result.insert("y", input.centerY);
        result.insert("rawX", 0);
        result.insert("rawY", 0);
        mask = nullptr;
    }

    MeasureSingleFiberThread& run = workers.measure;
    if (!measure(run, task, region, mask, outputs, saveProblem)) {
        error = QString("region of %1 x %2 pixels is larger than a frame")
                    .arg(region.width)
                    .arg(region.height);
        return QJsonObject();
    }
    addMeasurement(result, run, region);
    stage.start();
    if (!outputs.overlayFolder.isEmpty()) {
        writeOverlays(outputs.overlayFolder, input.path, run);
    }
    const MeasureSingleFiberThread::StageTimes& times = run.stageTimes();
    result.insert("ms", QJsonObject{{"search", searchMs},
                                    {"defects", times.defects},
                                    {"scratches", times.scratches},
                                    {"overlay", times.overlay + elapsedMs(stage)},
                                    {"total", elapsedMs(total)}});
    return result;
}
