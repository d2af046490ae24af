// The inspection tool run as a user runs it: frames from files, one line per frame.

#include <gtest/gtest.h>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <vector>

#include "endfacerenderer.h"
#include "temproot.h"

namespace {

struct ToolRun {
    int status;
    QList<QByteArray> lines;
    QString errors;
};

ToolRun inspect(const QStringList& arguments) {
    QProcess tool;
    tool.start(INSPECT_TOOL, arguments);
    tool.waitForFinished(120000);
    ToolRun run;
    run.status = tool.exitStatus() == QProcess::NormalExit ? tool.exitCode() : -1;
    run.lines = tool.readAllStandardOutput().split('\n');
    run.lines.removeAll(QByteArray());
    run.errors = QString::fromUtf8(tool.readAllStandardError());
    return run;
}

void writeRawFrame(const QString& path, const sim::EndFaceScene& scene) {
    std::vector<uint16_t> frame(size_t(sim::kFrameWidth) * sim::kFrameHeight);
    ASSERT_EQ(sim::renderRaw(scene, 0, 0, sim::kFrameWidth, sim::kFrameHeight, frame.data()), 1);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(reinterpret_cast<const char*>(frame.data()), qint64(frame.size() * 2));
}

QJsonObject parse(const QByteArray& line) {
    return QJsonDocument::fromJson(line).object();
}

}  // namespace

TEST(InspectTool, PrintsOneJsonObjectPerFrameInInputOrder) {
    TempRoot root;
    sim::EndFaceScene scene;
    scene.centerX = 700.4;
    scene.centerY = 530.7;
    writeRawFrame(root.file("a.raw"), scene);
    scene.centerX = 1500.0;  // the window must be moved in from the right edge
    writeRawFrame(root.file("b.raw"), scene);

    const ToolRun run = inspect({"--json", root.file("a.raw"), root.file("b.raw")});
    ASSERT_EQ(run.status, 0) << run.errors.toStdString();
    ASSERT_EQ(run.lines.size(), 2);

    const QJsonObject a = parse(run.lines[0]);
    EXPECT_EQ(a.keys(), QStringList({"found", "image", "rawX", "rawY", "x", "y"}));
    EXPECT_EQ(a["image"].toString(), root.file("a.raw"));
    EXPECT_TRUE(a["found"].toBool());
    EXPECT_NEAR(a["rawX"].toInt(), 700, 1);
    EXPECT_NEAR(a["rawY"].toInt(), 530, 1);
    EXPECT_EQ(a["x"].toInt(), a["rawX"].toInt());

    const QJsonObject b = parse(run.lines[1]);
    EXPECT_NEAR(b["rawX"].toInt(), 1500, 4);
    EXPECT_EQ(b["x"].toInt(), 1600 - 480 - 1);
}

TEST(InspectTool, BadFramesAreNamedOnStderrAndTheOthersStillInspected) {
    TempRoot root;
    writeRawFrame(root.file("good.raw"), sim::EndFaceScene());
    QFile truncated(root.file("truncated.raw"));
    ASSERT_TRUE(truncated.open(QIODevice::WriteOnly));
    truncated.write(QByteArray(1000, '\0'));
    truncated.close();

    const ToolRun run = inspect(
        {"--json", root.file("truncated.raw"), root.file("missing.png"), root.file("good.raw")});
    EXPECT_EQ(run.status, 2);
    ASSERT_EQ(run.lines.size(), 1);
    EXPECT_EQ(parse(run.lines[0])["image"].toString(), root.file("good.raw"));
    EXPECT_TRUE(run.errors.contains(root.file("truncated.raw") + ": truncated raw frame"))
        << run.errors.toStdString();
    EXPECT_TRUE(run.errors.contains(root.file("missing.png") + ": no such file"));
}

TEST(InspectTool, AFrameWithoutFiberIsReportedAsNotFound) {
    TempRoot root;
    QFile flat(root.file("flat.raw"));
    ASSERT_TRUE(flat.open(QIODevice::WriteOnly));
    flat.write(QByteArray(3840000, '\0'));
    flat.close();
    const ToolRun run = inspect({"--json", root.file("flat.raw")});
    ASSERT_EQ(run.status, 0);
    const QJsonObject result = parse(run.lines.value(0));
    EXPECT_FALSE(result["found"].toBool());
    EXPECT_EQ(result["rawX"].toInt(), 800);
    EXPECT_EQ(result["y"].toInt(), 600);
}

TEST(InspectTool, WithoutFramesItExplainsItselfAndFails) {
    const ToolRun run = inspect({});
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(run.errors.contains("no frame given"));
}
