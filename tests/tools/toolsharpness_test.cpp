// The inspection tool's focus measure of whole frames: the single-fiber live view's, at the
// fiber found, as a real number.

#include <gtest/gtest.h>

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include "endfacerenderer.h"
#include "realsamples.h"
#include "temproot.h"
#include "testfiles.h"

namespace {

QList<QJsonObject> inspectJson(const QStringList& frames) {
    QProcess tool;
    tool.start(INSPECT_TOOL, QStringList{"--json"} + frames);
    tool.waitForFinished(120000);
    QList<QJsonObject> results;
    for (const QByteArray& line : tool.readAllStandardOutput().split('\n')) {
        if (!line.isEmpty()) {
            results.append(QJsonDocument::fromJson(line).object());
        }
    }
    return results;
}

QString rawFrame(const TempRoot& root, const QString& name, double blur) {
    sim::EndFaceScene scene;
    scene.blurSigmaPx = blur;
    QByteArray frame(kSensorPixels * 2, 0);
    sim::renderRaw(scene, 0, 0, kSensorWidth, kSensorHeight,
                   reinterpret_cast<uint16_t*>(frame.data()));
    writeFile(root.file(name), frame);
    return root.file(name);
}

// A sharp frame measures far above a blurred one; the real end-face pictures measure 40 to 56.
TEST(InspectSharpness, WholeFramesGetTheLiveViewsFocusMeasure) {
    TempRoot root;
    const QList<QJsonObject> rendered =
        inspectJson({rawFrame(root, "sharp.raw", 0.5), rawFrame(root, "blurred.raw", 3.0)});
    ASSERT_EQ(rendered.size(), 2);
    const double sharp = rendered[0]["sharpness"].toDouble();
    EXPECT_GT(sharp, rendered[1]["sharpness"].toDouble() + 10.0);
    EXPECT_NE(sharp, double(int(sharp)));  // not truncated
    const QString samples = realSamplesDir();
    if (samples.isEmpty()) {
        return;
    }
    QStringList pictures;
    for (const QString& name : QDir(samples).entryList({"*.png"})) {
        pictures << QDir(samples).filePath(name);
    }
    for (const QJsonObject& real : inspectJson(pictures)) {
        EXPECT_GE(real["sharpness"].toDouble(), 40.0) << real["image"].toString().toStdString();
        EXPECT_LE(real["sharpness"].toDouble(), 57.0) << real["image"].toString().toStdString();
    }
}

}  // namespace
