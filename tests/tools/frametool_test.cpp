// The inspection tool run as a user runs it: frames from files, one line per frame.

#include <gtest/gtest.h>

#include <QDate>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <opencv2/imgcodecs.hpp>
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
    QStringList keys = {
        "image",        "found",       "x",       "y",         "rawX", "rawY",
        "left",         "top",         "centerX", "centerY",   "pass", "defectCount",
        "scratchCount", "zoneResults", "defects", "scratches", "ms"};
    keys.sort();
    EXPECT_EQ(a.keys(), keys);
    EXPECT_EQ(a["image"].toString(), root.file("a.raw"));
    EXPECT_TRUE(a["found"].toBool());
    EXPECT_NEAR(a["rawX"].toInt(), 700, 1);
    EXPECT_NEAR(a["rawY"].toInt(), 530, 1);
    EXPECT_EQ(a["x"].toInt(), a["rawX"].toInt());

    const QJsonObject b = parse(run.lines[1]);
    EXPECT_NEAR(b["rawX"].toInt(), 1500, 4);
    EXPECT_EQ(b["x"].toInt(), 1600 - 480 - 1);
    EXPECT_EQ(b["left"].toInt(), 1600 - 480 - 1 - 480);
    EXPECT_EQ(b["centerX"].toInt(), b["rawX"].toInt() - b["left"].toInt());
}

TEST(InspectTool, AWholeInspectionReportsEveryKeyWithItsType) {
    TempRoot root;
    sim::EndFaceScene scene;
    scene.spots.push_back(sim::spotAtRadius(scene, 30.0, 20.0, 12.0, 60.0));
    scene.scratches.push_back({700, 450, 900, 760, 3.0, 40.0, false});
    writeRawFrame(root.file("dirty.raw"), scene);
    const ToolRun run = inspect({"--json", root.file("dirty.raw")});
    ASSERT_EQ(run.status, 0) << run.errors.toStdString();
    const QJsonObject r = parse(run.lines.value(0));
    EXPECT_TRUE(r["pass"].isBool());
    EXPECT_FALSE(r["pass"].toBool());
    EXPECT_GE(r["defectCount"].toInt(), 1);
    EXPECT_GE(r["scratchCount"].toInt(), 1);
    const QJsonArray zones = r["zoneResults"].toArray();
    ASSERT_EQ(zones.size(), 3);
    QStringList zoneKeys = {"zoneName",        "innerDiameter", "outerDiameter", "sNoBiggerNum",
                            "sNoBiggerResult", "sBiggerNum",    "sBiggerResult", "dNoBiggerNum",
                            "dNoBiggerResult", "dMidNum",       "dMidReuslt",    "dBiggerNum",
                            "dBiggerResult",   "dArea"};
    zoneKeys.sort();
    EXPECT_EQ(zones[1].toObject().keys(), zoneKeys);
    EXPECT_EQ(zones[1].toObject()["zoneName"].toString(), "B");
    EXPECT_TRUE(zones[1].toObject()["dArea"].isDouble());
    const QJsonObject defect = r["defects"].toArray()[0].toObject();
    EXPECT_EQ(defect.keys(), QStringList({"bottom", "left", "right", "sizeClass", "top", "zone"}));
    const QJsonObject scratch = r["scratches"].toArray()[0].toObject();
    EXPECT_EQ(scratch.keys(),
              QStringList({"direction", "significance", "width", "x1", "x2", "y1", "y2", "zone"}));
    EXPECT_EQ(r["ms"].toObject().keys(),
              QStringList({"defects", "overlay", "scratches", "search", "total"}));
}

TEST(InspectTool, ARegionWithAGivenCenterIsMeasuredWithoutSearch) {
    TempRoot root;
    sim::EndFaceScene scene;
    scene.spots.push_back(sim::spotAtRadius(scene, 30.0, 200.0, 4.0, 60.0));
    std::vector<unsigned char> region(700 * 600);
    sim::renderGray(scene, 800 - 350, 600 - 300, 700, 600, region.data());
    ASSERT_TRUE(cv::imwrite(root.file("region.png").toStdString(),
                            cv::Mat(600, 700, CV_8UC1, region.data())));
    const ToolRun run = inspect(
        {"--json", "--center", "350,300", "--overlay", root.file("out"), root.file("region.png")});
    ASSERT_EQ(run.status, 0) << run.errors.toStdString();
    const QJsonObject r = parse(run.lines.value(0));
    EXPECT_EQ(r["rawX"].toInt(), 0);
    EXPECT_EQ(r["left"].toInt(), 0);
    EXPECT_EQ(r["centerX"].toInt(), 350);
    EXPECT_EQ(r["defectCount"].toInt(), 1);
    EXPECT_TRUE(QFile::exists(root.file("out/region-overlay.png")));
    EXPECT_TRUE(QFile::exists(root.file("out/region-measured.png")));
}

TEST(InspectTool, ManyJobsGiveTheSameOutputAsOne) {
    TempRoot root;
    QStringList frames;
    for (int i = 0; i < 5; ++i) {
        sim::EndFaceScene scene;
        scene.centerX = 600 + 80 * i;
        scene.seed = uint32_t(i + 1);
        scene.spots.push_back(sim::spotAtRadius(scene, 20.0 + 15 * i, 40.0 * i, 5.0, 50.0));
        frames << root.file(QString("f%1.raw").arg(i));
        writeRawFrame(frames.last(), scene);
    }
    auto withoutTimes = [](const ToolRun& run) {
        QList<QJsonObject> results;
        for (const QByteArray& line : run.lines) {
            QJsonObject r = parse(line);
            r.remove("ms");
            results << r;
        }
        return results;
    };
    const ToolRun one = inspect(QStringList({"--json", "--jobs", "1"}) + frames);
    const ToolRun three = inspect(QStringList({"--json", "--jobs", "3"}) + frames);
    ASSERT_EQ(one.status, 0);
    ASSERT_EQ(one.lines.size(), 5);
    EXPECT_EQ(withoutTimes(one), withoutTimes(three));
}

