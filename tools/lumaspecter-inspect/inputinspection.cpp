#include "inputinspection.h"

#include <QBuffer>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

#include "atomicfile.h"
#include "framesharpness.h"
#include "inspectionjson.h"

namespace {

double elapsedMs(const QElapsedTimer& timer) {
    return timer.nsecsElapsed() / 1e6;
}

// Encoded first and written in one step, so that a full or read-only folder is reported with
// the system's reason instead of leaving a truncated picture.
bool writePicture(const QImage& image, const QString& path, QString& error) {
    QByteArray png;
    QBuffer buffer(&png);
    if (!buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG")) {
        error = "cannot encode " + path;
        return false;
    }
    return writeFileAtomically(path, png, &error);
}

void writeOverlays(const QString& folder, const QString& input, const MeasureSingleFiberThread& run,
                   QStringList& problems) {
    const QString base = QDir(folder).filePath(QFileInfo(input).completeBaseName());
    QString error;
    if (!writePicture(run.overlay(), base + "-overlay.png", error) ||
        !writePicture(run.measuredImage(), base + "-measured.png", error)) {
        problems << "overlay not written: " + error;
    }
}

void insertAll(QJsonObject& into, const QJsonObject& from) {
    for (auto it = from.begin(); it != from.end(); ++it) {
        into.insert(it.key(), it.value());
    }
}

}  // namespace

QJsonObject inspect(const InspectionInput& input, const TaskInfoSetting& task,
                    const unsigned char* mask, const InspectionOutputs& outputs,
                    SingleFiberInspection& inspection, QString& error, QStringList& problems) {
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

    QString saveProblem;
    if (!inspection.measure(task, region, mask, outputs.files, saveProblem)) {
        error = MeasureSingleFiberThread::regionProblem(region.width, region.height, region.centerX,
                                                        region.centerY);
        return QJsonObject();
    }
    const MeasureSingleFiberThread& run = inspection.run();
    if (!run.failure().isEmpty()) {
        // A run that could not grade has no verdict to print ("FAIL - -1 defects" would read
        // as a dirty connector).
        error = "not graded: " + run.failure();
        return QJsonObject();
    }
    if (!saveProblem.isEmpty()) {
        problems << saveProblem;
    }
    insertAll(result, measurementJson(run, region));
    stage.start();
    if (!outputs.overlayFolder.isEmpty()) {
        writeOverlays(outputs.overlayFolder, input.path, run, problems);
    }
    const MeasureSingleFiberThread::StageTimes& times = run.stageTimes();
    result.insert("ms", QJsonObject{{"search", searchMs},
                                    {"defects", times.defects},
                                    {"scratches", times.scratches},
                                    {"overlay", times.overlay + elapsedMs(stage)},
                                    {"total", elapsedMs(total)}});
    return result;
}
