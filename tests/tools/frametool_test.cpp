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
#include "realsamples.h"
#include "temproot.h"
#include "testfiles.h"

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
    std::vector<uint16_t> frame(size_t(kSensorWidth) * kSensorHeight);
    ASSERT_EQ(sim::renderRaw(scene, 0, 0, kSensorWidth, kSensorHeight, frame.data()), 1);
    ASSERT_TRUE(writeFile(
        path, QByteArray(reinterpret_cast<const char*>(frame.data()), int(frame.size() * 2))));
}

QJsonObject parse(const QByteArray& line) {
    return QJsonDocument::fromJson(line).object();
}

}  // namespace

// A frame with a spot and a scratch, one whose window must be moved in from the right edge and
// one without fiber, in that order also when inspected in parallel. The verdicts themselves
// are the measurement run's, tested there.
TEST(InspectTool, PrintsOneJsonObjectPerFrameInInputOrderWithEveryKey) {
    TempRoot root;
    sim::EndFaceScene scene;
    scene.spots.push_back(sim::spotAtRadius(scene, 30.0, 20.0, 12.0, 60.0));
    scene.scratches.push_back({700, 450, 900, 760, 3.0, 40.0, false});
    writeRawFrame(root.file("dirty.raw"), scene);
    scene.centerX = 1500.0;
    writeRawFrame(root.file("right.raw"), scene);
    ASSERT_TRUE(writeFile(root.file("flat.raw"), QByteArray(3840000, '\0')));
    const QStringList frames = {root.file("dirty.raw"), root.file("right.raw"),
                                root.file("flat.raw")};

    const ToolRun run = inspect(QStringList({"--json", "--jobs", "3"}) + frames);
    ASSERT_EQ(run.status, 0) << run.errors.toStdString();
    ASSERT_EQ(run.lines.size(), 3);
    const ToolRun one = inspect(QStringList({"--json", "--jobs", "1"}) + frames);
    ASSERT_EQ(one.lines.size(), 3);
    for (int i = 0; i < 3; ++i) {
        QJsonObject many = parse(run.lines[i]), single = parse(one.lines[i]);
        EXPECT_EQ(many["image"].toString(), frames[i]);
        many.remove("ms");
        single.remove("ms");
        EXPECT_EQ(many, single) << "many jobs give the same output as one";
    }

    const QJsonObject r = parse(run.lines[0]);
    EXPECT_EQ(r.keys(), QStringList({"centerX", "centerY", "defectCount", "defects", "found",
                                     "image", "left", "ms", "pass", "rawX", "rawY", "scratchCount",
                                     "scratches", "sharpness", "top", "x", "y", "zoneResults"}));
    EXPECT_TRUE(r["found"].toBool());
    EXPECT_TRUE(r["pass"].isBool());
    const QJsonArray zones = r["zoneResults"].toArray();
    ASSERT_EQ(zones.size(), 3);
    EXPECT_EQ(zones[1].toObject().keys(),
              QStringList({"dArea", "dBiggerNum", "dBiggerResult", "dMidNum", "dMidReuslt",
                           "dNoBiggerNum", "dNoBiggerResult", "innerDiameter", "outerDiameter",
                           "sBiggerNum", "sBiggerResult", "sNoBiggerNum", "sNoBiggerResult",
                           "zoneName"}));
    EXPECT_EQ(zones[1].toObject()["zoneName"].toString(), "B");
    EXPECT_TRUE(zones[1].toObject()["dArea"].isDouble());
    const QJsonObject defect = r["defects"].toArray()[0].toObject();
    EXPECT_EQ(defect.keys(), QStringList({"bottom", "left", "right", "sizeClass", "top", "zone"}));
    const QJsonObject scratch = r["scratches"].toArray()[0].toObject();
    EXPECT_EQ(scratch.keys(),
              QStringList({"direction", "significance", "width", "x1", "x2", "y1", "y2", "zone"}));
    EXPECT_EQ(r["ms"].toObject().keys(),
              QStringList({"defects", "overlay", "scratches", "search", "total"}));

    const QJsonObject right = parse(run.lines[1]);
    EXPECT_NEAR(right["rawX"].toInt(), 1500, 4);
    EXPECT_EQ(right["x"].toInt(), 1600 - 480 - 1);
    EXPECT_EQ(right["left"].toInt(), 1600 - 480 - 1 - 480);
    EXPECT_EQ(right["centerX"].toInt(), right["rawX"].toInt() - right["left"].toInt());

    const QJsonObject flat = parse(run.lines[2]);
    EXPECT_EQ(flat.keys(), QStringList({"found", "image", "rawX", "rawY", "sharpness", "x", "y"}));
    EXPECT_FALSE(flat["found"].toBool());
    EXPECT_EQ(flat["rawX"].toInt(), 800);
    EXPECT_EQ(flat["y"].toInt(), 600);
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

TEST(InspectTool, TheTaskIsChosenByName) {
    TempRoot root;
    writeRawFrame(root.file("a.raw"), sim::EndFaceScene());
    const ToolRun byName = inspect({"--json", "--task", "IEC2.0-PC-MM-SF", root.file("a.raw")});
    ASSERT_EQ(byName.status, 0) << byName.errors.toStdString();
    EXPECT_EQ(
        parse(byName.lines[0])["zoneResults"].toArray()[0].toObject()["outerDiameter"].toInt(), 65);
}

// Refused before any inspection, with the reason on stderr.
TEST(InspectTool, AnUnknownTaskABrokenSensorMaskOrNoFrameIsRefused) {
    TempRoot root;
    writeRawFrame(root.file("a.raw"), sim::EndFaceScene());
    ASSERT_TRUE(QDir().mkpath(root.file("etc")));
    ASSERT_TRUE(writeFile(root.file("etc/ccd_mask.dat"), QByteArray(1000, '\0')));
    const struct {
        QStringList arguments;
        const char* reason;
    } cases[] = {
        {{"--json", "--task", "no such task", root.file("a.raw")},
         "no task named or with id \"no such task\""},
        {{"--json", "--root", root.path(), root.file("a.raw")},
         "not a sensor mask (1000 bytes, expected 1920000)"},
        {{}, "no frame given"},
    };
    for (const auto& c : cases) {
        const ToolRun run = inspect(c.arguments);
        EXPECT_EQ(run.status, 2) << c.reason;
        EXPECT_TRUE(run.lines.isEmpty()) << c.reason;
        EXPECT_TRUE(run.errors.contains(c.reason)) << run.errors.toStdString();
    }
}

TEST(InspectTool, BadFramesAreNamedOnStderrAndTheOthersStillInspected) {
    TempRoot root;
    writeRawFrame(root.file("good.raw"), sim::EndFaceScene());
    ASSERT_TRUE(writeFile(root.file("truncated.raw"), QByteArray(1000, '\0')));

    const ToolRun run = inspect(
        {"--json", root.file("truncated.raw"), root.file("missing.png"), root.file("good.raw")});
    EXPECT_EQ(run.status, 2);
    ASSERT_EQ(run.lines.size(), 1);
    EXPECT_EQ(parse(run.lines[0])["image"].toString(), root.file("good.raw"));
    EXPECT_TRUE(run.errors.contains(root.file("truncated.raw") + ": truncated raw frame"))
        << run.errors.toStdString();
    EXPECT_TRUE(run.errors.contains(root.file("missing.png") + ": no such file"));
}

TEST(InspectTool, ResultFilesAreSavedOnTheRootsSdCardOrTheFailureReported) {
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

    const ToolRun run = inspect({"--save-type", "3", "--id", "PC-0042", root.file("a.raw")});
    ASSERT_EQ(run.status, 0) << run.errors.toStdString();
    const QString day =
        root.file("mnt/sdcard/sd/Measure_Result/" + QDate::currentDate().toString("yyyyMMdd"));
    EXPECT_TRUE(QFile::exists(day + "/MeasureData_EN.xlsx"));
    EXPECT_TRUE(QFile::exists(day + "/Report/PC-0042_EN.xlsx"));
}

TEST(InspectTool, RealEndFacesAreFoundAndInspected) {
    const QStringList pictures = realSamplePictures();
    if (pictures.isEmpty()) {
        GTEST_SKIP() << "no real end-face pictures in " << realSamplesDir().toStdString();
    }
    TempRoot root;
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