TEST(InspectTool, TheTaskIsChosenByNameOrIdAndAnUnknownOneIsRefused) {
    TempRoot root;
    writeRawFrame(root.file("a.raw"), sim::EndFaceScene());
    const ToolRun byName = inspect({"--json", "--task", "IEC2.0-PC-MM-SF", root.file("a.raw")});
    ASSERT_EQ(byName.status, 0) << byName.errors.toStdString();
    EXPECT_EQ(
        parse(byName.lines[0])["zoneResults"].toArray()[0].toObject()["outerDiameter"].toInt(), 65);
    const ToolRun unknown = inspect({"--task", "no such task", root.file("a.raw")});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_TRUE(unknown.errors.contains("no task named or with id \"no such task\""))
        << unknown.errors.toStdString();
}

TEST(InspectTool, ABrokenSensorMaskIsRefusedBeforeAnyInspection) {
    TempRoot root;
    writeRawFrame(root.file("a.raw"), sim::EndFaceScene());
    QDir().mkpath(root.file("etc"));
    QFile mask(root.file("etc/ccd_mask.dat"));
    ASSERT_TRUE(mask.open(QIODevice::WriteOnly));
    mask.write(QByteArray(1000, '\0'));
    mask.close();
    const ToolRun run = inspect({"--root", root.path(), root.file("a.raw")});
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(run.lines.isEmpty());
    EXPECT_TRUE(run.errors.contains("not a sensor mask (1000 bytes, expected 1920000)"));
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
    EXPECT_EQ(result.keys(), QStringList({"found", "image", "rawX", "rawY", "x", "y"}));
    EXPECT_FALSE(result["found"].toBool());
    EXPECT_EQ(result["rawX"].toInt(), 800);
    EXPECT_EQ(result["y"].toInt(), 600);
}

TEST(InspectTool, WithoutFramesItExplainsItselfAndFails) {
    const ToolRun run = inspect({});
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(run.errors.contains("no frame given"));
}

TEST(InspectTool, ResultFilesAreSavedOnTheRootsSdCard) {
    TempRoot root;
    writeRawFrame(root.file("a.raw"), sim::EndFaceScene());
    ASSERT_TRUE(QDir().mkpath(root.file("mnt/sdcard/sd")));
    const ToolRun run = inspect({"--save-type", "3", "--id", "PC-0042", root.file("a.raw")});
    ASSERT_EQ(run.status, 0) << run.errors.toStdString();
    const QString day =
        root.file("mnt/sdcard/sd/Measure_Result/" + QDate::currentDate().toString("yyyyMMdd"));
    EXPECT_TRUE(QFile::exists(day + "/MeasureData_EN.xlsx"));
    EXPECT_TRUE(QFile::exists(day + "/Report/PC-0042_EN.xlsx"));
}

TEST(InspectTool, ResultFilesThatCannotBeSavedAreReported) {
    TempRoot root;
    writeRawFrame(root.file("a.raw"), sim::EndFaceScene());
    const ToolRun noCard = inspect({"--save-type", "1", "--id", "X1", root.file("a.raw")});
    EXPECT_EQ(noCard.status, 2);
    EXPECT_EQ(noCard.lines.size(), 1) << "the result is still printed";
    EXPECT_TRUE(noCard.errors.contains("not saved: no SD card")) << noCard.errors.toStdString();

    ASSERT_TRUE(QDir().mkpath(root.file("mnt/sdcard/sd")));
    const ToolRun badId = inspect({"--save-type", "2", "--id", "a/b", root.file("a.raw")});
    EXPECT_EQ(badId.status, 2);
    EXPECT_TRUE(badId.errors.contains("not saved: \"a/b\" cannot name a file"))
        << badId.errors.toStdString();
    EXPECT_FALSE(QDir(root.file("mnt/sdcard/sd/Measure_Result")).exists());
}

TEST(InspectTool, RealEndFacesAreFoundAndInspected) {
    const QString samples = realSamplesDir();
    if (samples.isEmpty()) {
        GTEST_SKIP() << "the real end-face pictures are not beside the project";
    }
    TempRoot root;
    QStringList pictures;
    for (const QString& name : QDir(samples).entryList({"*.png"}, QDir::Files, QDir::Name)) {
        pictures << QDir(samples).filePath(name);
    }
    ASSERT_FALSE(pictures.isEmpty());
    const ToolRun run = inspect(QStringList({"--json", "--task", "IEC2.0-PC-MM-SF"}) + pictures);
    ASSERT_EQ(run.status, 0) << run.errors.toStdString();
    ASSERT_EQ(run.lines.size(), pictures.size());
    for (const QByteArray& line : run.lines) {
        const QJsonObject r = parse(line);
        EXPECT_TRUE(r["found"].toBool()) << r["image"].toString().toStdString();
        // The pictures hold their fiber near the middle of the frame.
        EXPECT_NEAR(r["rawX"].toInt(), 780, 100) << r["image"].toString().toStdString();
        EXPECT_NEAR(r["rawY"].toInt(), 560, 100) << r["image"].toString().toStdString();
        EXPECT_EQ(r["zoneResults"].toArray().size(), 3);
    }
}
