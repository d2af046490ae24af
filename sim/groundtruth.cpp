#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "endfacerenderer.h"

namespace sim {

namespace {

QJsonObject spotTruth(const Spot& spot, int originX, int originY) {
    return {{"x", spot.x - originX},         {"y", spot.y - originY},
            {"diameterUm", spot.diameterUm}, {"radiusPx", micronsToPixels(spot.diameterUm) / 2},
            {"contrast", spot.contrast},     {"bright", spot.bright}};
}

QJsonObject scratchTruth(const Scratch& scratch, int originX, int originY) {
    return {{"x1", scratch.x1 - originX},   {"y1", scratch.y1 - originY},
            {"x2", scratch.x2 - originX},   {"y2", scratch.y2 - originY},
            {"widthUm", scratch.widthUm},   {"widthPx", micronsToPixels(scratch.widthUm)},
            {"contrast", scratch.contrast}, {"bright", scratch.bright}};
}

QJsonObject fiberTruth(const EndFaceScene& scene, int originX, int originY) {
    const SurfaceLevels levels = surfaceLevels(scene);
    return {{"hasFiber", scene.hasFiber},
            {"centerX", scene.centerX - originX},
            {"centerY", scene.centerY - originY},
            {"claddingRadiusPx", micronsToPixels(scene.claddingDiameterUm) / 2},
            {"coreRadiusPx", micronsToPixels(scene.coreDiameterUm) / 2},
            {"claddingDiameterUm", scene.claddingDiameterUm},
            {"coreDiameterUm", scene.coreDiameterUm},
            {"umPerPixel", kUmPerPixel},
            {"ferruleLevel", levels.ferrule},
            {"claddingLevel", levels.cladding},
            {"coreLevel", levels.core}};
}

void addCamera(const EndFaceScene& scene, QJsonObject& truth) {
    truth["blurSigmaPx"] = scene.blurSigmaPx;
    truth["noiseSigma"] = scene.noiseSigma;
    truth["exposure"] = scene.exposure;
    truth["vignetting"] = scene.vignetting;
    truth["seed"] = qint64(scene.seed);
}

}  // namespace

std::string groundTruthJson(const EndFaceScene& scene, int originX, int originY) {
    QJsonObject truth = fiberTruth(scene, originX, originY);
    addCamera(scene, truth);
    truth["originX"] = originX;
    truth["originY"] = originY;
    QJsonArray spots;
    for (const Spot& spot : scene.spots) {
        spots.append(spotTruth(spot, originX, originY));
    }
    truth["spots"] = spots;
    QJsonArray scratches;
    for (const Scratch& scratch : scene.scratches) {
        scratches.append(scratchTruth(scratch, originX, originY));
    }
    truth["scratches"] = scratches;
    return QJsonDocument(truth).toJson(QJsonDocument::Indented).toStdString();
}

}  // namespace sim
