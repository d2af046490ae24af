#include "inputinspection.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

#include "framesharpness.h"
#include "inspectionjson.h"

namespace {

double elapsedMs(const QElapsedTimer& timer) {
    return timer.nsecsElapsed() / 1e6;
}

void writeOverlays(const QString& folder, const QString& input,
                   const MeasureSingleFiberThread& run) {
    const QString base = QDir(folder).filePath(QFileInfo(input).completeBaseName());
    run.overlay().save(base + "-overlay.png");
    run.measuredImage().save(base + "-measured.png");
}

void insertAll(QJsonObject& into, const QJsonObject& from) {
    for (auto it = from.begin(); it != from.end(); ++it) {
        into.insert(it.key(), it.value());
    }
}

}  // namespace

QJsonObject inspect(const InspectionInput& input, const TaskInfoSetting& task,
                    const unsigned char* mask, const InspectionOutputs& outputs,
                    SingleFiberInspection& inspection, QString& error, QString& saveProblem) {
    QElapsedTimer total, stage;
    total.start();
    QJsonObject result{{"image", input.path}};
    MeasureRegion region{input.region.data(), input.regionWidth, input.regionHeight, 0, 0,
                         input.centerX,       input.centerY};
    double searchMs = 0.0;
    if (!input.frame.empty()) {
        stage.start();
        const FiberPlace place = inspection.searchFrame(input.frame.data());
        searchMs = elapsedMs(stage);
        insertAll(result, placeJson(place));
        // The focus measure single-fiber live view would show for this frame.
        result.insert("sharpness", liveViewSharpness(input.frame.data(), place.rawX, place.rawY));
        if (!place.found) {
            return result;
        }
        region = inspection.cutWindow(input.frame.data(), place);
    } else {
        FiberPlace given{true, unsigned(input.centerX), unsigned(input.centerY), 0, 0};
        insertAll(result, placeJson(given));
        mask = nullptr;
    }

    if (!inspection.measure(task, region, mask, outputs.files, saveProblem)) {
        error = QString("region of %1 x %2 pixels is larger than a frame")
                    .arg(region.width)
                    .arg(region.height);
        return QJsonObject();
    }
    const MeasureSingleFiberThread& run = inspection.run();
    insertAll(result, measurementJson(run, region));
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
