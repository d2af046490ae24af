// The inspection tool run as a user runs it: frames from files, one line per frame.

#include <gtest/gtest.h>

#include <QDate>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <opencv2/imgcodecs.hpp>

#include "realsamples.h"
#include "temproot.h"
#include "toolrun.h"

namespace {

ToolRun inspect(const QStringList& arguments) {
    return runProgram(INSPECT_TOOL, arguments);
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
        QJsonObject many = run.lines[i], single = one.lines[i];
        EXPECT_EQ(many["image"].toString(), frames[i]);
        many.remove("ms");
        single.remove("ms");
        EXPECT_EQ(many, single) << "many jobs give the same output as one";
    }

    const QJsonObject r = run.lines[0];
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

    const QJsonObject right = run.lines[1];
    EXPECT_NEAR(right["rawX"].toInt(), 1500, 4);
    EXPECT_EQ(pick(right, {"x", "left", "centerX"}),
              QJsonObject({{"x", 1600 - 480 - 1},
                           {"left", 1600 - 480 - 1 - 480},
                           {"centerX", right["rawX"].toInt() - (1600 - 480 - 1 - 480)}}));

    const QJsonObject flat = run.lines[2];
    EXPECT_EQ(flat.keys(), QStringList({"found", "image", "rawX", "rawY", "sharpness", "x", "y"}));
    EXPECT_EQ(pick(flat, {"found", "rawX", "y"}),
              QJsonObject({{"found", false}, {"rawX", 800}, {"y", 600}}));
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
    EXPECT_EQ(pick(run.lines.value(0), {"rawX", "left", "centerX", "defectCount"}),
              QJsonObject({{"rawX", 0}, {"left", 0}, {"centerX", 350}, {"defectCount", 1}}));
    EXPECT_TRUE(QFile::exists(root.file("out/region-overlay.png")));
    EXPECT_TRUE(QFile::exists(root.file("out/region-measured.png")));
}

TEST(InspectTool, TheTaskIsChosenByName) {
    TempRoot root;
    writeRawFrame(root.file("a.raw"), sim::EndFaceScene());
    const ToolRun byName = inspect({"--json", "--task", "IEC2.0-PC-MM-SF", root.file("a.raw")});
    ASSERT_EQ(byName.status, 0) << byName.errors.toStdString();
    EXPECT_EQ(byName.lines[0]["zoneResults"].toArray()[0].toObject()["outerDiameter"].toInt(), 65);
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
    EXPECT_EQ(run.lines[0]["image"].toString(), root.file("good.raw"));
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
    for (const QJsonObject& r : run.lines) {
        EXPECT_TRUE(r["found"].toBool()) << r["image"].toString().toStdString();
        // The pictures hold their fiber near the middle of the frame.
        EXPECT_NEAR(r["rawX"].toInt(), 780, 100) << r["image"].toString().toStdString();
        EXPECT_NEAR(r["rawY"].toInt(), 560, 100) << r["image"].toString().toStdString();
        EXPECT_EQ(r["zoneResults"].toArray().size(), 3);
    }
}

// A sharp frame measures far above a blurred one; the real end-face pictures measure 40 to 56.
TEST(InspectSharpness, WholeFramesGetTheLiveViewsFocusMeasure) {
    TempRoot root;
    sim::EndFaceScene sharpScene, blurredScene;
    sharpScene.blurSigmaPx = 0.5;
    blurredScene.blurSigmaPx = 3.0;
    writeRawFrame(root.file("sharp.raw"), sharpScene);
    writeRawFrame(root.file("blurred.raw"), blurredScene);
    const QList<QJsonObject> rendered =
        inspect({"--json", root.file("sharp.raw"), root.file("blurred.raw")}).lines;
    ASSERT_EQ(rendered.size(), 2);
    const double sharp = rendered[0]["sharpness"].toDouble();
    EXPECT_GT(sharp, rendered[1]["sharpness"].toDouble() + 10.0);
    EXPECT_NE(sharp, double(int(sharp)));  // not truncated
    for (const QJsonObject& real : inspect(QStringList{"--json"} + realSamplePictures()).lines) {
        EXPECT_GE(real["sharpness"].toDouble(), 40.0) << real["image"].toString().toStdString();
        EXPECT_LE(real["sharpness"].toDouble(), 57.0) << real["image"].toString().toStdString();
    }
}
